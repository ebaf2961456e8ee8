// SPDX-License-Identifier: Apache-2.0
#include "phone/phone.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "phone/complaint.h"
#include "phone/fd.h"
#include "phone/lock.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

constexpr off_t max_log_size = 8 << 20;

std::string stamp() {
    const int64_t ms = now_ms();
    const time_t seconds = static_cast<time_t>(ms / 1000);
    struct tm local {};
    ::localtime_r(&seconds, &local);
    char text[64];
    const size_t used = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(text + used, sizeof text - used, ".%03d %d ", static_cast<int>(ms % 1000),
                  static_cast<int>(::getpid()));
    return text;
}

void move_aside(const fs::path& path, ino_t grown) {
    const Lock lock;
    struct stat now {};
    if (lock.held() && ::lstat(path.c_str(), &now) == 0 && now.st_ino == grown)
        ::rename(path.c_str(), (root() / "log.1").c_str());
}

} // namespace

int64_t now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

void log_line(const std::string& kind, std::string text) {
    if (!ensure_phone())
        return;
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.replace(at, 1, "\\n");
    const std::string line = stamp() + kind + " " + text + "\n";

    const fs::path path = root() / "log";
    /* Never through a link, which another user may have put there, nor into a pipe. */
    const Fd file(path, O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW, 0600);
    struct stat info {};
    if (!file.ok() && (errno == EACCES || errno == EROFS || errno == EPERM))
        return; /* a phone that can only be read */
    if (!file.ok() || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        complain("log", 0, "is no plain file, so nothing is logged; remove it");
        return;
    }
    if ((info.st_mode & 077) != 0)
        ::fchmod(file.get(), 0600);
    /* One write a line: O_APPEND keeps lines of several processes apart. */
    write_all(file.get(), line.data(), line.size());
    if (info.st_size > max_log_size)
        move_aside(path, info.st_ino);
}

} // namespace simphone
