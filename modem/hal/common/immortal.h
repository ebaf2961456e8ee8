// SPDX-License-Identifier: Apache-2.0
/* A value of static storage that is never destroyed: threads may use it while the process ends.
 * Needs no heap, so it can't fail. */
#pragma once

#include <utility>

template <typename T> union immortal {
    template <typename... Args>
    explicit immortal(Args&&... args) : value(std::forward<Args>(args)...) {}
    ~immortal() {}
    immortal(const immortal&) = delete;
    immortal& operator=(const immortal&) = delete;

    T value;
};
