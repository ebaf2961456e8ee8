// SPDX-License-Identifier: Apache-2.0
#include "qti_shared_mutex.h"

namespace qtimutex {

/* Nobody locks it here, so it holds nothing. */
QtiSharedMutex::QtiSharedMutex() : storage_{} {}
QtiSharedMutex::~QtiSharedMutex() = default;

} // namespace qtimutex
