// SPDX-License-Identifier: Apache-2.0
#include "phone/phone.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <pwd.h>

#include "phone/complaint.h"
#include "phone/fd.h"
#include "phone/lock.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

/* What a phone without NV items gets: an IMEI for each subscription. The phone is locked. */
void seed() {
    static constexpr uint8_t imei[2][9] = {
        {0x08, 0x4A, 0x09, 0x51, 0x24, 0x30, 0x32, 0x57, 0x81},
        {0x08, 0x4A, 0x09, 0x51, 0x24, 0x30, 0x32, 0x57, 0x19},
    };
    /* Whatever has that name goes: what a killed one left, a plain file, a link to elsewhere. */
    const fs::path aside = root() / ".nv";
    std::error_code ignored;
    fs::remove_all(aside, ignored);
    if (::mkdir(aside.c_str(), 0777) != 0)
        return;
    for (int sub = 0; sub < 2; ++sub) {
        const std::string name = std::to_string(sub);
        fs::create_directories(root() / "efs" / name, ignored);
        fs::create_directories(aside / name, ignored);
        const Fd item(aside / name / "550", O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
        if (item.ok())
            write_all(item.get(), imei[sub], sizeof imei[sub]);
    }
    if (::rename(aside.c_str(), (root() / "nv").c_str()) != 0)
        fs::remove_all(aside, ignored);
}

/* The folder that the environment names; nothing when it names none, or a relative one, which
 * counts as none. */
std::optional<fs::path> absolute(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value == '/' ? std::optional<fs::path>(value) : std::nullopt;
}

fs::path home_of_user() {
    std::vector<char> buffer(16384);
    struct passwd entry {};
    struct passwd* found = nullptr;
    ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir[0] == '/' ? found->pw_dir : "/";
}

fs::path named_root() {
    if (const char* phone = std::getenv("KVT_PHONE"); phone != nullptr && *phone != '\0')
        return phone;
    if (const std::optional<fs::path> state = absolute("XDG_STATE_HOME"))
        return *state / "kvt" / "phone";
    const std::optional<fs::path> home = absolute("HOME");
    return (home ? *home : home_of_user()) / ".local" / "state" / "kvt" / "phone";
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

bool ensure_phone() {
    std::error_code error;
    if (!exists() && !fs::create_directories(root(), error) && !exists()) {
        complain("", 0, "can't be made: " + error.message());
        return false;
    }
    struct stat info {};
    if (::stat((root() / "nv").c_str(), &info) != 0) {
        const Lock lock;
        if (!lock.held())
            complain("", 0, std::string("can't be set up: ") + std::strerror(errno));
        else if (::stat((root() / "nv").c_str(), &info) != 0)
            seed();
    }
    return true;
}

} // namespace simphone
