// SPDX-License-Identifier: Apache-2.0
/* What a thread of the program can wait for, apart from the platform. */
#pragma once

#include <cstddef>

enum class Wait {
    start, /* its first turn, after it was made */
    sleep,
    lock,
    semaphore,
    condition,
    once,   /* another's initialisation */
    output, /* the lock of standard output */
};

/* As the tape names them. */
constexpr const char* wait_names[] = {"start",     "sleep", "lock",  "semaphore",
                                      "condition", "once",  "output"};
constexpr size_t wait_kinds = sizeof wait_names / sizeof wait_names[0];

inline const char* name_of(Wait kind) { return wait_names[static_cast<size_t>(kind)]; }
