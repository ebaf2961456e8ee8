// SPDX-License-Identifier: Apache-2.0
/* A lock of the program: taken, and told when another thread had it last. What is always given by
 * another comes as null. */
#pragma once

#include <cerrno>

#include "journal.h"

/* Counts the calling thread's locks. */
inline thread_local unsigned t_locks = 0;

template <typename Real> int take_lock(const void* mutex, Real real) {
    const unsigned number = ++t_locks;
    const int result = real();
    if (result != 0 || !journal::recording())
        return result;
    const int error = errno;
    if (mutex == nullptr || journal::changes_hands(mutex)) {
        Text line;
        line.member("at", journal::now_us());
        line.member("thread", journal::this_thread());
        line.member("locked", number);
        journal::event(line);
    }
    errno = error;
    return result;
}
