// SPDX-License-Identifier: Apache-2.0
/* Whose turn it is to run the program: one thread at a time, in the order of the recorded run's
 * points (see script.h). A thread that comes to a point gives its turn away and waits until the
 * point is the next one and nobody runs. So nothing depends on how fast anybody is.
 *
 * When the order can't be kept, since the next point's thread went elsewhere, that is told once, and
 * from then on nobody waits here any more. */
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "script.h"

class Order {
  public:
    /* To be told, once, which event nobody came to; their number: all were passed. */
    using Lost = void (*)(uint32_t event);

    /* By the program's first thread, which runs. Events live as long as the order. */
    void start(const std::vector<lab::tape::ScriptEvent>& events, bool as_recorded, Lost lost);

    /* All of these with the mutex held. */
    std::mutex& mutex() { return mutex_; }
    using Lock = std::unique_lock<std::mutex>;

    bool loose() const { return loose_; }

    /* Threads that are on their way to the order, or are not any more: it can't be lost before
     * they came. */
    void expect(int threads) { coming_ += threads; }
    void came() { --coming_; }

    /* The calling thread gives its turn away and waits for the event's. False: there is no order
     * any more. */
    bool take(Lock& lock, uint32_t event);

    /* The same for a callback on a thread of the platform. Without an order it waits until all
     * calls before it were made: one that is not due is an answer to nothing. */
    void take_callback(Lock& lock, uint32_t event);

    /* Waits, with the turn given away, until nobody runs. */
    void take_any(Lock& lock);

    /* Waits until every point is passed; nobody else has a turn after that. */
    void take_end(Lock& lock);

    void give();

    /* Gives the turn away and waits until there is no order any more. */
    void park(Lock& lock);

    /* Nobody comes to the event. */
    void skip(uint32_t event);

    /* Nobody waits for the order any more. */
    void give_up() {
        loose_ = true;
        changed_.notify_all();
    }

    /* When the last event that had its turn was recorded, microseconds. */
    int64_t now_us() const { return now_us_; }

  private:
    void pass(uint32_t event);
    void find_next();
    bool calls_passed_before(uint32_t event);
    /* Gives up when nobody can come to the next point. */
    void check();
    void lose();
    template <typename Condition> void wait(Lock& lock, Condition condition);
    void run(Lock& lock, uint32_t event);

    std::mutex mutex_;
    std::condition_variable changed_;
    const std::vector<lab::tape::ScriptEvent>* events_ = nullptr;
    std::vector<uint8_t> passed_;
    std::vector<uint8_t> awaited_; /* a thread waits for its turn */
    uint32_t next_ = 0;            /* the first that is a point and not passed */
    uint32_t next_call_ = 0;
    int coming_ = 0;
    int64_t now_us_ = 0;
    bool running_ = false;
    bool loose_ = false;
    bool as_recorded_ = false;
    std::chrono::steady_clock::time_point start_, changed_at_;
    Lost lost_ = nullptr;
};
