// SPDX-License-Identifier: Apache-2.0
/* The edge between the platform's calls, which C code makes, and the phone's own code. */
#pragma once

#include <exception>

namespace simphone {

/* The result of body(), or failure where memory or a thread for it is not to be had. */
template <typename Result, typename Body> Result guarded(Result failure, Body body) noexcept {
    try {
        return body();
    } catch (const std::exception&) {
        return failure;
    }
}

} // namespace simphone
