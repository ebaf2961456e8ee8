// SPDX-License-Identifier: Apache-2.0
#include "converters.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "log_lines.h"

namespace {

constexpr size_t max_hex_digits = 50;

int input_is_null() {
    orvik_print("\ninput is null\n");
    return 0;
}

uint32_t hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<uint32_t>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<uint32_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<uint32_t>(c - 'A' + 10);
    return 0;
}

} // namespace

int orvik_string_to_int(const char* str) {
    if (str == nullptr)
        return input_is_null();
    if (str[0] == '0' && (str[1] == 'x' || str[1] == 'X'))
        return orvik_hex_string_to_int(str + 2);
    return std::atoi(str);
}

int orvik_hex_string_to_int(const char* str) {
    if (str == nullptr)
        return input_is_null();
    const size_t count = std::strlen(str);
    if (count > max_hex_digits)
        return 0;
    uint32_t sum = 0;
    for (size_t i = 0; i < count; ++i) {
        const uint64_t digit = hex_digit(str[i]);
        /* Beyond 8 places every digit but 0 saturates. */
        const size_t places = std::min<size_t>(count - 1 - i, 8);
        sum += static_cast<uint32_t>(std::min<uint64_t>(digit << (4 * places), INT32_MAX));
    }
    return static_cast<int32_t>(sum);
}

void orvik_byte_to_hex(const unsigned char* bytes, int count, char* out) {
    static constexpr char digits[] = "0123456789abcdef";
    if (bytes == nullptr)
        return;
    for (int i = 0; i < count; ++i) {
        *out++ = digits[bytes[i] >> 4];
        *out++ = digits[bytes[i] & 15];
    }
}
