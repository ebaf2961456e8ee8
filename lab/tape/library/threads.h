// SPDX-License-Identifier: Apache-2.0
/* Threads by number, the same in each run: the program's first is 0, those that it makes are
 * counted as they are made. The platform's own come behind, as they are first seen. */
#pragma once

#include "waits.h"

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

/* A call's or a callback's begin or end. Returns where the thread was. */
Place enter(Place place);

/* Code of ours that the C library and the C++ runtime shall not take for the program's. */
class Aside {
  public:
    Aside();
    ~Aside();
    Aside(const Aside&) = delete;
    Aside& operator=(const Aside&) = delete;

  private:
    Place before_;
};

/* The address, where a function of ours was called, lies in the program itself or in the C++
 * runtime that it calls, and the thread is in its code. */
bool by_program(const void* return_address);

/* How often the calling thread, since it last waited, called or was called, came through a place
 * where it could have had to wait. */
unsigned past(Wait kind);
void went_past(Wait kind);
void waited();

} // namespace threads

/* ---- what recorder and replayer have to do with threads of the program ---- */

/* By the thread that makes another, before; and when it could not. */
void thread_is_made();
void thread_is_not_made();
/* By the thread itself, before and after its function runs. */
void thread_begins();
void thread_ends();
