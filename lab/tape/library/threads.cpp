// SPDX-License-Identifier: Apache-2.0
#include "threads.h"

#include <cstdint>
#include <cstdlib>

#include <link.h>
#include <pthread.h>

#include "symbols.h"

namespace {

thread_local int t_number = threads::unknown;
thread_local long long t_steps = 0;
thread_local long long t_locks = 0;
thread_local threads::Place t_place = threads::Place::platform;

int g_made; /* by the program; atomic */
int g_any;  /* atomic */

struct Program {
    uintptr_t from = 0;
    uintptr_t to = 0;
};

/* The first object is the program. */
int find_program(dl_phdr_info* info, size_t, void* data) {
    auto* const program = static_cast<Program*>(data);
    program->from = UINTPTR_MAX;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type != PT_LOAD)
            continue;
        const uintptr_t from = info->dlpi_addr + header.p_vaddr;
        program->from = from < program->from ? from : program->from;
        program->to = from + header.p_memsz > program->to ? from + header.p_memsz : program->to;
    }
    return 1;
}

Program g_program;

__attribute__((constructor)) void load() {
    ::dl_iterate_phdr(find_program, &g_program);
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
    t_place = threads::Place::program;
    return begin.start(begin.argument);
}

} // namespace

namespace threads {

int current() { return t_number; }
void set_current(int number) { t_number = number; }

long long next_lock() { return 1000 * t_steps + ++t_locks; }

Place place() { return t_place; }

Place enter(Place place) {
    const Place before = t_place;
    t_place = place;
    ++t_steps;
    t_locks = 0;
    return before;
}

bool several() { return __atomic_load_n(&g_any, __ATOMIC_ACQUIRE) != 0; }

bool by_program(const void* return_address) {
    const auto at = reinterpret_cast<uintptr_t>(return_address);
    return t_place == Place::program && at >= g_program.from && at < g_program.to;
}

} // namespace threads

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, Start start,
                              void* argument) {
    const bool ours = threads::by_program(__builtin_return_address(0));
    const auto next = NEXT_DEFINITION(pthread_create);
    __atomic_store_n(&g_any, 1, __ATOMIC_RELEASE);
    auto* const begin = ours ? static_cast<Begin*>(std::malloc(sizeof(Begin))) : nullptr;
    if (begin == nullptr)
        return next(thread, attributes, start, argument);
    *begin = {start, argument, __atomic_add_fetch(&g_made, 1, __ATOMIC_RELAXED)};
    const int error = next(thread, attributes, run, begin);
    if (error != 0)
        std::free(begin);
    return error;
}
