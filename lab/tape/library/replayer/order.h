// SPDX-License-Identifier: Apache-2.0
/* The order of the recorded run's points, and threads that wait for their turn in it. */
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

class Order {
  public:
    /* To be told, once, which point nobody came to, and whether all threads waited for it. */
    using Lost = void (*)(uint32_t point, bool stuck);
    void start(uint32_t points, Lost lost) {
        passed_.assign(points, 0);
        lost_ = lost;
    }

    /* All of these with the mutex held. */
    std::mutex& mutex() { return mutex_; }
    using Lock = std::unique_lock<std::mutex>;

    uint32_t next() const { return next_; }
    bool loose() const { return loose_; }
    void pass(uint32_t point);

    /* Waits until all points before this one are passed. Ends early, and from then on nobody waits
     * here any more, when patience is over or every thread of the program waits. */
    void wait_turn(Lock& lock, uint32_t point, std::chrono::microseconds patience);

    /* The same for any condition. False: it was given up. */
    template <typename Condition>
    bool wait_for(Lock& lock, std::chrono::microseconds patience, Condition condition);

    /* Without an end: for threads of our own. */
    template <typename Condition> void wait_long(Lock& lock, Condition condition);

    /* Nobody waits for the order any more. */
    void give_up_order() {
        loose_ = true;
        wake();
    }

    /* Something that threads may wait for has changed. */
    void wake() {
        ++changes_;
        settled_ = 0;
        changed_.notify_all();
    }

  private:
    /* A thread that waits, and what it has seen of the changes. */
    struct Waiting {
        uint64_t seen = 0;
    };

    /* The thread has looked at what there is, and goes on waiting. */
    void settle(Waiting& waiting) {
        if (waiting.seen == changes_)
            return;
        waiting.seen = changes_;
        ++settled_;
    }
    void leave(const Waiting& waiting) {
        if (waiting.seen == changes_)
            --settled_;
    }

    /* Every thread of this process waits here for another: none can bring what they wait for. */
    bool nobody_moves() const;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<uint8_t> passed_;
    uint32_t next_ = 0;
    uint64_t changes_ = 1;
    unsigned settled_ = 0; /* threads that have seen the last change and wait */
    bool loose_ = false;
    Lost lost_ = nullptr;
};

template <typename Condition>
bool Order::wait_for(Lock& lock, std::chrono::microseconds patience, Condition condition) {
    if (loose_)
        return condition();
    const auto until = std::chrono::steady_clock::now() + patience;
    Waiting waiting;
    bool met = false;
    while (!(met = condition()) && !loose_) {
        settle(waiting);
        const bool stuck = nobody_moves();
        if (stuck || std::chrono::steady_clock::now() >= until) {
            lost_(next_, stuck);
            give_up_order();
            break;
        }
        changed_.wait_for(lock, std::chrono::milliseconds(20));
    }
    leave(waiting);
    return met;
}

template <typename Condition> void Order::wait_long(Lock& lock, Condition condition) {
    Waiting waiting;
    while (!condition()) {
        settle(waiting);
        changed_.wait(lock);
    }
    leave(waiting);
}
