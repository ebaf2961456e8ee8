// SPDX-License-Identifier: Apache-2.0
#include "text.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr char digits[] = "0123456789abcdef";

/* Length of the UTF-8 sequence that begins here; 0 when none does. */
size_t sequence_length(const unsigned char* p, size_t left) {
    struct Row {
        unsigned char from, to, second_from, second_to;
        size_t length;
    };
    static constexpr Row rows[] = {
        {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
    };
    for (const Row& row : rows) {
        if (p[0] < row.from || p[0] > row.to)
            continue;
        if (row.length > left ||
            (row.length > 1 && (p[1] < row.second_from || p[1] > row.second_to)))
            return 0;
        for (size_t i = 2; i < row.length; ++i)
            if (p[i] < 0x80 || p[i] > 0xBF)
                return 0;
        return row.length;
    }
    return 0;
}

bool is_utf8(const char* text, size_t length) {
    const auto* const p = reinterpret_cast<const unsigned char*>(text);
    for (size_t at = 0; at < length;) {
        const size_t n = sequence_length(p + at, length - at);
        if (n == 0)
            return false;
        at += n;
    }
    return true;
}

} // namespace

Text::~Text() {
    if (data_ != small_)
        std::free(data_);
}

void Text::clear() { size_ = 0; }

bool Text::make_room(size_t more) {
    if (capacity_ - size_ >= more)
        return true;
    size_t wanted = capacity_ * 2;
    while (wanted - size_ < more)
        wanted *= 2;
    auto* const larger = static_cast<char*>(std::malloc(wanted));
    if (larger == nullptr) {
        whole_ = false;
        return false;
    }
    std::memcpy(larger, data_, size_);
    if (data_ != small_)
        std::free(data_);
    data_ = larger;
    capacity_ = wanted;
    return true;
}

void Text::add(const char* text, size_t length) {
    if (!make_room(length))
        return;
    std::memcpy(data_ + size_, text, length);
    size_ += length;
}

void Text::add(const char* text) { add(text, std::strlen(text)); }

void Text::add_number(long long value) {
    char text[24];
    char* p = text + sizeof text;
    auto left = value < 0 ? 0 - static_cast<unsigned long long>(value)
                          : static_cast<unsigned long long>(value);
    do {
        *--p = static_cast<char>('0' + left % 10);
        left /= 10;
    } while (left != 0);
    if (value < 0)
        *--p = '-';
    add(p, static_cast<size_t>(text + sizeof text - p));
}

void Text::add_hex(const void* bytes, size_t length) {
    if (!make_room(2 * length))
        return;
    const auto* const p = static_cast<const unsigned char*>(bytes);
    char* out = data_ + size_;
    for (size_t i = 0; i < length; ++i) {
        *out++ = digits[p[i] >> 4];
        *out++ = digits[p[i] & 15];
    }
    size_ += 2 * length;
}

void Text::key(const char* name) {
    if (size_ > 0 && data_[size_ - 1] != '{')
        add(",", 1);
    add("\"", 1);
    add(name);
    add("\":", 2);
}

void Text::member(const char* name, long long value) {
    key(name);
    add_number(value);
}

void Text::member_text(const char* name, const char* text) {
    if (text != nullptr)
        member_text(name, text, std::strlen(text));
}

void Text::member_text(const char* name, const char* text, size_t length) {
    key(name);
    if (!is_utf8(text, length)) {
        add("{\"hex\":\"");
        add_hex(text, length);
        add("\"}");
        return;
    }
    add("\"", 1);
    size_t plain = 0; /* what needs no escape is added in one piece */
    for (size_t i = 0; i < length; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= 0x20 && c != '"' && c != '\\' && c != 0x7F)
            continue;
        add(text + plain, i - plain);
        plain = i + 1;
        switch (c) {
        case '"':
            add("\\\"", 2);
            break;
        case '\\':
            add("\\\\", 2);
            break;
        case '\n':
            add("\\n", 2);
            break;
        default:
            add("\\u00", 4);
            add_hex(&c, 1);
        }
    }
    add(text + plain, length - plain);
    add("\"", 1);
}

void Text::member_bytes(const char* name, const void* bytes, size_t length) {
    if (bytes == nullptr)
        return;
    const auto* const p = static_cast<const unsigned char*>(bytes);
    size_t used = length;
    while (used > 0 && p[used - 1] == 0)
        --used;
    key(name);
    add("\"", 1);
    add_hex(p, used);
    add("\",\"", 3);
    add(name);
    add("_len\":");
    add_number(static_cast<long long>(length));
}
