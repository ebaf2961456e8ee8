// SPDX-License-Identifier: Apache-2.0
#include "numbers.h"

#include <cstdlib>

#include <pthread.h>

namespace numbers {

namespace {

struct Number {
    const void* what;
    const void* os_params;
};

/* Numbers in the order in which they were given; the newest of a value counts. */
struct Numbers {
    Number* rows = nullptr;
    int count = 0;
    int room = 0;

    int add(const void* what, const void* os_params) {
        if (count == room) {
            const int wanted = room == 0 ? 64 : 2 * room;
            auto* const larger = static_cast<Number*>(
                std::realloc(rows, static_cast<size_t>(wanted) * sizeof *rows));
            if (larger == nullptr)
                return -1;
            rows = larger;
            room = wanted;
        }
        rows[count++] = {what, os_params};
        return count;
    }
};

Numbers g_handles, g_pointers;
pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;

class Guard {
  public:
    Guard() { pthread_mutex_lock(&g_mutex); }
    ~Guard() { pthread_mutex_unlock(&g_mutex); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
};

} // namespace

int add_handle(const void* handle, const void* os_params) {
    const Guard guard;
    return g_handles.add(handle, os_params);
}

/* The newest handle's of which this is the value. */
static int of_newest(const void* Number::*value, const void* wanted) {
    if (wanted == nullptr)
        return 0;
    const Guard guard;
    for (int i = g_handles.count; i > 0; --i)
        if (g_handles.rows[i - 1].*value == wanted)
            return i;
    return -1;
}

int of_handle(const void* handle) { return of_newest(&Number::what, handle); }
int of_signal(const void* os_params) { return of_newest(&Number::os_params, os_params); }

int of_pointer(const void* pointer, bool add) {
    if (pointer == nullptr)
        return 0;
    const Guard guard;
    for (int i = 0; i < g_pointers.count; ++i)
        if (g_pointers.rows[i].what == pointer)
            return i + 1;
    return add ? g_pointers.add(pointer, nullptr) : -1;
}

} // namespace numbers
