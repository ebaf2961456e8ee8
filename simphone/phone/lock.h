// SPDX-License-Identifier: Apache-2.0
/* One lock for the whole phone, between processes and threads: the file .lock. */
#pragma once

#include <cstdint>
#include <optional>

namespace simphone {

/* Holds the phone for this thread; may be nested. held() is false, and nothing is written, when a
 * phone that can't be written has no lock file to hold, and when another process keeps it for
 * patience_ms (3000 for those that have no time-out of their own). The latter is told; from then on
 * only those with a time-out of their own wait, until the lock is seen free again. */
class Lock {
  public:
    explicit Lock(std::optional<int64_t> patience_ms = std::nullopt);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    bool held() const { return error() == 0; }

    /* 0 while held; EROFS without a lock file, ETIMEDOUT when another process keeps it. */
    int error() const;
};

} // namespace simphone
