// SPDX-License-Identifier: Apache-2.0
/* A place where a thread of the program may wait: what it waits for comes as it would, and the tape
 * tells when the thread went on. errno is the caller's throughout. */
#pragma once

#include <cerrno>
#include <ctime>

#include <pthread.h>

#include "journal.h"
#include "threads.h"
#include "turn.h"
#include "waits.h"

/* `wait` keeps the thread for as long as it takes; others may run meanwhile. */
template <typename Real> void wait_told(Wait kind, int error, Real wait) {
    const long long began_us = journal::now_us();
    turn::give();
    errno = error;
    const int result = wait();
    error = errno;
    turn::take();
    journal::waited(kind, began_us, result, error);
    threads::waited();
    errno = error;
}

template <typename Real> int always_waits(Wait kind, Real real) {
    const int error = errno;
    if (!journal::recording()) {
        journal::hold_after_end();
        errno = error;
        return real();
    }
    int result = 0;
    wait_told(kind, error, [&] { return result = real(); });
    return result;
}

/* For a condition, with the mutex that belongs to it. */
template <typename Real> int waits_with(pthread_mutex_t*, Real real) {
    return always_waits(Wait::condition, real);
}

/* `attempt` is true when there is nothing to wait for; `real` waits. */
template <typename Attempt, typename Real> void may_wait(Wait kind, Attempt attempt, Real real) {
    const int error = errno;
    if (!journal::recording()) {
        journal::hold_after_end();
        errno = error;
        real();
    } else if (attempt()) {
        threads::went_past(kind);
    } else {
        wait_told(kind, error, [&] {
            real();
            return 0;
        });
    }
}

inline void clock_was_read(const timespec& time) {
    const int error = errno;
    journal::clock_read(time);
    errno = error;
}

/* Waits for standard output's lock. */
void lock_output();
