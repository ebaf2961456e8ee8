// SPDX-License-Identifier: Apache-2.0
/* Records of the statistics service vs (minor 2), as decoded in memory. The service is not public:
 * layouts and TLV numbers are this project's assumption. Fields without a known meaning are named
 * for their place. Each comment gives the field's TLV; mandatory unless a valid byte stands before
 * it. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "qmi_common.h"

enum {
    QMI_VS_IDL_MINOR = 2,

    QMI_VS_SET_FEATURE = 0x0003,
    QMI_VS_GET_STATS = 0x0207,

    QMI_VS_IND_0004 = 0x0004,
    QMI_VS_IND_0203 = 0x0203,
    QMI_VS_IND_0204 = 0x0204,
    QMI_VS_IND_0601 = 0x0601,
};

enum {
    QMI_VS_MAX_IDS = 10,
    QMI_VS_MAX_ENTRIES = 10,
    QMI_VS_MAX_SECOND_ENTRIES = 5,
    QMI_VS_MAX_DATA = 700,
    QMI_VS_MAX_BYTES = 100,
};

typedef struct {
    uint32_t feature; /* 0x01 */
    uint8_t a;        /* 0x02 */
    uint8_t b;        /* 0x03 */
    uint8_t c;        /* 0x04 */
    uint8_t zero;     /* does not cross */
} vs_set_feature_req_v01;

typedef struct {
    qmi_response_type_v01 resp; /* 0x02 */
} vs_set_feature_resp_v01;

typedef struct {
    uint16_t sub;    /* 0x01 */
    uint16_t number; /* 0x02 */
    uint32_t ids_len;
    uint32_t ids[QMI_VS_MAX_IDS]; /* 0x03, u8 count */
} vs_get_stats_req_v01;

typedef struct {
    uint32_t sub;
    uint32_t id;
    uint32_t data_len;
    uint8_t data[QMI_VS_MAX_DATA]; /* u16 count */
} vs_stats_entry_v01;

typedef struct {
    qmi_response_type_v01 resp; /* 0x02 */
    uint8_t entries_valid;
    uint32_t entries_len;
    vs_stats_entry_v01 entries[QMI_VS_MAX_ENTRIES]; /* 0x10, u8 count */
} vs_get_stats_resp_v01;

typedef struct {
    uint32_t value; /* 0x01 */
    uint8_t flag_a; /* 0x02 */
    uint8_t flag_b; /* 0x03 */
} vs_ind_0004_v01;

typedef struct {
    uint32_t value;
    uint32_t data_len;
    uint8_t data[QMI_VS_MAX_DATA]; /* u16 count */
    uint16_t first;
    uint16_t second;
} vs_ind_entry_v01;

typedef struct {
    uint32_t value; /* 0x01 */
    uint32_t first_len;
    vs_ind_entry_v01 first[QMI_VS_MAX_ENTRIES]; /* 0x02, u8 count */
    uint32_t second_len;
    vs_ind_entry_v01 second[QMI_VS_MAX_SECOND_ENTRIES]; /* 0x03, u8 count */
    uint8_t extra_valid;
    uint32_t extra; /* 0x10 */
} vs_ind_0203_v01;

typedef struct {
    uint32_t value; /* 0x01 */
    uint32_t bytes_len;
    uint8_t bytes[QMI_VS_MAX_BYTES]; /* 0x02, u8 count */
    uint16_t first;                  /* 0x03 */
    uint16_t second;                 /* 0x04 */
} vs_ind_0204_v01;

typedef struct {
    uint8_t value; /* 0x01 */
} vs_ind_0601_v01;

#ifdef __cplusplus
static_assert(sizeof(vs_set_feature_req_v01) == 8);
static_assert(offsetof(vs_set_feature_req_v01, a) == 4);
static_assert(offsetof(vs_set_feature_req_v01, zero) == 7);
static_assert(sizeof(vs_set_feature_resp_v01) == 8);

static_assert(sizeof(vs_get_stats_req_v01) == 48);
static_assert(offsetof(vs_get_stats_req_v01, ids_len) == 4);
static_assert(offsetof(vs_get_stats_req_v01, ids) == 8);
static_assert(sizeof(vs_stats_entry_v01) == 712);
static_assert(sizeof(vs_get_stats_resp_v01) == 7136);
static_assert(offsetof(vs_get_stats_resp_v01, entries_valid) == 8);
static_assert(offsetof(vs_get_stats_resp_v01, entries_len) == 12);
static_assert(offsetof(vs_get_stats_resp_v01, entries) == 16);

static_assert(sizeof(vs_ind_0004_v01) == 8);
static_assert(offsetof(vs_ind_0004_v01, flag_b) == 5);
static_assert(sizeof(vs_ind_entry_v01) == 712);
static_assert(offsetof(vs_ind_entry_v01, first) == 708);
static_assert(sizeof(vs_ind_0203_v01) == 10700);
static_assert(offsetof(vs_ind_0203_v01, first) == 8);
static_assert(offsetof(vs_ind_0203_v01, second_len) == 7128);
static_assert(offsetof(vs_ind_0203_v01, second) == 7132);
static_assert(offsetof(vs_ind_0203_v01, extra_valid) == 10692);
static_assert(offsetof(vs_ind_0203_v01, extra) == 10696);
static_assert(sizeof(vs_ind_0204_v01) == 112);
static_assert(offsetof(vs_ind_0204_v01, bytes) == 8);
static_assert(offsetof(vs_ind_0204_v01, first) == 108);
static_assert(sizeof(vs_ind_0601_v01) == 1);
#endif
