// SPDX-License-Identifier: Apache-2.0
/* The recorder's side of the tape: one file, appended to, a whole line at a time. Whatever happens
 * to the file, the program goes on as if nobody recorded. */
#pragma once

#include <cstddef>
#include <cstdint>

#include "text.h"

namespace journal {

/* True between the program's start and its end, while the tape can be written. */
bool recording();

/* Microseconds since the run began. */
long long now_us();

/* The calling thread's number, see threads.h. */
int this_thread();

/* A call that has begun and not yet returned: what a line about it needs when the program ends
 * first. */
struct InFlight {
    const Text* inputs = nullptr;
    const char* name = nullptr;
    long long began_us = 0;
    uint64_t from = 0; /* number of the event that came next when it began */
    int thread = 0;
    InFlight* before = nullptr;
    InFlight* behind = nullptr;
};

/* Sets from and enters the call in the list; what was printed until here comes before it. */
void begin(InFlight& call);

/* Takes the call out of the list and writes its line: the text holds members, without braces. `now`
 * false: as note. */
void end(InFlight& call, const Text& members, bool now = true);

/* Writes a line of its own and returns its number. */
uint64_t event(const Text& members);

/* The same for one that matters only for the order of others: it is written with the next, so that
 * the program is not held up where its threads meet. */
void note(const Text& members);

/* Something the program printed on standard output, told in the order in which it was printed. */
void printed(const char* text, size_t length);

/* Delays a thread that prints while the program ends: whether its text is still seen is chance, and
 * the tape does not hold it any more. */
void hold_after_end();

/* Notes that the calling thread has the lock, as its lock of that number; true when another had it
 * before, or nobody, while there is more than one thread. before: who had it, -1: nobody. */
struct Taken {
    int thread = -1;
    long long number = 0;
};
bool changes_hands(const void* mutex, long long number, Taken& before);

/* What the platform said a property was. */
void property(const char* key, const char* value);

/* Numbers for what can't be compared between runs: in the order in which they were first seen.
 * 0 for null, -1 for one that was never seen. */
int add_handle(const void* handle, const void* os_params);
int handle_number(const void* handle);
int signal_number(const void* os_params); /* the number of the last handle made with them */
int pointer_number(const void* pointer, bool add);

} // namespace journal
