/* The verbs of kvt-lab: what each takes and the function that does it. main.cpp reads the command
 * line into these; one source per verb, named for it. Every function returns the exit status. */
#pragma once

#include <string>
#include <vector>

namespace lab {

/* What every verb may need. */
struct Common {
    std::string kvt; /* --kvt: path of the program; empty: see find_kvt.h */
};

/* kvt-lab run -- ARGS...: kvt's output as it is; status 0 when it ran to its end. */
struct RunOptions {
    std::vector<std::string> command;
    double timeout_s = 60;
};
int run(const Common& common, const RunOptions& options);

/* kvt-lab record TAPE -- ARGS...: as run, and what crossed is appended to the tape. */
struct RecordOptions {
    std::string tape;
    bool redact = false;
    std::vector<std::string> command;
};
int record(const Common& common, const RecordOptions& options);

/* kvt-lab replay TAPE [-- ARGS...]: status 0 when nothing differs, 1 when something does. */
struct ReplayOptions {
    std::string tape;
    size_t only = 0; /* number of the run; 0: all */
    bool as_recorded = false;
    std::vector<std::string> command;
};
int replay(const Common& common, const ReplayOptions& options);

/* kvt-lab show FILE: what crossed, for a person. */
struct ShowOptions {
    std::string file; /* a tape, or a simulated phone's log */
};
int show(const Common& common, const ShowOptions& options);

/* kvt-lab twin TAPE DIRECTORY: a simulated phone from what the tape tells. */
struct TwinOptions {
    std::string tape;
    std::string directory;
};
int twin(const Common& common, const TwinOptions& options);

/* kvt-lab redact IN OUT: the same tape without what is private. */
struct RedactOptions {
    std::string in, out;
};
int redact(const Common& common, const RedactOptions& options);

} // namespace lab
