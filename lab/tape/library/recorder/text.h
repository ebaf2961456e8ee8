// SPDX-License-Identifier: Apache-2.0
/* A text that grows, for lines of the tape. Memory that can't be had leaves it cut, which its
 * owner is told. */
#pragma once

#include <cstddef>
#include <cstdint>

class Text {
  public:
    Text() = default;
    ~Text();
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    const char* data() const { return data_; }
    size_t size() const { return size_; }
    bool whole() const { return whole_; }
    void clear();

    void add(const char* text, size_t length);
    void add(const char* text);
    void add_number(long long value);
    void add_hex(const void* bytes, size_t length);

    /* "key": with a comma in front where something stands before it in its object. */
    void key(const char* name);
    void member(const char* name, long long value);
    /* A JSON string; bytes that are not UTF-8 become {"hex": "..."}. Null: nothing is added. */
    void member_text(const char* name, const char* text);
    void member_text(const char* name, const char* text, size_t length);
    /* Bytes as NAME in hex, without zeros at their end, and NAME_len. Null: nothing is added. */
    void member_bytes(const char* name, const void* bytes, size_t length);

  private:
    bool make_room(size_t more);

    char* data_ = small_;
    size_t size_ = 0;
    size_t capacity_ = sizeof small_;
    bool whole_ = true;
    char small_[1536];
};
