// SPDX-License-Identifier: Apache-2.0
/* Indications of the statistics service, as the modem API's callers get them: flat payloads,
 * little-endian, in the layouts below. */
#pragma once

#include <cstddef>
#include <cstdint>

#include "qmi_vs.h"
#include "service_client.h"

/* Events that an indication handler gets, and their payloads. */
enum : uint32_t {
    VS_EVENT_0004 = 2, /* vs_event_0004 */
    VS_EVENT_0203 = 3, /* vs_event_0203 */
    VS_EVENT_0204 = 4, /* vs_event_0204 */
    VS_EVENT_0601 = 5, /* vs_event_0601 */
};

struct vs_event_0004 {
    uint32_t value;
    uint8_t flag_a; /* 0 or 1 */
    uint8_t flag_b;
    uint8_t spare[2];
};
static_assert(sizeof(vs_event_0004) == 8 && offsetof(vs_event_0004, flag_b) == 5);

struct vs_event_entry {
    uint32_t value;
    uint8_t data[QMI_VS_MAX_DATA];
    uint32_t data_len; /* at most 700 */
    uint16_t first;
    uint16_t second;
};
static_assert(sizeof(vs_event_entry) == 712 && offsetof(vs_event_entry, data_len) == 704);

struct vs_event_0203 {
    uint32_t value;
    vs_event_entry first[QMI_VS_MAX_ENTRIES];
    uint32_t first_len; /* at most 10 */
    vs_event_entry second[QMI_VS_MAX_SECOND_ENTRIES];
    uint32_t second_len; /* at most 5 */
    uint32_t extra;      /* 0xFFFFFFFF: absent */
};
static_assert(sizeof(vs_event_0203) == 10696 && offsetof(vs_event_0203, first_len) == 7124 &&
              offsetof(vs_event_0203, second_len) == 10688);

struct vs_event_0204 {
    uint32_t value;
    uint32_t slots[QMI_VS_MAX_BYTES]; /* a byte each */
    uint32_t count;                   /* at most 100 */
    uint16_t first;
    uint16_t second;
};
static_assert(sizeof(vs_event_0204) == 412 && offsetof(vs_event_0204, count) == 404);

struct vs_event_0601 {
    uint8_t value;
};
static_assert(sizeof(vs_event_0601) == 1);

/* Hands a decoded indication of size bytes to the handler; false for an unknown message id. Fields
 * beyond size count as zero; counts and lengths are cut to their arrays. */
bool vs_client_dispatch_indication(client_indication_handler handler, uint32_t msg_id,
                                   const void* decoded, uint32_t size);
