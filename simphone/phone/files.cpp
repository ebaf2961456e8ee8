// SPDX-License-Identifier: Apache-2.0
#include "phone/phone.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>

#include "phone/fd.h"
#include "phone/lock.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

thread_local int storage_error = 0;

/* Notes the error of a failed change, and returns it. */
int record_error(int error) {
    if (error != 0 && error != ENOENT)
        storage_error = error;
    return error;
}

int write_aside(const fs::path& target, ByteView bytes) {
    std::error_code error;
    fs::create_directories(target.parent_path(), error);
    if (error)
        return error.value();
    /* One name for all that is written aside: under the lock there is one writer, and what a killed
     * one left, or anybody put there, goes. */
    const fs::path aside = root() / ".aside";
    ::unlink(aside.c_str());
    int failed = 0;
    {
        const Fd file(aside, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
        if (!file.ok())
            return errno;
        if (!write_all(file.get(), bytes.data(), bytes.size()))
            failed = errno;
    }
    if (failed == 0 && ::rename(aside.c_str(), target.c_str()) != 0)
        failed = errno;
    if (failed != 0)
        ::unlink(aside.c_str());
    return failed;
}

} // namespace

bool write_all(int fd, const void* data, size_t size) {
    const auto* from = static_cast<const uint8_t*>(data);
    while (size > 0) {
        const ssize_t n = ::write(fd, from, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        from += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

std::optional<Bytes> read_file(const fs::path& name) {
    const Fd file(root() / name, O_RDONLY);
    struct stat info {};
    if (!file.ok() || ::fstat(file.get(), &info) != 0)
        return std::nullopt;
    if (!S_ISREG(info.st_mode)) {
        errno = EISDIR;
        return std::nullopt;
    }
    Bytes bytes;
    uint8_t buffer[4096];
    for (;;) {
        const ssize_t n = ::read(file.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return std::nullopt;
        if (n == 0)
            return bytes;
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
}

std::vector<std::string> list_folder(const fs::path& name) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir((root() / name).c_str()),
                                                     ::closedir);
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr)
        if (const std::string_view found = entry->d_name; found != "." && found != "..")
            names.emplace_back(found);
    std::sort(names.begin(), names.end());
    return names;
}

int write_file(const fs::path& name, ByteView bytes) {
    const Lock lock;
    return record_error(lock.held() ? write_aside(root() / name, bytes) : lock.error());
}

int write_text(const fs::path& name, const std::string& text) {
    const std::string line = text + "\n";
    return write_file(name, ByteView(reinterpret_cast<const uint8_t*>(line.data()), line.size()));
}

int remove_file(const fs::path& name) {
    const Lock lock;
    if (!lock.held())
        return record_error(lock.error());
    return record_error(::unlink((root() / name).c_str()) == 0 ? 0 : errno);
}

void note_text(const fs::path& name, const std::string& text) {
    const int before = storage_error;
    write_text(name, text);
    storage_error = before;
}

int take_storage_error() { return std::exchange(storage_error, 0); }

} // namespace simphone
