/* The platform's reader-writer lock where the phone has it. */
#pragma once

#include <new>

#include "qti_shared_mutex.h"

/* The same two symbols as functions, whose addresses can be asked for: null when the phone has
 * none. */
__attribute__((weak)) void
construct_shared_mutex(void*) __asm__("_ZN8qtimutex14QtiSharedMutexC1Ev");
__attribute__((weak)) void destroy_shared_mutex(void*) __asm__("_ZN8qtimutex14QtiSharedMutexD1Ev");

/* Room for a QtiSharedMutex, made and destroyed where the phone has the class as we know it. */
class OptionalSharedMutex {
  public:
    OptionalSharedMutex()
        : made_(construct_shared_mutex != nullptr && destroy_shared_mutex != nullptr) {
        if (made_)
            new (&mutex_) qtimutex::QtiSharedMutex;
    }
    ~OptionalSharedMutex() {
        if (made_)
            mutex_.~QtiSharedMutex();
    }
    OptionalSharedMutex(const OptionalSharedMutex&) = delete;
    OptionalSharedMutex& operator=(const OptionalSharedMutex&) = delete;

  private:
    union {
        qtimutex::QtiSharedMutex mutex_;
    };
    bool made_;
};
