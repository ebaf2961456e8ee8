// SPDX-License-Identifier: Apache-2.0
#include "workbench/identity.h"

#include <algorithm>

namespace lab::workbench {

namespace {

constexpr size_t eid_digits = 32;
constexpr size_t imei_length = 15;
constexpr size_t imei_bytes = 8;
constexpr char imei_type = 0x0A; /* low half of the first byte behind the length */

bool all_digits(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

char check_digit(const std::string& digits) {
    int sum = 0;
    for (size_t i = 0; i < digits.size(); ++i) {
        const int digit = (digits[i] - '0') * (i % 2 == 1 ? 2 : 1);
        sum += digit / 10 + digit % 10;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

} // namespace

std::string checked_eid(const std::string& digits) {
    if ((digits.size() != eid_digits && digits.size() != eid_digits - 2) || !all_digits(digits))
        return "";
    std::string eid = digits.substr(0, eid_digits - 2);
    int rest = 0; /* of the number with two zeros behind it, divided by 97 */
    for (const char digit : eid + "00")
        rest = (rest * 10 + digit - '0') % 97;
    const int check = 98 - rest;
    eid += static_cast<char>('0' + check / 10);
    eid += static_cast<char>('0' + check % 10);
    return eid;
}

std::string imei_item(const std::string& digits) {
    std::string whole = digits;
    if (!all_digits(whole) || (whole.size() != imei_length && whole.size() != imei_length - 1))
        return "";
    const char check = check_digit(whole.substr(0, imei_length - 1));
    if (whole.size() == imei_length && whole.back() != check)
        return "";
    whole.resize(imei_length - 1);
    whole += check;
    std::string item = {static_cast<char>(imei_bytes),
                        static_cast<char>((whole[0] - '0') << 4 | imei_type)};
    for (size_t i = 1; i < whole.size(); i += 2)
        item += static_cast<char>((whole[i + 1] - '0') << 4 | (whole[i] - '0'));
    return item;
}

std::string imei_digits(const std::string& item) {
    if (item.size() < imei_bytes + 1 || item[0] != static_cast<char>(imei_bytes))
        return "";
    std::string digits;
    for (size_t i = 1; i <= imei_bytes; ++i) {
        const auto byte = static_cast<unsigned char>(item[i]);
        if (i > 1)
            digits += static_cast<char>('0' + (byte & 0x0F));
        digits += static_cast<char>('0' + (byte >> 4));
    }
    return all_digits(digits) ? digits : "";
}

} // namespace lab::workbench
