/* Reader-writer lock of the platform (libqcrilNrQtiMutex). No public header of it is known: the
 * storage is generous and aligned for anything, and constructor and destructor are weak references,
 * so that a program which holds one, and never locks it, starts where the phone's class differs. */
#pragma once

#include <stddef.h>

#include <new>

namespace qtimutex {

class QtiSharedMutex {
  public:
    __attribute__((weak)) QtiSharedMutex();
    __attribute__((weak)) ~QtiSharedMutex();
    QtiSharedMutex(const QtiSharedMutex&) = delete;
    QtiSharedMutex& operator=(const QtiSharedMutex&) = delete;

  private:
    [[maybe_unused]] alignas(max_align_t) unsigned char storage_[1024];
};

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
            new (&mutex_) QtiSharedMutex;
    }
    ~OptionalSharedMutex() {
        if (made_)
            mutex_.~QtiSharedMutex();
    }
    OptionalSharedMutex(const OptionalSharedMutex&) = delete;
    OptionalSharedMutex& operator=(const OptionalSharedMutex&) = delete;

  private:
    union {
        QtiSharedMutex mutex_;
    };
    bool made_;
};

} // namespace qtimutex
