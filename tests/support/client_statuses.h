// SPDX-License-Identifier: Apache-2.0
/* Records what service clients report, and waits for it. */
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

/* Never destroyed: callbacks may come until the process ends. */
class ClientStatuses {
  public:
    static ClientStatuses& instance() {
        static ClientStatuses& statuses = *new ClientStatuses;
        return statuses;
    }

    /* A service client's status callback. */
    static void record(int32_t kind, int32_t status) {
        ClientStatuses& self = instance();
        const std::function<void(int32_t)> action = self.add(kind, status);
        if (action)
            action(status);
    }

    void clear(std::function<void(int32_t)> on_status = nullptr) {
        const std::lock_guard guard(mutex_);
        seen_.clear();
        kinds_.clear();
        on_status_ = std::move(on_status);
    }

    std::vector<int32_t> seen() {
        const std::lock_guard guard(mutex_);
        return seen_;
    }

    std::vector<int32_t> kinds() {
        const std::lock_guard guard(mutex_);
        return kinds_;
    }

    /* True once so many statuses are there; false after ten seconds. */
    bool wait_for(size_t count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return seen_.size() >= count; });
    }

    /* True once the last status is one of two. */
    bool wait_for_last(int32_t one, int32_t other) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10), [&] {
            return !seen_.empty() && (seen_.back() == one || seen_.back() == other);
        });
    }

  private:
    std::function<void(int32_t)> add(int32_t kind, int32_t status) {
        const std::lock_guard guard(mutex_);
        seen_.push_back(status);
        kinds_.push_back(kind);
        changed_.notify_all();
        return on_status_;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<int32_t> seen_;
    std::vector<int32_t> kinds_;
    std::function<void(int32_t)> on_status_;
};
