#include "phone/phone.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simphone {

namespace fs = std::filesystem;

namespace {

constexpr off_t max_log_size = 8 << 20;

/* A descriptor that closes itself. */
class Fd {
  public:
    Fd(const fs::path& path, int flags) : fd_(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
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

bool write_all(int fd, const uint8_t* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

/* What a phone without NV items gets: an IMEI for each subscription. The phone is locked. */
void seed() {
    static constexpr uint8_t imei[2][9] = {
        {0x08, 0x4A, 0x09, 0x51, 0x24, 0x30, 0x32, 0x57, 0x81},
        {0x08, 0x4A, 0x09, 0x51, 0x24, 0x30, 0x32, 0x57, 0x99},
    };
    const fs::path aside =
        root() / ".nv"; /* as .aside below: what a killed one left is taken over */
    std::error_code ignored;
    for (int sub = 0; sub < 2; ++sub) {
        const std::string name = std::to_string(sub);
        fs::create_directories(root() / "efs" / name, ignored);
        fs::create_directories(aside / name, ignored);
        const Fd item(aside / name / "550", O_WRONLY | O_CREAT | O_TRUNC);
        if (item.ok())
            write_all(item.get(), imei[sub], sizeof imei[sub]);
    }
    if (::rename(aside.c_str(), (root() / "nv").c_str()) != 0)
        fs::remove_all(aside, ignored);
}

thread_local int lock_depth = 0;
thread_local int lock_fd = -1;
thread_local int storage_error = 0;

/* Notes a failed change of the phone. */
int changed(int error) {
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
     * one left is taken over by the next. */
    const fs::path aside = root() / ".aside";
    int failed = 0;
    {
        const Fd file(aside, O_WRONLY | O_CREAT | O_TRUNC);
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

fs::path named_root() {
    if (const char* phone = std::getenv("KVT_PHONE"); phone != nullptr && *phone != '\0')
        return phone;
    if (const char* state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state != '\0')
        return fs::path(state) / "kvt" / "phone";
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr ? home : "/") / ".local" / "state" / "kvt" / "phone";
}

} // namespace

fs::path root() {
    /* Without a slash or dot at the end, since names are made of it. */
    fs::path dir = named_root().lexically_normal();
    return dir.has_filename() ? dir : dir.parent_path();
}

bool exists() {
    std::error_code error;
    return fs::is_directory(root(), error);
}

bool usable() {
    std::error_code error;
    if (!exists() && !fs::create_directories(root(), error) && !exists())
        return false;
    struct stat info {};
    if (::stat((root() / "nv").c_str(), &info) != 0) {
        const Lock lock;
        if (lock.held() && ::stat((root() / "nv").c_str(), &info) != 0)
            seed();
    }
    return true;
}

Lock::Lock() {
    if (lock_depth++ > 0)
        return;
    std::error_code error;
    fs::create_directories(root(), error);
    const fs::path file = root() / ".lock";
    lock_fd = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock_fd < 0) /* another user's: it can be held all the same */
        lock_fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    while (lock_fd >= 0 && ::flock(lock_fd, LOCK_EX) != 0 && errno == EINTR) {
    }
}

Lock::~Lock() {
    if (--lock_depth > 0 || lock_fd < 0)
        return;
    ::close(lock_fd);
    lock_fd = -1;
}

bool Lock::held() const { return lock_fd >= 0; }

std::optional<Bytes> read_file(const fs::path& name) {
    const Fd file(root() / name, O_RDONLY | O_NONBLOCK); /* a pipe of that name holds nobody up */
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

int write_file(const fs::path& name, ByteView bytes) {
    const Lock lock;
    return changed(lock.held() ? write_aside(root() / name, bytes) : EROFS);
}

int write_text(const fs::path& name, const std::string& text) {
    const std::string line = text + "\n";
    return write_file(name, ByteView(reinterpret_cast<const uint8_t*>(line.data()), line.size()));
}

int remove_file(const fs::path& name) {
    const Lock lock;
    if (!lock.held())
        return changed(EROFS);
    return changed(::unlink((root() / name).c_str()) == 0 ? 0 : errno);
}

void note_text(const fs::path& name, const std::string& text) {
    const int before = storage_error;
    write_text(name, text);
    storage_error = before;
}

int take_storage_error() { return std::exchange(storage_error, 0); }

std::string setting(const fs::path& name, const std::string& default_text) {
    std::optional<Bytes> bytes = read_file(name);
    if (!bytes && errno == ENOENT && usable()) {
        const Lock lock; /* another may just have made it */
        bytes = read_file(name);
        if (!bytes && errno == ENOENT)
            note_text(name, default_text);
    }
    if (!bytes)
        return default_text;
    const std::string text(bytes->begin(), bytes->end());
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

long number_of(const std::string& text) {
    const bool hex = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    return std::strtol(text.c_str(), nullptr, hex ? 16 : 10);
}

long setting_number(const fs::path& name, long default_value) {
    return number_of(setting(name, std::to_string(default_value)));
}

int64_t now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

void log_line(const std::string& kind, std::string text) {
    if (!usable())
        return;
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.replace(at, 1, "\\n");
    const int64_t ms = now_ms();
    const time_t seconds = static_cast<time_t>(ms / 1000);
    struct tm local {};
    ::localtime_r(&seconds, &local);
    char stamp[64];
    const size_t used = std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(stamp + used, sizeof stamp - used, ".%03d %d ", static_cast<int>(ms % 1000),
                  static_cast<int>(::getpid()));
    const std::string line = stamp + kind + " " + text + "\n";

    const fs::path path = root() / "log";
    const Fd file(path, O_WRONLY | O_CREAT | O_APPEND);
    struct stat info {};
    if (!file.ok())
        return;
    /* One write a line: O_APPEND keeps lines of several processes apart. */
    write_all(file.get(), reinterpret_cast<const uint8_t*>(line.data()), line.size());
    if (::fstat(file.get(), &info) == 0 && info.st_size > max_log_size) {
        const Lock lock;
        struct stat now {};
        if (::stat(path.c_str(), &now) == 0 && now.st_ino == info.st_ino)
            ::rename(path.c_str(), (root() / "log.1").c_str());
    }
}

} // namespace simphone
