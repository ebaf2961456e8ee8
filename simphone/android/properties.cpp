// SPDX-License-Identifier: Apache-2.0
/* Android properties: one text file each, prop/NAME. */
#include "cutils_properties.h"

#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

#include "phone/faults.h"
#include "phone/guarded.h"
#include "phone/phone.h"

namespace {

std::filesystem::path property_file(const char* key) {
    return std::filesystem::path("prop") / std::filesystem::path(key).filename();
}

/* The file's text up to the first newline, blanks and all. */
std::string stored(const char* key) {
    const std::optional<simphone::Bytes> bytes = simphone::read_file(property_file(key));
    if (!bytes)
        return "";
    const std::string text(bytes->begin(), bytes->end());
    return text.substr(0, text.find('\n'));
}

} // namespace

int property_get(const char* key, char* value, const char* default_value) {
    /* A property can't fail, only be missing, or be another. */
    std::string text = simphone::guarded(std::string(), [&] {
        const std::optional<simphone::Fault> fault = simphone::platform_call("property_get", key);
        return !fault                                        ? stored(key)
               : fault->kind == simphone::Fault::Kind::reply ? fault->argument
                                                             : "";
    });
    const std::string_view found =
        text.empty() && default_value != nullptr ? std::string_view(default_value) : text;
    const size_t size = found.copy(value, PROPERTY_VALUE_MAX - 1);
    value[size] = '\0';
    return static_cast<int>(size);
}

int property_set(const char* key, const char* value) {
    return simphone::guarded(-1, [=] {
        if (simphone::platform_call("property_set", key))
            return -1;
        const std::string text = value != nullptr ? value : "";
        if (text.size() >= PROPERTY_VALUE_MAX)
            return -1;
        return simphone::write_text(property_file(key), text) == 0 ? 0 : -1;
    });
}
