// SPDX-License-Identifier: Apache-2.0
/* A lock of the program: taken when it is this thread's turn. */
#pragma once

#include "engine.h"

inline thread_local unsigned t_locks = 0;

template <typename Real> int take_lock(const void*, Real real) {
    const engine::ScriptEvent* const lock = engine::begin_lock(++t_locks);
    const int result = real();
    if (lock != nullptr)
        engine::end_lock(*lock);
    return result;
}
