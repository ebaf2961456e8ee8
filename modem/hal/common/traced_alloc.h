/* Two pairs of allocation functions that return zero-filled memory: one for the modem API, which
 * can keep a list of every live block for leak hunting, and one for QMI records, which tells a
 * failure through the logger. */
#pragma once

#include <cstddef>
#include <cstdint>

/* Where both get their memory: malloc. A test may put a failing one here. */
extern void* (*g_orvik_system_malloc)(size_t size);

/* Blocks of the modem API. The first call reads the property "persist.ravex.mem_trace": exactly
 * "true" keeps the list. caller is kept, not copied: a string that outlives the block. Null when
 * there is no memory. */
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

/* Guarded by a mutex of its own: to be read while nothing is allocated or freed. */
const ravex_mem_list& ravex_mem_trace_list();
