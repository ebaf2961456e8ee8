// SPDX-License-Identifier: Apache-2.0
#include "order.h"

#include <algorithm>
#include <thread>

using lab::tape::ScriptEvent;
using lab::tape::ScriptKind;
using std::chrono::microseconds;
using std::chrono::steady_clock;

namespace {

/* A thread that runs for that long is held up by something that is not seen here. */
constexpr std::chrono::seconds patience{10};
constexpr std::chrono::seconds look_again{1};

thread_local bool t_runs;

} // namespace

void Order::start(const std::vector<ScriptEvent>& events, bool as_recorded, Lost lost) {
    events_ = &events;
    as_recorded_ = as_recorded;
    lost_ = lost;
    passed_.assign(events.size(), 0);
    awaited_.assign(events.size(), 0);
    find_next();
    running_ = t_runs = true;
    start_ = changed_at_ = steady_clock::now();
}

void Order::find_next() {
    while (next_ < passed_.size() && (passed_[next_] != 0 || !(*events_)[next_].is_point()))
        ++next_;
}

void Order::pass(uint32_t event) {
    passed_[event] = 1;
    find_next();
    changed_at_ = steady_clock::now();
    changed_.notify_all();
}

bool Order::calls_passed_before(uint32_t event) {
    while (next_call_ < event &&
           (passed_[next_call_] != 0 || (*events_)[next_call_].kind != ScriptKind::call))
        ++next_call_;
    return next_call_ >= event;
}

void Order::lose() {
    if (loose_)
        return;
    lost_(next_);
    give_up();
}

void Order::check() {
    if (!running_ && coming_ == 0 && next_ < passed_.size() && awaited_[next_] == 0)
        lose();
}

void Order::give() {
    if (t_runs) {
        running_ = t_runs = false;
        changed_at_ = steady_clock::now();
        changed_.notify_all();
    }
    check();
}

template <typename Condition> void Order::wait(Lock& lock, Condition condition) {
    while (!condition()) {
        changed_.wait_for(lock, look_again);
        if (!loose_ && !as_recorded_ && steady_clock::now() - changed_at_ > patience)
            lose();
    }
}

/* The event has its turn. */
void Order::run(Lock& lock, uint32_t event) {
    running_ = t_runs = true;
    const ScriptEvent& its = (*events_)[event];
    const int64_t took = its.kind == ScriptKind::back ? 0 : its.took_us;
    if (as_recorded_) {
        lock.unlock();
        std::this_thread::sleep_until(start_ + microseconds(its.at_us) + microseconds(took));
        lock.lock();
    }
    now_us_ = std::max(now_us_, its.at_us + took);
    pass(event);
}

bool Order::take(Lock& lock, uint32_t event) {
    awaited_[event] = 1;
    give();
    wait(lock, [&] { return loose_ || (!running_ && next_ >= event); });
    if (!loose_)
        run(lock, event);
    else
        pass(event);
    return !loose_;
}

void Order::take_callback(Lock& lock, uint32_t event) {
    awaited_[event] = 1;
    give();
    wait(lock, [&] { return loose_ ? calls_passed_before(event) : !running_ && next_ >= event; });
    if (!loose_)
        run(lock, event);
    else
        pass(event);
}

void Order::take_any(Lock& lock) {
    give();
    wait(lock, [&] { return loose_ || !running_; });
    if (!loose_)
        running_ = t_runs = true;
}

void Order::take_end(Lock& lock) {
    give();
    wait(lock, [&] { return loose_ || (!running_ && next_ >= passed_.size()); });
    running_ = t_runs = true;
}

void Order::park(Lock& lock) {
    give();
    wait(lock, [&] { return loose_; });
}

void Order::skip(uint32_t event) {
    pass(event);
    check();
}
