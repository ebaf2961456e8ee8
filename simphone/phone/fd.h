// SPDX-License-Identifier: Apache-2.0
/* A file descriptor that closes itself. */
#pragma once

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simphone {

class Fd {
  public:
    /* Opens without waiting: a pipe of that name holds nobody up. */
    Fd(const std::filesystem::path& path, int flags, mode_t mode = 0666)
        : fd_(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, mode)) {}
    explicit Fd(int fd) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    bool ok() const { return fd_ >= 0; }

  private:
    int fd_;
};

/* False with errno when not all could be written. */
bool write_all(int fd, const void* data, size_t size);

} // namespace simphone
