// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "state.h"
#include "threads.h"

namespace engine {

using namespace lab::tape;

void leave_behind(int64_t thread, uint32_t event) {
    std::deque<uint32_t>& own = g_state.own[thread];
    for (; !own.empty() && own.front() <= event; own.pop_front())
        if (own.front() < event && g_state.event(own.front()).kind == ScriptKind::wait)
            g_state.order.skip(own.front());
}

/* With the mutex held. */
static Waiting find(Wait kind) {
    if (g_state.order.loose())
        return {};
    std::deque<uint32_t>& own = g_state.own[threads::current()];
    for (auto it = own.begin(); it != own.end(); ++it) {
        const ScriptEvent& event = g_state.event(*it);
        if (event.kind == ScriptKind::clock)
            continue; /* read later, or not this time */
        if (event.kind != ScriptKind::wait || event.name != name_of(kind))
            return {Told::nothing};
        if (event.number > threads::past(kind))
            return {Told::nothing};
        return {Told::waits, *it};
    }
    return {Told::ended};
}

static const ScriptEvent* take(Order::Lock& lock, const Waiting& waiting) {
    if (waiting.told == Told::ended) {
        g_state.order.park(lock);
        return nullptr;
    }
    leave_behind(threads::current(), waiting.event);
    threads::waited();
    return g_state.order.take(lock, waiting.event) ? &g_state.event(waiting.event) : nullptr;
}

Waiting find_wait(Wait kind) {
    if (!g_state.active)
        return {};
    const threads::Aside aside;
    const Order::Lock lock(g_state.order.mutex());
    return find(kind);
}

const ScriptEvent* take_turn(const Waiting& waiting) {
    const threads::Aside aside;
    Order::Lock lock(g_state.order.mutex());
    return take(lock, waiting);
}

void step_aside() {
    const threads::Aside aside;
    const Order::Lock lock(g_state.order.mutex());
    g_state.order.expect(1);
    g_state.order.give();
}

void step_in() {
    const threads::Aside aside;
    Order::Lock lock(g_state.order.mutex());
    g_state.order.take_any(lock);
    g_state.order.came();
}

/* ---- clocks ---- */

namespace {

constexpr int64_t second_ns = 1'000'000'000;

int64_t as_ns(const timespec& time) { return time.tv_sec * second_ns + time.tv_nsec; }

} // namespace

void read_clock(timespec& time) {
    if (!g_state.active)
        return;
    const threads::Aside aside;
    const Order::Lock lock(g_state.order.mutex());
    /* As it was read; what was not read then shows when the last thing happened. Once there is no
     * order any more it goes on from there. */
    const int64_t start = as_ns(g_state.start);
    int64_t shown = start + g_state.order.now_us() * 1000;
    std::deque<uint32_t>& own = g_state.own[threads::current()];
    if (g_state.order.loose()) {
        shown = std::max(shown, as_ns(time));
    } else if (!own.empty() && g_state.event(own.front()).kind == ScriptKind::clock) {
        shown = start + g_state.event(own.front()).number;
        own.pop_front();
    }
    time = {static_cast<time_t>(shown / second_ns), static_cast<long>(shown % second_ns)};
}

/* ---- threads ---- */

namespace {

void begin_thread() {
    const threads::Aside aside;
    Order::Lock lock(g_state.order.mutex());
    const Waiting waiting = find(Wait::start);
    g_state.order.came();
    if (waiting.told == Told::nothing)
        g_state.order.take_any(lock);
    else if (waiting.told != Told::free)
        take(lock, waiting);
}

} // namespace

} // namespace engine

using engine::g_state;

void thread_is_made() {
    const threads::Aside aside;
    const Order::Lock lock(g_state.order.mutex());
    g_state.order.expect(1);
}

void thread_is_not_made() {
    const threads::Aside aside;
    const Order::Lock lock(g_state.order.mutex());
    g_state.order.came();
}

void thread_begins() {
    if (g_state.active)
        engine::begin_thread();
}

void thread_ends() {
    const threads::Aside aside;
    const Order::Lock lock(g_state.order.mutex());
    g_state.order.give();
}
