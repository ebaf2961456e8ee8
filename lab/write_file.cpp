// SPDX-License-Identifier: Apache-2.0
#include "write_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace lab {

bool write_file(const std::string& path, std::string_view text, std::string& error) {
    const std::string aside = path + ".new";
    std::FILE* const file = std::fopen(aside.c_str(), "wb");
    bool good = file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size();
    int reason = good ? 0 : errno;
    if (file != nullptr && std::fclose(file) != 0 && good) {
        good = false;
        reason = errno;
    }
    if (good && std::rename(aside.c_str(), path.c_str()) == 0)
        return true;
    if (good)
        reason = errno;
    std::remove(aside.c_str());
    error = path + " can't be written: " + std::strerror(reason);
    return false;
}

} // namespace lab
