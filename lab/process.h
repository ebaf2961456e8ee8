// SPDX-License-Identifier: Apache-2.0
/* Runs a program and tells how it ended. */
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

namespace lab {

struct ProcessRequest {
    /* The program, by path or looked up in PATH, and its arguments. */
    std::vector<std::string> command;
    /* NAME=VALUE settings on top of our own environment. */
    std::vector<std::string> environment;
    std::chrono::milliseconds limit{60000};
    /* Copies what the program writes to our own standard output as it comes. */
    bool pass_on = false;
    /* Its standard error goes to `output` too. */
    bool errors_too = false;
    /* Once it is not 0 the program has a moment to end by itself, then it is ended as at its limit.
     * For signal handlers; null: nothing. */
    const std::atomic<int>* stop = nullptr;
};

struct ProcessResult {
    enum How {
        exited,      /* status is its exit status */
        signalled,   /* status is the signal's number */
        timed_out,   /* its process group was killed at the limit, or a while after `stop` */
        not_started, /* status is errno */
    };
    How how = not_started;
    int status = 0;
    std::string why;      /* how it ended, in place of what `how` and `status` tell; mostly empty */
    std::string output;   /* standard output, bytes as they came */
    bool stopped = false; /* timed out because of `stop` */
    bool cut = false;     /* there was more than anybody reads; the rest is not kept */
    std::chrono::milliseconds took{0};
};

/* The program runs in a process group of its own, with standard input from /dev/null and our
 * standard error. Returns at the latest a moment after the limit, also when a child of the program
 * holds the pipe open. */
ProcessResult run_process(const ProcessRequest& request);

/* The words as exec takes them, with a null behind; they must outlive it. */
std::vector<char*> pointers(std::vector<std::string>& words);

/* One sentence for a person: "ended with status 1", "was killed by signal 9 (Killed)". */
std::string how_it_ended(const ProcessResult& result);

} // namespace lab
