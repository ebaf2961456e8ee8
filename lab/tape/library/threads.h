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

/* Whose code a thread is in: the program's, or the platform's, from the begin of a call to its end
 * but for the callbacks in between. What the platform does within itself is no part of a run. A
 * thread that the program did not make begins in the platform. */
enum class Place { platform, program };
Place place();

/* A step that the tape tells of: a call's or a callback's begin or end. Returns where the thread
 * was. */
Place enter(Place place);

/* The address, where a function of ours was called, lies in the program itself, and the thread is
 * in its code. */
bool by_program(const void* return_address);

/* The calling thread's locks by number: a thousand for each of its steps, and one for each lock
 * since. */
long long next_lock();

/* True once anybody has made a second thread. */
bool several();

} // namespace threads
