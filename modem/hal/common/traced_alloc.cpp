// SPDX-License-Identifier: Apache-2.0
#include "traced_alloc.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>

#include <pthread.h>
#include <unistd.h>

#include "cutils_properties.h"
#include "log_lines.h"
#include "logger.h"
#include "phone_names.h"
#include "ravex_log.h"

void* (*g_orvik_system_malloc)(size_t size) = std::malloc;

namespace {

constexpr int logger_error_level = 5;

std::once_flag g_ravex_mem_inited;
bool g_ravex_mem_trace; /* written once, under g_ravex_mem_inited */
std::mutex g_ravex_mem_mutex;
ravex_mem_list g_ravex_mem_list;

void ravex_mem_init() {
    char value[256] = {};
    property_get(PHONE_PROPERTY_TRACE, value, nullptr);
    if (value[0] == '\0')
        RAVEX_LOG_AT(RAVEX_LOG_DEBUG, "RAVEX_MEM_TRACE_PROP not exist");
    g_ravex_mem_trace = std::strcmp(value, "true") == 0;
}

void* zeroed(size_t size) {
    void* const block = g_orvik_system_malloc(size);
    if (block != nullptr)
        std::memset(block, 0, size);
    return block;
}

void trace_block(void* block, size_t size, const char* caller) {
    auto* const record = static_cast<ravex_mem_record*>(zeroed(sizeof(ravex_mem_record)));
    if (record == nullptr)
        return;
    const time_t now = std::time(nullptr);
    struct tm local {};
    ::localtime_r(&now, &local);
    record->address = block;
    record->size = size;
    record->pid = ::getpid();
    record->caller = caller;
    record->year = local.tm_year + 1900;
    record->month = local.tm_mon + 1;
    record->day = local.tm_mday;
    record->hour = local.tm_hour;
    record->minute = local.tm_min;
    record->second = local.tm_sec;

    const std::lock_guard guard(g_ravex_mem_mutex);
    record->prev = g_ravex_mem_list.tail;
    (record->prev != nullptr ? record->prev->next : g_ravex_mem_list.head) = record;
    g_ravex_mem_list.tail = record;
    ++g_ravex_mem_list.count;
}

void untrace_block(uintptr_t address) {
    const std::lock_guard guard(g_ravex_mem_mutex);
    for (ravex_mem_record* r = g_ravex_mem_list.head; r != nullptr; r = r->next) {
        if (reinterpret_cast<uintptr_t>(r->address) != address)
            continue;
        (r->prev != nullptr ? r->prev->next : g_ravex_mem_list.head) = r->next;
        (r->next != nullptr ? r->next->prev : g_ravex_mem_list.tail) = r->prev;
        --g_ravex_mem_list.count;
        std::free(r);
        return;
    }
}

} // namespace

void* ravex_malloc_adv(size_t size, const char* caller, int) {
    std::call_once(g_ravex_mem_inited, ravex_mem_init);
    void* const block = zeroed(size);
    if (block == nullptr) {
        RAVEX_LOG("Fail to allocate memory");
        return nullptr;
    }
    if (g_ravex_mem_trace)
        trace_block(block, size, caller);
    return block;
}

void ravex_free_adv(void* ptr, const char*, int) {
    if (ptr == nullptr)
        return;
    const volatile auto address = reinterpret_cast<uintptr_t>(ptr); /* only compared from here on */
    /* The block is freed before its record. If another thread gets the same address in between, its
     * record is appended later in the list, and the search from the head finds ours first. */
    std::free(ptr);
    if (g_ravex_mem_trace)
        untrace_block(address);
}

void* qcril_malloc_adv(size_t size) {
    void* const block = zeroed(size);
    if (block == nullptr) {
        char thread_name[16] = {};
        pthread_getname_np(pthread_self(), thread_name, sizeof thread_name);
        char text[256];
        std::snprintf(text, sizeof text, "[%s: %d] [%s(%ld,%ld)] %s: Fail to allocate memory",
                      orvik_base_name(__FILE__), __LINE__, thread_name,
                      static_cast<long>(::getpid()),
                      static_cast<long>(qti::ril::logger::my_gettid()), __func__);
        qti::ril::logger::Logger::log(logger_error_level, "util", text);
    }
    return block;
}

void qcril_free_adv(void* ptr, const char*, int) { std::free(ptr); }

const ravex_mem_list& ravex_mem_trace_list() { return g_ravex_mem_list; }
