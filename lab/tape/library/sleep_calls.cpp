// SPDX-License-Identifier: Apache-2.0
/* The program's own pauses, by the C library's functions for them: how its threads come along with
 * one another depends on where among the calls a pause begins and ends. */
#include <cerrno>
#include <ctime>

#include <unistd.h>

#include "pause.h"
#include "symbols.h"
#include "threads.h"

#define C_LIBRARY(function) NEXT_DEFINITION(function)
#define OF_PROGRAM threads::by_program(__builtin_return_address(0))

namespace {

long long microseconds(const timespec& time) {
    return time.tv_sec * 1000000LL + time.tv_nsec / 1000;
}

} // namespace

extern "C" {

int nanosleep(const timespec* time, timespec* left) {
    const auto real = [&] { return C_LIBRARY(nanosleep)(time, left); };
    return OF_PROGRAM ? pause_for(microseconds(*time), real) : real();
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
    const auto real = [&] { return C_LIBRARY(clock_nanosleep)(clock, flags, time, left); };
    return OF_PROGRAM && flags == 0 ? pause_for(microseconds(*time), real) : real();
}

int usleep(useconds_t time) {
    const auto real = [&] { return C_LIBRARY(usleep)(time); };
    return OF_PROGRAM ? pause_for(time, real) : real();
}

unsigned sleep(unsigned seconds) {
    const auto real = [&] { return static_cast<int>(C_LIBRARY(sleep)(seconds)); };
    return static_cast<unsigned>(OF_PROGRAM ? pause_for(seconds * 1000000LL, real) : real());
}

} // extern "C"
