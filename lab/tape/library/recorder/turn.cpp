// SPDX-License-Identifier: Apache-2.0
#include "turn.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace turn {

namespace {

/* How long one is waited for, when it turns out to wait too; and one that only lacks a processor. */
constexpr long long patience_ns = 250'000'000;
constexpr int patience_with_running = 40; /* times that */

int g_owner;   /* a thread's id, 0: nobody; atomic */
int g_waiting; /* threads; atomic */
thread_local int t_id;

int own_id() {
    if (t_id == 0)
        t_id = static_cast<int>(::syscall(SYS_gettid));
    return t_id;
}

bool exchange(int expected, int value) {
    return __atomic_compare_exchange_n(&g_owner, &expected, value, false, __ATOMIC_SEQ_CST,
                                       __ATOMIC_SEQ_CST);
}

long long now_ns() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

/* The thread computes, or would if it had a processor. */
bool is_running(int thread) {
    char path[64], text[256];
    std::snprintf(path, sizeof path, "/proc/self/task/%d/stat", thread);
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const ssize_t length = ::read(fd, text, sizeof text - 1);
    ::close(fd);
    text[length > 0 ? length : 0] = '\0';
    const char* const name_end = std::strrchr(text, ')'); /* the name may hold anything */
    return name_end != nullptr && std::strncmp(name_end, ") R", 3) == 0;
}

void wait_for_other() {
    const int own = own_id();
    long long until = now_ns() + patience_ns;
    int left_with_running = patience_with_running;
    __atomic_add_fetch(&g_waiting, 1, __ATOMIC_SEQ_CST);
    while (!exchange(0, own)) {
        const int owner = __atomic_load_n(&g_owner, __ATOMIC_SEQ_CST);
        const long long left = until - now_ns();
        if (left <= 0 && owner != 0 && left_with_running > 0 && is_running(owner)) {
            --left_with_running;
            until += patience_ns;
            continue;
        }
        if (left <= 0) {
            __atomic_store_n(&g_owner, own, __ATOMIC_SEQ_CST);
            break;
        }
        if (owner == 0)
            continue;
        const timespec wait = {0, static_cast<long>(left)};
        ::syscall(SYS_futex, &g_owner, FUTEX_WAIT_PRIVATE, owner, &wait, nullptr, 0);
    }
    __atomic_sub_fetch(&g_waiting, 1, __ATOMIC_SEQ_CST);
}

} // namespace

void take() {
    const int error = errno;
    if (__atomic_load_n(&g_owner, __ATOMIC_SEQ_CST) != own_id() && !exchange(0, own_id()))
        wait_for_other();
    errno = error;
}

void give() {
    const int error = errno;
    if (exchange(own_id(), 0) && __atomic_load_n(&g_waiting, __ATOMIC_SEQ_CST) > 0)
        ::syscall(SYS_futex, &g_owner, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    errno = error;
}

} // namespace turn
