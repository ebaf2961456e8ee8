// SPDX-License-Identifier: Apache-2.0
/* Text on its way to standard output: the C library's own lock is held around printing it and
 * writing it down, so that the tape has it in its true order. */
#pragma once

#include <cerrno>
#include <cstdio>

#include "journal.h"
#include "threads.h"

/* The order of the prints is what counts. */
inline void before_output_lock() {}

class Printing {
  public:
    Printing(const char* text, size_t length)
        : text_(text), length_(length),
          recording_(journal::recording() && threads::place() == threads::Place::program) {
        if (recording_)
            ::flockfile(stdout);
        else
            journal::hold_after_end();
    }
    ~Printing() {
        if (!recording_)
            return;
        const int error = errno;
        journal::printed(text_, length_);
        ::funlockfile(stdout);
        errno = error;
    }
    Printing(const Printing&) = delete;
    Printing& operator=(const Printing&) = delete;

  private:
    const char* text_;
    size_t length_;
    bool recording_;
};
