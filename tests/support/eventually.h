// SPDX-License-Identifier: Apache-2.0
/* Waits with an end. */
#pragma once

#include <chrono>
#include <thread>

/* True once the condition holds; false after ten seconds. */
template <typename Condition> bool eventually(Condition condition) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
