// SPDX-License-Identifier: Apache-2.0
/* Threads by number, the same in each run: the program's first is 0, those that it makes are
 * counted as they are made. The platform's own come behind, as they are first seen. */
#pragma once

namespace threads {

constexpr int unknown = -1;
constexpr int first_of_platform = 1000000;

/* The calling thread's number; unknown for one that the program did not make, until it is set. */
int current();
void set_current(int number);

/* The calling thread's locks by number: a thousand for each of its steps that the tape tells of, a
 * call's or a callback's begin or end, and one for each lock since. */
long long next_lock();
void step();

/* True once anybody has made a second thread. */
bool several();

/* An address in the program itself, not in a library. */
bool of_program(const void* address);

} // namespace threads
