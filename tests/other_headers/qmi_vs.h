// SPDX-License-Identifier: Apache-2.0
/* Records of vs as another phone's header has them: longer items. */
#ifndef OTHER_QMI_VS_H
#define OTHER_QMI_VS_H
#include "qmi_common.h"
#include <stdint.h>
#define QMI_VS_IDL_MINOR 3
#define QMI_VS_SET_FEATURE 0x0003
#define QMI_VS_GET_STATS 0x0207
#define QMI_VS_IND_0004 0x0004
#define QMI_VS_IND_0203 0x0203
#define QMI_VS_IND_0204 0x0204
#define QMI_VS_IND_0601 0x0601
#define QMI_VS_MAX_IDS 10
#define QMI_VS_MAX_ENTRIES 10
#define QMI_VS_MAX_SECOND_ENTRIES 5
#define QMI_VS_MAX_DATA 700
#define QMI_VS_MAX_BYTES 100
typedef struct {
    uint32_t feature;
    uint8_t a, b, c;
} vs_set_feature_req_v01;
typedef struct {
    qmi_response_type_v01 resp;
} vs_set_feature_resp_v01;
typedef struct {
    uint16_t sub, number;
    uint32_t ids_len, ids[QMI_VS_MAX_IDS];
} vs_get_stats_req_v01;
typedef struct {
    uint32_t sub, id, data_len;
    uint8_t data[QMI_VS_MAX_DATA];
    uint32_t other;
} vs_stats_entry_v01;
typedef struct {
    qmi_response_type_v01 resp;
    uint8_t entries_valid;
    uint32_t entries_len;
    vs_stats_entry_v01 entries[QMI_VS_MAX_ENTRIES];
} vs_get_stats_resp_v01;
typedef struct {
    uint32_t value;
    uint8_t flag_a, flag_b;
} vs_ind_0004_v01;
typedef struct {
    uint32_t value, data_len;
    uint8_t data[QMI_VS_MAX_DATA];
    uint16_t first, second;
} vs_ind_entry_v01;
typedef struct {
    uint32_t value, first_len;
    vs_ind_entry_v01 first[QMI_VS_MAX_ENTRIES];
    uint32_t second_len;
    vs_ind_entry_v01 second[QMI_VS_MAX_SECOND_ENTRIES];
    uint8_t extra_valid;
    uint32_t extra;
} vs_ind_0203_v01;
typedef struct {
    uint32_t value, bytes_len;
    uint8_t bytes[QMI_VS_MAX_BYTES];
    uint16_t first, second;
} vs_ind_0204_v01;
typedef struct {
    uint8_t value;
} vs_ind_0601_v01;
#endif
