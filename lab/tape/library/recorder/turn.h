// SPDX-License-Identifier: Apache-2.0
/* Whose turn it is to run the program. A thread that comes back from a wait or from the platform
 * lets the one that runs come to its own next wait or call first, so that the order of the tape's
 * lines is the order in which everything happened. That is a matter of microseconds. Nobody is held
 * up for ever: where the other waits and the recorder sees nothing of it, or computes for seconds,
 * the turn is taken from it. */
#pragma once

namespace turn {

/* Nothing, if the turn is the calling thread's already. */
void take();

/* Nothing, if the turn is not the calling thread's any more. */
void give();

} // namespace turn
