// SPDX-License-Identifier: Apache-2.0
/* The recorder's side of the tape: one file, appended to, a whole line at a time. Whatever happens
 * to the file, the program goes on as if nobody recorded. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "text.h"
#include "waits.h"

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

/* Takes the call out of the list and writes its line: the text holds members, without braces. */
void end(InFlight& call, const Text& members);

/* Writes a line of its own and returns its number. */
uint64_t event(const Text& members);

/* The calling thread goes on. */
void waited(Wait kind, long long began_us, int result, int error);

/* The program has read CLOCK_MONOTONIC. */
void clock_read(const timespec& time);

/* Something the program printed on standard output, told in the order in which it was printed. */
void printed(const char* text, size_t length);

/* Delays a thread that comes while the program ends: whether its text is still seen is chance, and
 * the tape does not hold it any more. */
void hold_after_end();

/* What the platform said a property was. */
void property(const char* key, const char* value);

} // namespace journal
