// SPDX-License-Identifier: Apache-2.0
#include "process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace lab {

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words)
        result.push_back(word.data());
    result.push_back(nullptr);
    return result;
}

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t output_max = size_t{64} << 20;
constexpr std::chrono::milliseconds stop_grace{2000};

/* Starts the program in a process group of its own. 0, or errno. A spawn and no fork: it does not
 * copy what we have mapped, which takes about as long as a short command. */
int start(pid_t& pid, char* const* argv, char* const* environment, int output, bool errors_too) {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&files, output, 1);
    if (errors_too)
        ::posix_spawn_file_actions_adddup2(&files, output, 2);
    sigset_t ordinary;
    ::sigemptyset(&ordinary);
    ::sigaddset(&ordinary, SIGPIPE);
    ::sigaddset(&ordinary, SIGXFSZ);
    ::posix_spawnattr_setsigdefault(&attributes, &ordinary);
    ::posix_spawnattr_setpgroup(&attributes, 0);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
    const int error = ::posix_spawnp(&pid, argv[0], &files, &attributes, argv, environment);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&files);
    return error;
}

/* Our environment with the settings put in place of those of the same name. */
std::vector<std::string> merged(const std::vector<std::string>& settings) {
    std::vector<std::string> result = settings;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const size_t name = std::strcspn(*entry, "=") + 1;
        bool replaced = false;
        for (const std::string& setting : settings)
            replaced |= setting.compare(0, name, *entry, name) == 0;
        if (!replaced)
            result.emplace_back(*entry);
    }
    return result;
}

void write_all(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno != EINTR)
            return;
        if (n > 0) {
            data += n;
            size -= static_cast<size_t>(n);
        }
    }
}

} // namespace

ProcessResult run_process(const ProcessRequest& request) {
    ProcessResult result;
    int output[2];
    if (::pipe2(output, O_CLOEXEC) != 0) {
        result.status = errno;
        return result;
    }
    std::vector<std::string> words = request.command, settings = merged(request.environment);
    const std::vector<char*> argv = pointers(words);
    const std::vector<char*> environment = pointers(settings);
    const auto started = Clock::now();
    pid_t pid = 0;
    result.status = start(pid, argv.data(), environment.data(), output[1], request.errors_too);
    ::close(output[1]);
    if (result.status != 0) {
        ::close(output[0]);
        return result;
    }

    /* Until the end of the output, or, when somebody else holds the pipe, a moment after the
     * program's own end. */
    int status = 0;
    bool ended = false, open = true, late = false, stopping = false;
    auto limit = started + request.limit;
    while (!ended || open) {
        const auto now = Clock::now();
        if (request.stop != nullptr && *request.stop != 0 && !stopping) {
            stopping = true;
            limit = std::min(limit, now + stop_grace);
        }
        if (!ended && !late && now >= limit) {
            ::kill(-pid, SIGKILL);
            late = true;
        }
        pollfd fd{output[0], POLLIN, 0};
        const int ready = open ? ::poll(&fd, 1, 5) : (::usleep(100), 0);
        if (ready > 0) {
            char buffer[65536];
            const ssize_t n = ::read(output[0], buffer, sizeof buffer);
            if (n > 0) {
                const size_t room = output_max - result.output.size();
                result.output.append(buffer, std::min(room, static_cast<size_t>(n)));
                result.cut |= static_cast<size_t>(n) > room;
                if (request.pass_on)
                    write_all(1, buffer, static_cast<size_t>(n));
            } else if (n == 0 || errno != EINTR) {
                open = false;
            }
        } else if (ended) {
            break; /* what was in the pipe at the program's end is read */
        }
        if (!ended && ::waitpid(pid, &status, WNOHANG) == pid)
            ended = true;
    }
    ::close(output[0]);
    result.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started);
    if (late) {
        result.how = ProcessResult::timed_out;
        result.stopped = stopping;
    } else if (WIFSIGNALED(status)) {
        result.how = ProcessResult::signalled;
        result.status = WTERMSIG(status);
    } else {
        result.how = ProcessResult::exited;
        result.status = WEXITSTATUS(status);
    }
    return result;
}

std::string how_it_ended(const ProcessResult& result) {
    if (!result.why.empty())
        return result.why;
    switch (result.how) {
    case ProcessResult::exited:
        return "ended with status " + std::to_string(result.status);
    case ProcessResult::signalled:
        return "was killed by signal " + std::to_string(result.status) + " (" +
               ::strsignal(result.status) + ")";
    case ProcessResult::timed_out:
        return result.stopped ? "was interrupted and did not end by itself"
                              : "did not end within its time and was killed";
    case ProcessResult::not_started:
        return std::string("could not be started: ") + std::strerror(result.status);
    }
    return "";
}

} // namespace lab
