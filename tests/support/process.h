// SPDX-License-Identifier: Apache-2.0
/* Runs a program and tells how it ended. */
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

struct ProcessResult {
    std::string output;     /* standard output */
    int status = 0;         /* as waitpid gives it */
    bool timed_out = false; /* killed by its alarm */
    long max_resident_kb = 0;
};

inline std::string file_contents(const std::filesystem::path& path) {
    if (!std::filesystem::is_regular_file(path))
        return "(none)";
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/* environment: NAME=VALUE settings on top of our own. output: the file that takes standard output;
 * standard error is dropped. */
inline ProcessResult run_process(const std::string& program, std::vector<std::string> arguments,
                                 const std::vector<std::string>& environment,
                                 const std::filesystem::path& output, unsigned time_limit_s) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setpgid(0, 0);
        ::alarm(time_limit_s); /* outlives exec */
        for (const std::string& setting : environment)
            ::putenv(const_cast<char*>(setting.c_str()));
        ::dup2(::open(output.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0666), 1);
        ::dup2(::open("/dev/null", O_RDWR), 2);
        std::vector<char*> argv{const_cast<char*>("kvt")};
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
    ProcessResult result;
    rusage usage{};
    ::wait4(pid, &result.status, 0, &usage);
    result.timed_out = WIFSIGNALED(result.status) && WTERMSIG(result.status) == SIGALRM;
    if (result.timed_out)
        ::kill(-pid, SIGKILL); /* and what it started */
    result.output = file_contents(output);
    result.max_resident_kb = usage.ru_maxrss;
    return result;
}
