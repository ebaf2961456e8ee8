// SPDX-License-Identifier: Apache-2.0
/* Threads of the program begin and end with their turn. */
#include "journal.h"
#include "threads.h"
#include "turn.h"

void thread_is_made() {}
void thread_is_not_made() {}

void thread_begins() {
    if (!journal::recording())
        return;
    const long long began_us = journal::now_us();
    turn::take();
    journal::waited(Wait::start, began_us, 0, 0);
}

void thread_ends() { turn::give(); }
