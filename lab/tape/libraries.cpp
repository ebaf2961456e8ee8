#include "libraries.h"

#include <cstdlib>
#include <filesystem>

#include "find_kvt.h"

namespace lab::tape {

namespace fs = std::filesystem;

std::string find_library(const std::string& name, std::string& error) {
    const char* const setting = std::getenv("KVT_TAPE_LIBRARIES");
    const fs::path folder =
        setting != nullptr ? fs::path(setting) : fs::path(own_folder()) / ".." / KVT_LIBRARY_FOLDER;
    std::error_code failed;
    const fs::path path = fs::canonical(folder / name, failed);
    if (!failed)
        return path.string();
    error = (folder / name).string() + " is not there: build the whole lab, or set "
                                       "KVT_TAPE_LIBRARIES";
    return "";
}

} // namespace lab::tape
