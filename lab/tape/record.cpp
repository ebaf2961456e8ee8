// SPDX-License-Identifier: Apache-2.0
/* kvt-lab record: kvt, with the recorder before it. */
#include "verbs.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "find_kvt.h"
#include "phone/record_on_phone.h"
#include "process.h"
#include "tape/libraries.h"
#include "tape/redact.h"

extern char** environ;

namespace lab {

namespace {

int failed(const std::string& what) {
    std::fprintf(stderr, "kvt-lab: %s\n", what.c_str());
    return 5;
}

/* False, with a message, when nothing can be added to the tape, or it is something else. */
bool can_add_to(const std::string& tape, std::string& error) {
    const int fd = ::open(tape.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        error = tape + ": " + std::strerror(errno);
        return false;
    }
    constexpr char start[] = "{\"run\":";
    char found[sizeof start - 1];
    const ssize_t n = ::pread(fd, found, sizeof found, 0);
    ::close(fd);
    if (n <= 0 || std::memcmp(found, start, static_cast<size_t>(n)) == 0)
        return true;
    error = tape + " is there already, and no tape";
    return false;
}

/* kvt has our standard input and output: what it prints is its own. */
int run_recorded(std::vector<std::string> words) {
    const std::vector<char*> argv = pointers(words);
    pid_t pid = 0;
    if (const int error = ::posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ))
        return failed(words[0] + ": " + std::strerror(error));
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return 0;
    return failed(WIFSIGNALED(status)
                      ? "kvt was ended by signal " + std::to_string(WTERMSIG(status))
                      : "kvt ended with status " + std::to_string(WEXITSTATUS(status)));
}

} // namespace

int record(const Common& common, const RecordOptions& options) {
    if (!common.on.empty())
        return adb::record_on_phone(common, options);
    std::string error;
    const std::string kvt = find_kvt(common.kvt, error);
    if (kvt.empty())
        return failed(error);
    const std::string library = tape::find_library("libkvt_record.so", error);
    if (library.empty())
        return failed(error);
    if (!can_add_to(options.tape, error))
        return failed(error);
    const char* const preload = std::getenv("LD_PRELOAD");
    const std::string behind =
        preload != nullptr && *preload != '\0' ? std::string(":") + preload : "";
    ::setenv("LD_PRELOAD", (tape::preloadable(library) + behind).c_str(), 1);
    std::vector<std::string> words = options.command;
    words.insert(words.begin(), kvt);
    if (!options.redact) {
        ::setenv("KVT_TAPE", options.tape.c_str(), 1);
        return run_recorded(std::move(words));
    }
    /* What is private never reaches the tape itself. */
    const std::string unredacted = options.tape + ".unredacted-" + std::to_string(::getpid());
    ::setenv("KVT_TAPE", unredacted.c_str(), 1);
    const int status = run_recorded(std::move(words));
    const bool added = tape::append_redacted(unredacted, options.tape, error);
    ::unlink(unredacted.c_str());
    return added ? status : failed(error);
}

} // namespace lab
