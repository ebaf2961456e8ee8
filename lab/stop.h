// SPDX-License-Identifier: Apache-2.0
/* A signal that asks us to end, for verbs that have something to do before they do. */
#pragma once

#include <atomic>

namespace lab {

/* From now on SIGINT, SIGTERM and SIGHUP are noted instead of ending us, and a reader of our output
 * that goes away is no more than a failed write. Returns where the signal's number stands; 0: none.
 */
const std::atomic<int>& note_signals();

} // namespace lab
