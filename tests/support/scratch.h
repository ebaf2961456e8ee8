// SPDX-License-Identifier: Apache-2.0
/* A folder for phones that come and go by the thousand: in memory where there is such a place,
 * since a file system on a disk avoids names and places that were freed a moment ago. */
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

inline std::filesystem::path new_scratch_folder() {
    std::error_code none;
    const std::filesystem::path memory = "/dev/shm";
    const bool shm = std::filesystem::is_directory(memory, none);
    std::string name =
        ((shm ? memory : std::filesystem::temp_directory_path()) / "kvt-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        std::abort();
    return name;
}
