/* Runs a program and tells how it ended. */
#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

struct ProcessResult {
    std::string output;     /* standard output */
    int status = 0;         /* as waitpid gives it */
    bool timed_out = false; /* killed at its limit */
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
                                 const std::filesystem::path& output, int time_limit_s) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setpgid(0, 0);
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
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(time_limit_s);
    while (::wait4(pid, &result.status, WNOHANG, &usage) == 0) {
        if (std::chrono::steady_clock::now() > until) {
            ::kill(-pid, SIGKILL);
            ::wait4(pid, &result.status, 0, &usage);
            result.timed_out = true;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    result.output = file_contents(output);
    result.max_resident_kb = usage.ru_maxrss;
    return result;
}
