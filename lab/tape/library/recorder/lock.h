// SPDX-License-Identifier: Apache-2.0
/* A lock of the program: taken, and told when another thread had it last. What is always given by
 * another comes as null. */
#pragma once

#include <cerrno>

#include "journal.h"
#include "threads.h"

template <typename Real> int take_lock(const void* mutex, Real real) {
    const long long number = threads::next_lock();
    const int result = real();
    if (result != 0 || !journal::recording())
        return result;
    const int error = errno;
    journal::Taken before;
    if (mutex == nullptr || journal::changes_hands(mutex, number, before)) {
        Text line;
        line.member("at", journal::now_us());
        line.member("thread", journal::this_thread());
        line.member("locked", number);
        if (before.thread >= 0) {
            line.member("behind_thread", before.thread);
            line.member("behind", before.number);
        }
        journal::note(line);
    }
    errno = error;
    return result;
}
