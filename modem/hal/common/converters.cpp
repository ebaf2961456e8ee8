#include "converters.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "log_lines.h"

namespace {

constexpr size_t max_hex_digits = 50;

int input_is_null() {
    if (orvik_stdout_print_on())
        std::puts("\ninput is null");
    return 0;
}

int32_t hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return 0;
}

int32_t saturated(double value) {
    constexpr int32_t most = std::numeric_limits<int32_t>::max();
    return value >= static_cast<double>(most) ? most : static_cast<int32_t>(value);
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
    std::array<int32_t, max_hex_digits> digits{};
    for (size_t i = 0; i < count; ++i)
        digits[i] = hex_digit(str[i]);
    uint32_t sum = 0;
    for (size_t i = 0; i < count; ++i) {
        const double weight = std::pow(16.0, static_cast<double>(count - 1 - i));
        sum += static_cast<uint32_t>(saturated(digits[i] * weight));
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
