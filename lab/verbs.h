// SPDX-License-Identifier: Apache-2.0
/* The verbs of kvt-lab: what each takes and the function that does it. main.cpp reads the command
 * line into these; one source per verb, named for it. Every function returns the exit status. */
#pragma once

#include <string>
#include <vector>

namespace lab {

/* What every verb may need. */
struct Common {
    std::string
        kvt; /* --kvt: path of the program; empty: see find_kvt.h; on a phone its path there */
    std::string on; /* --on: the phone to run on, by serial number, or "usb"; empty: here */
};

/* kvt-lab run -- ARGS...: kvt's output as it is; status 0 when it ran to its end. */
struct RunOptions {
    std::vector<std::string> command;
    double timeout_s = 60;
};
int run(const Common& common, const RunOptions& options);

/* kvt-lab describe [GROUP [SUB]]: the catalogue's rows as a person reads them. */
struct DescribeOptions {
    std::vector<std::string> words;
};
int describe(const Common& common, const DescribeOptions& options);

/* kvt-lab check ...: the status tells the verdict; 2 when the command was not tried. */
struct CheckOptions {
    std::vector<std::string> command;
    double timeout_s = 0; /* 0: by the catalogue */
    bool json = false, verify = false, yes = false, output = false;
};
int check(const Common& common, const CheckOptions& options);

/* kvt-lab doctor: what kvt-doctor says, here or on the phone; its status. */
struct DoctorOptions {
    bool json = false, services = false;
};
int doctor(const Common& common, const DoctorOptions& options);

/* kvt-lab deploy: puts kvt, kvt-doctor and the recorder on the phone and says what works there. */
struct DeployOptions {
    std::string from; /* folder of the programs, or of a build; empty: see deploy.cpp */
};
int deploy(const Common& common, const DeployOptions& options);

/* kvt-lab pull [TAPE...]: tapes from the phone; all of them when none is named. */
struct PullOptions {
    std::vector<std::string> tapes;
    std::string to = ".";
};
int pull(const Common& common, const PullOptions& options);

/* kvt-lab plan FILE: 0 when every step passed, 2 when the plan is wrong and nothing was run, 128
 * and the signal's number when one ended it. */
struct PlanOptions {
    std::string file, junit;
    bool json = false;
};
int plan(const Common& common, const PlanOptions& options);

/* kvt-lab watch 9 SUB...: 1 when an answer was missing at any time. */
struct WatchOptions {
    std::vector<std::string> words; /* "9" and its sub-commands */
    std::string sub = "0", out;
    double every_s = 1;
    long count = 0; /* 0: until a signal */
};
int watch(const Common& common, const WatchOptions& options);

/* kvt-lab pages FOLDER: the pages of a source tree that are made from the catalogue. */
struct PagesOptions {
    std::string folder;
    bool check = false; /* tell which are stale instead of writing them */
};
struct VerbText;
int pages(const PagesOptions& options, const std::vector<VerbText>& verbs);

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

/* kvt-lab pcap IN OUT: the same as a capture; 1 when not all of it could be read. */
struct PcapOptions {
    std::string in, out;
};
int pcap(const Common& common, const PcapOptions& options);

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
