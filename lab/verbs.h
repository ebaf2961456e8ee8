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

} // namespace lab
