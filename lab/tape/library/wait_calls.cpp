// SPDX-License-Identifier: Apache-2.0
/* The C library's functions in which a thread of the program waits for another one or for a time to
 * pass, and the clocks it reads. The program's threads run one at a time, from one wait or call to
 * the next, and who went on after whom is the order of the run: recorder and replayer keep it, each
 * in its own wait.h. */
#include "wait.h"

#include <cerrno>
#include <cstdio>
#include <ctime>

#include <pthread.h>
#include <semaphore.h>
#include <unistd.h>

#include "symbols.h"
#include "threads.h"

#define C_LIBRARY(function) NEXT_DEFINITION(function)
#define OF_PROGRAM threads::by_program(__builtin_return_address(0))

namespace {

/* Initialisations that run; more at once than these are not waited for in order. */
const pthread_once_t* g_once[16]; /* atomic */

bool is_running(const pthread_once_t* control) {
    for (const auto& running : g_once)
        if (__atomic_load_n(&running, __ATOMIC_ACQUIRE) == control)
            return true;
    return false;
}

void replace_running(const pthread_once_t* control, const pthread_once_t* by) {
    for (auto& running : g_once) {
        const pthread_once_t* expected = control;
        if (__atomic_compare_exchange_n(&running, &expected, by, false, __ATOMIC_ACQ_REL,
                                        __ATOMIC_ACQUIRE))
            return;
    }
}

} // namespace

extern "C" {

/* ---- time ---- */

int nanosleep(const timespec* time, timespec* left) {
    const auto real = [&] { return C_LIBRARY(nanosleep)(time, left); };
    return OF_PROGRAM ? always_waits(Wait::sleep, real) : real();
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
    const auto real = [&] { return C_LIBRARY(clock_nanosleep)(clock, flags, time, left); };
    return OF_PROGRAM ? always_waits(Wait::sleep, real) : real();
}

int usleep(useconds_t time) {
    const auto real = [&] { return C_LIBRARY(usleep)(time); };
    return OF_PROGRAM ? always_waits(Wait::sleep, real) : real();
}

unsigned sleep(unsigned seconds) {
    const auto real = [&] { return static_cast<int>(C_LIBRARY(sleep)(seconds)); };
    return static_cast<unsigned>(OF_PROGRAM ? always_waits(Wait::sleep, real) : real());
}

/* The clock that threads wait by. What day it is concerns nobody. */
int clock_gettime(clockid_t clock, timespec* time) {
    const int result = C_LIBRARY(clock_gettime)(clock, time);
    if (OF_PROGRAM && result == 0 && clock == CLOCK_MONOTONIC)
        clock_was_read(*time);
    return result;
}

/* ---- threads for one another ---- */

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (!OF_PROGRAM)
        return C_LIBRARY(pthread_mutex_lock)(mutex);
    int result = 0;
    const auto attempt = [&] {
        result = C_LIBRARY(pthread_mutex_trylock)(mutex);
        return result != EBUSY;
    };
    may_wait(Wait::lock, attempt, [&] { result = C_LIBRARY(pthread_mutex_lock)(mutex); });
    return result;
}

int sem_wait(sem_t* semaphore) {
    if (!OF_PROGRAM)
        return C_LIBRARY(sem_wait)(semaphore);
    int result = 0;
    const auto attempt = [&] {
        result = C_LIBRARY(sem_trywait)(semaphore);
        return result == 0;
    };
    may_wait(Wait::semaphore, attempt, [&] { result = C_LIBRARY(sem_wait)(semaphore); });
    return result;
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    const auto real = [&] { return C_LIBRARY(pthread_cond_wait)(condition, mutex); };
    return OF_PROGRAM ? waits_with(mutex, real) : real();
}

int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                           const timespec* until) {
    const auto real = [&] { return C_LIBRARY(pthread_cond_timedwait)(condition, mutex, until); };
    return OF_PROGRAM ? waits_with(mutex, real) : real();
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                           const timespec* until) {
    const auto real = [&] {
        return C_LIBRARY(pthread_cond_clockwait)(condition, mutex, clock, until);
    };
    return OF_PROGRAM ? waits_with(mutex, real) : real();
}

int pthread_once(pthread_once_t* control, void (*routine)()) {
    const auto real = [&] { return C_LIBRARY(pthread_once)(control, routine); };
    if (!OF_PROGRAM)
        return real();
    int result = 0;
    const auto attempt = [&] {
        if (is_running(control))
            return false;
        replace_running(nullptr, control);
        result = real();
        replace_running(control, nullptr);
        return true;
    };
    may_wait(Wait::once, attempt, [&] { result = real(); });
    return result;
}

/* A program may hold the lock while it prints a line in pieces. */
void flockfile(std::FILE* stream) {
    if (!OF_PROGRAM || stream != stdout)
        C_LIBRARY(flockfile)(stream);
    else
        lock_output();
}

} // extern "C"

void lock_output() {
    may_wait(
        Wait::output, [] { return C_LIBRARY(ftrylockfile)(stdout) == 0; },
        [] {
            C_LIBRARY(flockfile)
            (stdout);
        });
}
