// SPDX-License-Identifier: Apache-2.0
/* Reader-writer lock of the platform (libqcrilNrQtiMutex). No public header of it is known: the
 * storage is generous and aligned for anything, and constructor and destructor are weak references,
 * so that a program which holds one, and never locks it, starts where the phone's class differs. */
#pragma once

#include <stddef.h>

namespace qtimutex {

class QtiSharedMutex {
  public:
    __attribute__((weak)) QtiSharedMutex();
    // NOLINTNEXTLINE(performance-trivially-destructible): the platform's own
    __attribute__((weak)) ~QtiSharedMutex();
    QtiSharedMutex(const QtiSharedMutex&) = delete;
    QtiSharedMutex& operator=(const QtiSharedMutex&) = delete;

  private:
    [[maybe_unused]] alignas(max_align_t) unsigned char storage_[1024];
};

} // namespace qtimutex
