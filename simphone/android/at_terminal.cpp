// SPDX-License-Identifier: Apache-2.0
/* Keeps the pseudo-terminal on which a person can read what the phone answers to AT commands:
 *
 *     kvt-at-terminal PHONE [SECONDS]
 *
 * Goes into the background. The terminal's name stands in PHONE/at/tty; what comes through the pipe
 * PHONE/at/.answers is shown there. Ends, and takes the name away, when the phone is gone, or when
 * nothing came for a minute (or SECONDS) and nobody has the terminal open. One for a phone: a second
 * one ends at once, with status 0 as well. */
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "at_device.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int look_ms = 200;

/* The pipe, held by this process alone; below 0 when it can't be had or another holds it. */
int hold_pipe(const fs::path& path) {
    std::error_code ignored;
    fs::create_directories(path.parent_path(), ignored);
    ::mkfifo(path.c_str(), 0600);
    /* Open for writing too, so that it does not end when a writer does. */
    const int pipe = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    struct stat info {};
    if (pipe < 0 || ::fstat(pipe, &info) != 0 || !S_ISFIFO(info.st_mode) ||
        ::flock(pipe, LOCK_EX | LOCK_NB) != 0)
        return -1;
    return pipe;
}

int open_terminal() {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
        return -1;
    termios raw{};
    ::tcgetattr(terminal, &raw);
    ::cfmakeraw(&raw); /* what is shown is what came */
    ::tcsetattr(terminal, TCSANOW, &raw);
    return terminal;
}

bool write_name(const fs::path& path, const std::string& name) {
    const fs::path aside = path.parent_path() / ".tty";
    std::error_code error;
    fs::remove(aside, error);
    std::ofstream(aside) << name << "\n";
    fs::rename(aside, path, error);
    return !error;
}

std::string stored_name(const fs::path& path) {
    std::string name;
    std::ifstream(path) >> name;
    return name;
}

/* True while somebody has the terminal open. */
bool watched(int terminal) {
    pollfd state{terminal, POLLIN, 0};
    return ::poll(&state, 1, 0) >= 0 && (state.revents & POLLHUP) == 0;
}

void serve(const fs::path& tty, const std::string& name, int pipe, int terminal,
           std::chrono::seconds idle_limit) {
    auto last = Clock::now();
    while (stored_name(tty) == name && (watched(terminal) || Clock::now() - last < idle_limit)) {
        pollfd ready{pipe, POLLIN, 0};
        char buffer[4096];
        if (::poll(&ready, 1, look_ms) > 0)
            if (const ssize_t n = ::read(pipe, buffer, sizeof buffer); n > 0) {
                last = Clock::now();
                /* A terminal that nobody reads is full some day: the rest is lost, the log has it.
                 */
                if (::write(terminal, buffer, static_cast<size_t>(n)) < 0) {
                }
            }
        while (::read(terminal, buffer, sizeof buffer) > 0) { /* nobody listens to the keyboard */
        }
    }
    if (stored_name(tty) == name)
        ::unlink(tty.c_str());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3)
        return 2;
    const fs::path phone = fs::absolute(argv[1]);
    const fs::path tty = phone / "at" / "tty";
    const int pipe = hold_pipe(phone / AT_TERMINAL_PIPE);
    if (pipe < 0)
        return 0;
    const int terminal = open_terminal();
    char name[64];
    if (terminal < 0 || ::ptsname_r(terminal, name, sizeof name) != 0 || !write_name(tty, name))
        return 1;
    /* Only a terminal that was open once can be told from one that nobody has open. */
    ::close(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (const pid_t child = ::fork(); child != 0)
        return child < 0 ? 1 : 0;
    ::setsid();
    if (::chdir("/") != 0)
        return 1;
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int fd = 0; fd < 3; ++fd)
        ::dup2(null, fd);
    serve(tty, name, pipe, terminal, std::chrono::seconds(argc == 3 ? std::atoi(argv[2]) : 60));
    ::unlink((phone / AT_TERMINAL_PIPE).c_str());
    return 0;
}
