// SPDX-License-Identifier: Apache-2.0
/* Text on its way to standard output: threads print in the recorded order. */
#pragma once

#include <cerrno>
#include <cstdio>

#include "engine.h"

inline void before_output_lock() {
    const int error = errno;
    engine::before_output_lock();
    errno = error;
}

class Printing {
  public:
    Printing(const char* text, size_t length) : length_(length) {
        const int error = errno;
        engine::before_printing(text, length);
        errno = error;
    }
    ~Printing() {
        const int error = errno;
        engine::after_printing(length_);
        errno = error;
    }
    Printing(const Printing&) = delete;
    Printing& operator=(const Printing&) = delete;

  private:
    size_t length_;
};
