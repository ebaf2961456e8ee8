// SPDX-License-Identifier: Apache-2.0
/* A lock of the program: taken when it is this thread's turn. */
#pragma once

#include "engine.h"
#include "threads.h"

template <typename Real> int take_lock(const void*, Real real) {
    const long long number = threads::next_lock();
    const engine::ScriptEvent* const lock = engine::begin_lock(number);
    const int result = real();
    engine::end_lock(lock, number);
    return result;
}
