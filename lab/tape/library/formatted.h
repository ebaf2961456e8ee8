// SPDX-License-Identifier: Apache-2.0
/* The text that a format makes, for as long as it is needed. */
#pragma once

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

class Formatted {
  public:
    /* args may not be used afterwards. */
    __attribute__((format(printf, 2, 0))) Formatted(const char* format, va_list args) {
        va_list first;
        va_copy(first, args);
        const int length = std::vsnprintf(small_, sizeof small_, format, first);
        va_end(first);
        length_ = length > 0 ? static_cast<size_t>(length) : 0;
        if (length_ < sizeof small_)
            return;
        large_ = static_cast<char*>(std::malloc(length_ + 1));
        if (large_ != nullptr)
            std::vsnprintf(large_, length_ + 1, format, args);
        else
            length_ = sizeof small_ - 1;
    }
    ~Formatted() { std::free(large_); }
    Formatted(const Formatted&) = delete;
    Formatted& operator=(const Formatted&) = delete;

    const char* text() const { return large_ != nullptr ? large_ : small_; }
    size_t length() const { return length_; }

  private:
    char small_[1024];
    char* large_ = nullptr;
    size_t length_ = 0;
};
