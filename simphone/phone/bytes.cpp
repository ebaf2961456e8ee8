// SPDX-License-Identifier: Apache-2.0
#include "phone/bytes.h"

#include <algorithm>
#include <cctype>

namespace simphone {

uint64_t get_le(ByteView bytes, size_t width) {
    uint64_t value = 0;
    for (size_t i = std::min(width, bytes.size()); i > 0; --i)
        value = value << 8 | bytes[i - 1];
    return value;
}

void put_le(Bytes& out, uint64_t value, size_t width) {
    for (; width > 0; --width, value >>= 8)
        out.push_back(static_cast<uint8_t>(value));
}

void set_le(Bytes& out, size_t offset, uint64_t value, size_t width) {
    for (size_t i = 0; i < width; ++i, value >>= 8)
        out.at(offset + i) = static_cast<uint8_t>(value);
}

std::string to_hex(ByteView bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

Bytes from_hex(std::string_view text) {
    const auto digit = [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return std::isdigit(u) ? c - '0' : std::tolower(u) - 'a' + 10;
    };
    Bytes bytes;
    size_t i = 0;
    while (i < text.size()) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        if (i + 1 >= text.size() || !std::isxdigit(static_cast<unsigned char>(text[i])) ||
            !std::isxdigit(static_cast<unsigned char>(text[i + 1])))
            break;
        bytes.push_back(static_cast<uint8_t>(digit(text[i]) << 4 | digit(text[i + 1])));
        i += 2;
    }
    return bytes;
}

} // namespace simphone
