// SPDX-License-Identifier: Apache-2.0
#include "workbench/directory.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>

#include "workbench/identity.h"
#include "write_file.h"

namespace lab::workbench {

namespace fs = std::filesystem;

namespace {

constexpr const char* first_imei[] = {"490154203237518", "490154203237591"};
constexpr auto patience = std::chrono::seconds(3);

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

fs::path home() {
    if (const std::string home = environment("HOME"); home.rfind('/', 0) == 0)
        return home;
    const struct passwd* const user = ::getpwuid(::geteuid());
    return user != nullptr && user->pw_dir[0] == '/' ? user->pw_dir : "/";
}

/* Without a slash at the end, since names are made of it. */
fs::path tidy(const fs::path& path) {
    const fs::path whole = fs::absolute(path).lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

} // namespace

fs::path phone_directory() {
    if (const std::string named = environment("KVT_PHONE"); !named.empty())
        return tidy(named);
    if (const std::string state = environment("XDG_STATE_HOME"); state.rfind('/', 0) == 0)
        return tidy(fs::path(state) / "kvt" / "phone");
    return tidy(home() / ".local" / "state" / "kvt" / "phone");
}

std::optional<std::string> read_phone_file(const std::string& name) {
    const fs::path path = phone_directory() / name;
    std::error_code failed;
    std::ifstream file(path, std::ios::binary);
    if (!fs::is_regular_file(path, failed) || !file)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::optional<std::string> setting_text(const std::string& name) {
    std::optional<std::string> text = read_phone_file(name);
    if (!text)
        return text;
    constexpr const char* blanks = " \t\r\n";
    text->erase(text->find_last_not_of(blanks) + 1);
    text->erase(0, text->find_first_not_of(blanks));
    return text;
}

bool write_phone_file(const std::string& name, const std::string& text, std::string& error) {
    const fs::path path = phone_directory() / name;
    std::error_code failed;
    fs::create_directories(path.parent_path(), failed);
    return write_file(path.string(), text, error);
}

bool seed_phone(std::string& error) {
    std::error_code failed;
    if (fs::exists(phone_directory() / "nv", failed))
        return true;
    for (int sub = 0; sub < 2; ++sub) {
        const std::string name = std::to_string(sub);
        fs::create_directories(phone_directory() / "efs" / name, failed);
        if (!write_phone_file("nv/" + name + "/550", imei_item(first_imei[sub]), error))
            return false;
    }
    return true;
}

Lock::Lock(const fs::path& directory) {
    const std::string name = (directory / ".lock").string();
    fd_ = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
    const auto until = std::chrono::steady_clock::now() + patience;
    while (fd_ >= 0 && !held_ && std::chrono::steady_clock::now() < until) {
        held_ = ::flock(fd_, LOCK_EX | LOCK_NB) == 0;
        if (!held_)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

Lock::~Lock() {
    if (fd_ >= 0)
        ::close(fd_);
}

NewFolder::NewFolder(const fs::path& target)
    : target_(tidy(target)), aside_(target_.string() + ".new") {
    std::error_code failed;
    fs::remove_all(aside_, failed);
    fs::create_directories(aside_, failed);
}

NewFolder::~NewFolder() {
    std::error_code failed;
    fs::remove_all(aside_, failed);
}

bool NewFolder::put_in_place(bool replace, std::string& error) {
    std::error_code failed;
    if (::renameat2(AT_FDCWD, aside_.c_str(), AT_FDCWD, target_.c_str(),
                    replace ? RENAME_EXCHANGE : RENAME_NOREPLACE) == 0)
        return true;                     /* what was exchanged goes with us */
    fs::rename(aside_, target_, failed); /* over an empty folder */
    if (failed)
        error = target_.string() + ": " + failed.message();
    return !failed;
}

} // namespace lab::workbench
