// SPDX-License-Identifier: Apache-2.0
#include "find_kvt.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <unistd.h>

namespace lab {

namespace fs = std::filesystem;

namespace {

bool may_run(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

} // namespace

std::string own_folder() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    return error ? "." : self.parent_path().string();
}

std::string find_kvt(const std::string& given, std::string& error) {
    const char* const setting = std::getenv("KVT_PROGRAM");
    std::string named = !given.empty() ? given : setting != nullptr ? setting : "";
    if (!named.empty()) {
        if (may_run(named))
            return named;
        error = named + " is not a program that may be run";
        return "";
    }
    if (const fs::path beside = fs::path(own_folder()) / "kvt"; may_run(beside))
        return beside.string();
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (may_run(fs::path(folder.empty() ? "." : folder) / "kvt"))
            return (fs::path(folder.empty() ? "." : folder) / "kvt").string();
    error = "kvt was not found: name it with --kvt or KVT_PROGRAM";
    return "";
}

} // namespace lab
