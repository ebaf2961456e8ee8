// SPDX-License-Identifier: Apache-2.0
/* Preloaded into kvt by the sweep: sleeps pass KVT_FASTER times as fast; the KVT_FAIL_ALLOCATION'th
 * block that kvt's own code asks malloc or operator new for is refused, and the KVT_FAIL_THREAD'th
 * thread. KVT_COUNT names a file that gets the numbers of both at exit. */
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <unistd.h>

namespace {

long number(const char* name) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::atol(text) : 0;
}

long faster() {
    static const long factor = number("KVT_FASTER") > 1 ? number("KVT_FASTER") : 1;
    return factor;
}

template <typename Function> Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

timespec scaled(const timespec& time) {
    const long long ns = (time.tv_sec * 1000000000LL + time.tv_nsec) / faster();
    return {static_cast<time_t>(ns / 1000000000), static_cast<long>(ns % 1000000000)};
}

/* The program's own addresses. */
struct Range {
    uintptr_t from = 0;
    uintptr_t to = 0;
};

int first_object(dl_phdr_info* info, size_t, void* data) {
    auto* const range = static_cast<Range*>(data);
    range->from = info->dlpi_addr;
    for (int i = 0; i < info->dlpi_phnum; ++i)
        if (info->dlpi_phdr[i].p_type == PT_LOAD) {
            const uintptr_t end =
                info->dlpi_addr + info->dlpi_phdr[i].p_vaddr + info->dlpi_phdr[i].p_memsz;
            range->to = end > range->to ? end : range->to;
        }
    return 1;
}

Range g_program;

/* Something that is asked for, and the time that it is refused. */
struct Asked {
    long refuse = 0;
    std::atomic<long> times{0};
    bool refused() { return ++times == refuse; }
};
Asked g_allocations, g_threads;

bool refused_to(const void* caller) {
    const auto address = reinterpret_cast<uintptr_t>(caller);
    return address >= g_program.from && address < g_program.to && g_allocations.refused();
}

__attribute__((constructor)) void start() {
    ::dl_iterate_phdr(first_object, &g_program);
    g_allocations.refuse = number("KVT_FAIL_ALLOCATION");
    g_threads.refuse = number("KVT_FAIL_THREAD");
}

__attribute__((destructor)) void finish() {
    const char* const name = std::getenv("KVT_COUNT");
    std::FILE* const file = name != nullptr ? std::fopen(name, "w") : nullptr;
    if (file == nullptr)
        return;
    std::fprintf(file, "%ld %ld\n", g_allocations.times.load(), g_threads.times.load());
    std::fclose(file);
}

} // namespace

void* operator new(size_t size) {
    void* const block = refused_to(__builtin_return_address(0)) ? nullptr : std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return refused_to(__builtin_return_address(0)) ? nullptr : std::malloc(size);
}

extern "C" {

void* __libc_malloc(size_t size);

void* malloc(size_t size) {
    return refused_to(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attr, void* (*body)(void*), void* arg) {
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto real = next<Create>("pthread_create");
    return g_threads.refused() ? EAGAIN : real(thread, attr, body, arg);
}

unsigned sleep(unsigned seconds) {
    const timespec time{static_cast<time_t>(seconds), 0};
    ::nanosleep(&time, nullptr);
    return 0;
}

int usleep(useconds_t us) {
    const timespec time{static_cast<time_t>(us / 1000000), static_cast<long>(us % 1000000) * 1000};
    return ::nanosleep(&time, nullptr);
}

int nanosleep(const timespec* time, timespec* left) {
    static const auto real = next<int (*)(const timespec*, timespec*)>("nanosleep");
    const timespec shorter = scaled(*time);
    return real(&shorter, left);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
    static const auto real =
        next<int (*)(clockid_t, int, const timespec*, timespec*)>("clock_nanosleep");
    if (flags != 0)
        return real(clock, flags, time, left);
    const timespec shorter = scaled(*time);
    return real(clock, flags, &shorter, left);
}
}
