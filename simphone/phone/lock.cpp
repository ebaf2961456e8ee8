// SPDX-License-Identifier: Apache-2.0
#include "phone/lock.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "phone/complaint.h"
#include "phone/phone.h"

namespace simphone {

namespace {

constexpr int64_t default_patience_ms = 3000;
constexpr int64_t telling_ms = 1000; /* a shorter try proves nothing */

thread_local int lock_depth = 0;
thread_local int lock_fd = -1;
thread_local int lock_error = 0;

/* Somebody keeps the lock for good, as far as was seen last. */
std::atomic<bool> stuck{false};

int open_lock_file() {
    std::error_code ignored;
    std::filesystem::create_directories(root(), ignored);
    const std::filesystem::path file = root() / ".lock";
    constexpr int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int fd = ::open(file.c_str(), O_RDWR | O_CREAT | flags, 0666);
    /* Another user's can be held all the same. */
    return fd >= 0 ? fd : ::open(file.c_str(), O_RDONLY | flags);
}

/* When the lock was taken last. */
int64_t taken_ns(int fd) {
    struct stat info {};
    ::fstat(fd, &info);
    return info.st_mtim.tv_sec * INT64_C(1000000000) + info.st_mtim.tv_nsec;
}

/* Many processes that pass the lock on are no reason to give up: the time counts from when it was
 * last seen to be taken. */
int wait_for_lock(int fd, int64_t patience_ms) {
    using namespace std::chrono;
    int64_t taken = taken_ns(fd);
    auto until = steady_clock::now() + milliseconds(patience_ms);
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return EROFS;
        if (const int64_t now = taken_ns(fd); now != taken) {
            taken = now;
            until = steady_clock::now() + milliseconds(patience_ms);
        }
        if (steady_clock::now() >= until)
            return ETIMEDOUT;
        std::this_thread::sleep_for(milliseconds(1));
    }
    ::futimens(fd, nullptr);
    return 0;
}

} // namespace

Lock::Lock(std::optional<int64_t> patience_ms) {
    if (lock_depth++ > 0)
        return;
    lock_fd = open_lock_file();
    if (lock_fd < 0) {
        lock_error = EROFS;
        return;
    }
    lock_error = wait_for_lock(lock_fd, patience_ms.value_or(stuck ? 0 : default_patience_ms));
    if (lock_error != ETIMEDOUT)
        stuck = false;
    else if (patience_ms.value_or(default_patience_ms) >= telling_ms)
        stuck = true;
    if (lock_error == ETIMEDOUT && stuck)
        complain(".lock", 0,
                 "another process holds the phone and does not let go; requests time out until it "
                 "does");
}

Lock::~Lock() {
    if (--lock_depth > 0 || lock_fd < 0)
        return;
    ::close(lock_fd);
    lock_fd = -1;
}

int Lock::error() const { return lock_error; }

} // namespace simphone
