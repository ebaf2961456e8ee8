// SPDX-License-Identifier: Apache-2.0
/* A place where a thread of the program may wait: as long as it takes until it is its turn. No time
 * passes, and nobody needs to be woken. errno is the caller's throughout. */
#pragma once

#include <cerrno>
#include <ctime>

#include <pthread.h>

#include "engine.h"
#include "symbols.h"
#include "threads.h"
#include "waits.h"

/* Waits as the program does, while others run. */
template <typename Real> int wait_aside(Real real) {
    engine::step_aside();
    const int result = real();
    const int error = errno;
    engine::step_in();
    errno = error;
    return result;
}

/* With the mutex that belongs to a condition, or none. What was told of the wait is what it gives;
 * when order is lost meanwhile, it is over for nothing, as a wait for a condition may be. */
template <typename Real> int waits_with(Wait kind, pthread_mutex_t* mutex, Real real) {
    const int error = errno;
    const engine::Waiting waiting = engine::find_wait(kind);
    errno = error;
    if (waiting.told == engine::Told::free)
        return real();
    if (waiting.told == engine::Told::nothing)
        return wait_aside(real);
    if (mutex != nullptr)
        NEXT_DEFINITION(pthread_mutex_unlock)(mutex);
    const engine::ScriptEvent* const event = engine::take_turn(waiting);
    const auto lock = [&] { return NEXT_DEFINITION(pthread_mutex_lock)(mutex); };
    if (mutex != nullptr && NEXT_DEFINITION(pthread_mutex_trylock)(mutex) != 0)
        wait_aside(lock); /* not in the recorded run */
    errno = event != nullptr ? static_cast<int>(event->error) : error;
    return event != nullptr ? static_cast<int>(event->result) : 0;
}

template <typename Real> int always_waits(Wait kind, Real real) {
    return waits_with(kind, nullptr, real);
}

template <typename Real> int waits_with(pthread_mutex_t* mutex, Real real) {
    return waits_with(Wait::condition, mutex, real);
}

/* `attempt` is true when there is nothing to wait for; `real` waits. */
template <typename Attempt, typename Real> void may_wait(Wait kind, Attempt attempt, Real real) {
    const int error = errno;
    const engine::Waiting waiting = engine::find_wait(kind);
    errno = error;
    if (waiting.told == engine::Told::waits) {
        engine::take_turn(waiting);
        errno = error;
    }
    if (attempt())
        return waiting.told == engine::Told::waits ? void() : threads::went_past(kind);
    errno = error;
    wait_aside([&] {
        real();
        return 0;
    });
}

inline void clock_was_read(timespec& time) {
    const int error = errno;
    engine::read_clock(time);
    errno = error;
}

/* Waits for standard output's lock. */
void lock_output();
