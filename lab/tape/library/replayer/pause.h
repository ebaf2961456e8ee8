// SPDX-License-Identifier: Apache-2.0
/* A pause of the program: as long as it takes until the recorded one's end has its turn. */
#pragma once

#include <cerrno>

#include "engine.h"

template <typename Real> int pause_for(long long, Real real) {
    const int error = errno;
    const engine::ScriptEvent* const pause = engine::begin_pause();
    errno = error;
    if (pause == nullptr)
        return real(); /* the recorded run had none here: it is the program's own matter */
    const int result =
        engine::takes_its_time() || pause->kind == lab::tape::ScriptKind::open ? real() : 0;
    engine::end_pause(*pause);
    errno = error;
    return result;
}
