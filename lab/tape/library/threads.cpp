// SPDX-License-Identifier: Apache-2.0
#include "threads.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <link.h>
#include <pthread.h>

#include "symbols.h"

namespace {

thread_local int t_number = threads::unknown;
thread_local threads::Place t_place = threads::Place::platform;
thread_local unsigned t_past[wait_kinds];

int g_made; /* by the program; atomic */

/* The program's code, and that of the C++ runtime. */
struct Range {
    uintptr_t from = UINTPTR_MAX;
    uintptr_t to = 0;
};
constexpr int most_ranges = 4;
Range g_ranges[most_ranges];
int g_range_count;

bool is_runtime(const char* path) {
    const char* const slash = std::strrchr(path, '/');
    const char* const name = slash != nullptr ? slash + 1 : path;
    return std::strncmp(name, "libstdc++.", 10) == 0 || std::strncmp(name, "libc++", 6) == 0;
}

/* The first object is the program. */
int find_ranges(dl_phdr_info* info, size_t, void*) {
    if (g_range_count > 0 && !is_runtime(info->dlpi_name))
        return 0;
    Range& range = g_ranges[g_range_count++];
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type != PT_LOAD)
            continue;
        const uintptr_t from = info->dlpi_addr + header.p_vaddr;
        range.from = from < range.from ? from : range.from;
        range.to = from + header.p_memsz > range.to ? from + header.p_memsz : range.to;
    }
    return g_range_count == most_ranges ? 1 : 0;
}

__attribute__((constructor)) void load() {
    ::dl_iterate_phdr(find_ranges, nullptr);
    t_number = 0;
    t_place = threads::Place::program;
}

using Start = void* (*)(void*);

/* What a thread of the program begins with. */
struct Begin {
    Start start;
    void* argument;
    int number;
};

void* run(void* data) {
    auto* const handed = static_cast<Begin*>(data);
    const Begin begin = *handed;
    std::free(handed);
    t_number = begin.number;
    thread_begins();
    t_place = threads::Place::program;
    void* const result = begin.start(begin.argument);
    t_place = threads::Place::platform;
    thread_ends();
    return result;
}

} // namespace

namespace threads {

int current() { return t_number; }
void set_current(int number) { t_number = number; }

Place place() { return t_place; }

Place enter(Place place) {
    const Place before = t_place;
    t_place = place;
    waited();
    return before;
}

Aside::Aside() : before_(t_place) { t_place = Place::platform; }
Aside::~Aside() { t_place = before_; }

bool by_program(const void* return_address) {
    if (t_place != Place::program)
        return false;
    const auto at = reinterpret_cast<uintptr_t>(return_address);
    for (int i = 0; i < g_range_count; ++i)
        if (at >= g_ranges[i].from && at < g_ranges[i].to)
            return true;
    return false;
}

unsigned past(Wait kind) { return t_past[static_cast<size_t>(kind)]; }
void went_past(Wait kind) { ++t_past[static_cast<size_t>(kind)]; }
void waited() { std::memset(t_past, 0, sizeof t_past); }

} // namespace threads

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, Start start,
                              void* argument) {
    const bool ours = threads::by_program(__builtin_return_address(0));
    const auto next = NEXT_DEFINITION(pthread_create);
    auto* const begin = ours ? static_cast<Begin*>(std::malloc(sizeof(Begin))) : nullptr;
    if (begin == nullptr)
        return next(thread, attributes, start, argument);
    *begin = {start, argument, __atomic_add_fetch(&g_made, 1, __ATOMIC_RELAXED)};
    thread_is_made();
    const int error = next(thread, attributes, run, begin);
    if (error != 0) {
        thread_is_not_made();
        std::free(begin);
    }
    return error;
}
