/* Preloaded into kvt by the sweep: sleeps pass KVT_FASTER times as fast, and the KVT_FAIL_MALLOC'th
 * allocation that kvt's own code asks malloc for fails. KVT_COUNT_MALLOC names a file that gets the
 * number of such allocations at exit. */
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <dlfcn.h>
#include <link.h>
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
long g_fail;
std::atomic<long> g_asked{0};

__attribute__((constructor)) void start() {
    ::dl_iterate_phdr(first_object, &g_program);
    g_fail = number("KVT_FAIL_MALLOC");
}

__attribute__((destructor)) void finish() {
    const char* const name = std::getenv("KVT_COUNT_MALLOC");
    std::FILE* const file = name != nullptr ? std::fopen(name, "w") : nullptr;
    if (file == nullptr)
        return;
    std::fprintf(file, "%ld\n", g_asked.load());
    std::fclose(file);
}

} // namespace

extern "C" {

void* __libc_malloc(size_t size);

void* malloc(size_t size) {
    const auto caller = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    if (caller >= g_program.from && caller < g_program.to && ++g_asked == g_fail)
        return nullptr;
    return __libc_malloc(size);
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
