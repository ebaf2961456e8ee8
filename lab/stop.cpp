// SPDX-License-Identifier: Apache-2.0
#include "stop.h"

#include <csignal>

namespace lab {

namespace {

std::atomic<int> g_signal{0};
static_assert(std::atomic<int>::is_always_lock_free);

void note(int signal) { g_signal = signal; }

} // namespace

const std::atomic<int>& note_signals() {
    struct sigaction action {};
    action.sa_handler = note;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    return g_signal;
}

} // namespace lab
