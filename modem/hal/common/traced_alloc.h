// SPDX-License-Identifier: Apache-2.0
/* Two pairs of allocation functions that return zeroed memory. The modem API's pair can keep a list
 * of every live block, to hunt leaks; the pair for QMI records reports a failure through the
 * logger. */
#pragma once

#include <cstddef>
#include <cstdint>

/* Where both get their memory: malloc. A test may put a failing one here. */
extern void* (*g_orvik_system_malloc)(size_t size);

/* Blocks of the modem API. The first call reads the property "persist.ravex.mem_trace": exactly
 * "true" keeps the list. caller must outlive the block. Null when there is no memory. */
void* ravex_malloc_adv(size_t size, const char* caller, int line);

/* Null is ignored. caller and line are not used. */
void ravex_free_adv(void* ptr, const char* caller, int line);

/* Blocks of QMI records. Null, and an error through the logger, when there is no memory. */
void* qcril_malloc_adv(size_t size);
void qcril_free_adv(void* ptr, const char* caller, int line);

/* A live block of the modem API. The list is there to be looked at in a running process. */
struct ravex_mem_record {
    ravex_mem_record* prev;
    ravex_mem_record* next;
    void* address;
    uint64_t size; /* bytes */
    int32_t pid;
    const char* caller;
    int32_t year;  /* local time of the allocation; the year in full */
    int32_t month; /* 1 to 12 */
    int32_t day;
    int32_t hour;
    int32_t minute;
    int32_t second;
};

struct ravex_mem_list {
    ravex_mem_record* head;
    ravex_mem_record* tail;
    uint64_t count;
};

/* Read it only while nothing is allocated or freed: its mutex is not held for the reader. */
const ravex_mem_list& ravex_mem_trace_list();
