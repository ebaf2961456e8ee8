// SPDX-License-Identifier: Apache-2.0
/* In front of the C library's system(): a command that writes to the modem's AT channel runs in a
 * shell whose channel is the phone's. There is no such device, and none is made: what was written
 * is answered when the shell has ended (modem/at_commands.h). */
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "at_device.h"
#include "modem/at_commands.h"
#include "modem/modem.h"
#include "phone/complaint.h"
#include "phone/faults.h"
#include "phone/fd.h"
#include "phone/guarded.h"
#include "phone/phone.h"

using namespace simphone;

namespace {

constexpr int no_channel = -1;

/* A file that lies beside this library. Under emulation the shell is another machine's program, and
 * so must these be. */
std::string beside(const char* name) {
    if (const char* const foreign = std::getenv("KVT_AT_FOLDER"))
        return (std::filesystem::path(foreign) / name).string();
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&beside), &info) == 0 || info.dli_fname == nullptr)
        return name;
    return (std::filesystem::path(info.dli_fname).parent_path() / name).string();
}

bool begins(const char* text, const std::string& with) {
    return std::strncmp(text, with.c_str(), with.size()) == 0;
}

/* An open file of ours, for other processes: a path without the blanks and colons that part the
 * libraries that are preloaded. */
std::string path_of(int fd) {
    return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(fd);
}

/* The environment of the shell: ours, with the redirect behind whatever else is preloaded. */
std::vector<std::string> shell_environment(const std::string& redirect, int channel) {
    const std::string preload = "LD_PRELOAD=";
    std::vector<std::string> settings;
    std::string preloaded = preload + redirect;
    for (char** setting = environ; *setting != nullptr; ++setting) {
        if (begins(*setting, preload))
            preloaded = *setting + (":" + redirect);
        else if (!begins(*setting, AT_REDIRECT_VARIABLE "="))
            settings.emplace_back(*setting);
    }
    settings.push_back(preloaded);
    settings.push_back(AT_REDIRECT_VARIABLE "=" + (channel == no_channel ? "" : path_of(channel)));
    return settings;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    all.reserve(texts.size() + 1);
    for (std::string& text : texts)
        all.push_back(text.data());
    all.push_back(nullptr);
    return all;
}

/* As system() does: the caller is deaf to the keyboard's signals until the shell has ended. */
int run_shell(const char* command, std::vector<std::string> settings) {
    std::vector<std::string> words = {"sh", "-c", command};
    struct sigaction ignore {};
    struct sigaction interrupt {};
    struct sigaction quit {};
    ignore.sa_handler = SIG_IGN;
    sigset_t blocked, before, defaults;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGCHLD);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGINT);
    sigaddset(&defaults, SIGQUIT);
    ::sigaction(SIGINT, &ignore, &interrupt);
    ::sigaction(SIGQUIT, &ignore, &quit);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);

    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setsigmask(&attributes, &before);
    ::posix_spawnattr_setsigdefault(&attributes, &defaults);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t shell = 0;
    int status = -1;
    errno = ::posix_spawn(&shell, "/bin/sh", nullptr, &attributes, pointers(words).data(),
                          pointers(settings).data());
    if (errno == 0)
        while (::waitpid(shell, &status, 0) < 0 && errno == EINTR) {
        }
    ::posix_spawnattr_destroy(&attributes);

    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::sigaction(SIGINT, &interrupt, nullptr);
    ::sigaction(SIGQUIT, &quit, nullptr);
    return status;
}

std::string written_to(int channel) {
    std::string bytes;
    char buffer[4096];
    for (ssize_t n = 0;
         (n = ::pread(channel, buffer, sizeof buffer, static_cast<off_t>(bytes.size()))) > 0;)
        bytes.append(buffer, static_cast<size_t>(n));
    return bytes;
}

/* Keeps the terminal's program running, and hands it the answer. Nobody has to read it. */
void show_on_terminal(const std::string& answer) {
    const std::filesystem::path pipe = root() / AT_TERMINAL_PIPE;
    constexpr int tries = 100, between_ms = 5;
    for (int i = 0; i < tries; ++i) {
        const Fd file(pipe, O_WRONLY | O_NOFOLLOW);
        struct stat info {};
        if (file.ok()) {
            if (::fstat(file.get(), &info) == 0 && S_ISFIFO(info.st_mode))
                write_all(file.get(), answer.data(), answer.size());
            return;
        }
        if (i == 0) {
            std::vector<std::string> words = {beside(AT_TERMINAL_PROGRAM), root().string()};
            pid_t starter = 0;
            if (::posix_spawn(&starter, words[0].c_str(), nullptr, nullptr, pointers(words).data(),
                              environ) != 0)
                return;
            int status = 0; /* it goes into the background */
            if (::waitpid(starter, &status, 0) != starter || status != 0)
                return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(between_ms));
    }
}

void answer_all(const std::string& bytes) {
    log_line("at", "req " + at_text(bytes));
    std::string command;
    for (const char c : bytes + "\r") {
        if (c != '\r' && c != '\n') {
            command += c;
            continue;
        }
        if (!command.empty()) {
            const std::string answer = answer_at_command(command);
            log_line("at", "rsp " + at_text(answer));
            if (!answer.empty())
                show_on_terminal(answer);
        }
        command.clear();
    }
}

int run_with_channel(const char* command) {
    const std::optional<Fault> fault = platform_call("at_open", "smd8");
    const std::string library = beside(AT_REDIRECT_LIBRARY);
    const Fd redirect(library, O_RDONLY);
    if (!redirect.ok()) {
        complain("at", 0, library + " is missing, so nothing can be sent");
        return -1;
    }
    const Fd channel(::memfd_create("at", MFD_CLOEXEC));
    const bool opens = channel.ok() && !fault && ensure_phone();
    const int status = run_shell(
        command, shell_environment(path_of(redirect.get()), opens ? channel.get() : no_channel));
    if (const std::string bytes = opens ? written_to(channel.get()) : ""; !bytes.empty())
        answer_all(bytes);
    return status;
}

} // namespace

extern "C" int system(const char* command) {
    if (command == nullptr)
        return 1; /* there is a shell */
    if (std::strstr(command, AT_DEVICE) != nullptr)
        return guarded(-1, [=] { return run_with_channel(command); });
    static const auto next = reinterpret_cast<int (*)(const char*)>(::dlsym(RTLD_NEXT, "system"));
    return next != nullptr ? next(command) : -1;
}
