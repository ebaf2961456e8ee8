// SPDX-License-Identifier: Apache-2.0
/* Text on its way to standard output, whose lock the printing thread holds. */
#pragma once

#include "journal.h"
#include "threads.h"

inline bool output_is_kept() {
    const bool kept = journal::recording() && threads::place() == threads::Place::program;
    if (!kept)
        journal::hold_after_end();
    return kept;
}

inline void output_printed(const char* text, size_t length) { journal::printed(text, length); }
