// SPDX-License-Identifier: Apache-2.0
/* The program's own locks and semaphores: when one goes from one thread to another, that is a step
 * in the order of the run. A thread that took a lock too early could stop, with the lock in its
 * hands, in front of something that another does only with the lock. */
#include <pthread.h>
#include <semaphore.h>

#include "lock.h"
#include "symbols.h"
#include "threads.h"

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    const auto real = [&] { return NEXT_DEFINITION(pthread_mutex_lock)(mutex); };
    return threads::by_program(__builtin_return_address(0)) ? take_lock(mutex, real) : real();
}

int sem_wait(sem_t* semaphore) {
    const auto real = [&] { return NEXT_DEFINITION(sem_wait)(semaphore); };
    return threads::by_program(__builtin_return_address(0)) ? take_lock(nullptr, real) : real();
}

} // extern "C"
