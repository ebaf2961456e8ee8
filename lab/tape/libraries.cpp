// SPDX-License-Identifier: Apache-2.0
#include "libraries.h"

#include <cstdlib>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "find_kvt.h"

namespace lab::tape {

namespace fs = std::filesystem;

std::string find_library(const std::string& name, std::string& error) {
    std::vector<fs::path> folders;
    if (const char* const setting = std::getenv("KVT_TAPE_LIBRARIES"))
        folders.emplace_back(setting);
    else
        for (const char* const folder : {KVT_LIBRARY_FOLDERS})
            folders.push_back(fs::path(own_folder()) / folder);
    for (const fs::path& folder : folders) {
        std::error_code failed;
        const fs::path path = fs::canonical(folder / name, failed);
        if (!failed)
            return path.string();
    }
    error = (folders.front() / name).lexically_normal().string() +
            " is not there: build the whole lab, or set KVT_TAPE_LIBRARIES";
    return "";
}

std::string preloadable(const std::string& path) {
    if (path.find_first_of(": ") == std::string::npos)
        return path;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC); /* ours until we end */
    return fd < 0 ? path : "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(fd);
}

} // namespace lab::tape
