// SPDX-License-Identifier: Apache-2.0
/* Service object of the statistics service vs. */
#include "qmi_idl_layout.h"
#include "qmi_vs.h"

namespace {

constexpr uint8_t low(size_t value) { return static_cast<uint8_t>(value & 0xFF); }
constexpr uint8_t high(size_t value) { return static_cast<uint8_t>(value >> 8); }

/* ---- aggregate types: one element a row ---- */

enum : uint8_t { type_response, type_stats_entry, type_ind_entry };

// clang-format off
constexpr uint8_t response_type[] = {
    QMI_IDL_2_BYTE_ENUM, offsetof(qmi_response_type_v01, result),
    QMI_IDL_2_BYTE_ENUM, offsetof(qmi_response_type_v01, error),
    QMI_IDL_TYPE_END,
};

constexpr uint8_t stats_entry[] = {
    QMI_IDL_4_BYTE, offsetof(vs_stats_entry_v01, sub),
    QMI_IDL_4_BYTE, offsetof(vs_stats_entry_v01, id),
    QMI_IDL_ARRAY | QMI_IDL_SIZE_16 | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(vs_stats_entry_v01, data), low(QMI_VS_MAX_DATA), high(QMI_VS_MAX_DATA),
        offsetof(vs_stats_entry_v01, data) - offsetof(vs_stats_entry_v01, data_len),
    QMI_IDL_TYPE_END,
};

constexpr uint8_t ind_entry[] = {
    QMI_IDL_4_BYTE, offsetof(vs_ind_entry_v01, value),
    QMI_IDL_ARRAY | QMI_IDL_SIZE_16 | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(vs_ind_entry_v01, data), low(QMI_VS_MAX_DATA), high(QMI_VS_MAX_DATA),
        offsetof(vs_ind_entry_v01, data) - offsetof(vs_ind_entry_v01, data_len),
    QMI_IDL_OFFSET_16 | QMI_IDL_2_BYTE,
        low(offsetof(vs_ind_entry_v01, first)), high(offsetof(vs_ind_entry_v01, first)),
    QMI_IDL_OFFSET_16 | QMI_IDL_2_BYTE,
        low(offsetof(vs_ind_entry_v01, second)), high(offsetof(vs_ind_entry_v01, second)),
    QMI_IDL_TYPE_END,
};

constexpr qmi_idl_type_table_entry types[] = {
    {sizeof(qmi_response_type_v01), response_type},
    {sizeof(vs_stats_entry_v01), stats_entry},
    {sizeof(vs_ind_entry_v01), ind_entry},
};

/* ---- messages: one TLV a row ---- */

constexpr uint8_t set_feature_req[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(vs_set_feature_req_v01, feature),
    0x02, QMI_IDL_1_BYTE, offsetof(vs_set_feature_req_v01, a),
    0x03, QMI_IDL_1_BYTE, offsetof(vs_set_feature_req_v01, b),
    QMI_IDL_TLV_LAST | 0x04, QMI_IDL_1_BYTE, offsetof(vs_set_feature_req_v01, c),
};

constexpr uint8_t set_feature_resp[] = {
    QMI_IDL_TLV_LAST | 0x02, QMI_IDL_AGGREGATE, offsetof(vs_set_feature_resp_v01, resp),
        type_response, 0,
};

constexpr uint8_t get_stats_req[] = {
    0x01, QMI_IDL_2_BYTE, offsetof(vs_get_stats_req_v01, sub),
    0x02, QMI_IDL_2_BYTE, offsetof(vs_get_stats_req_v01, number),
    QMI_IDL_TLV_LAST | 0x03, QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_4_BYTE,
        offsetof(vs_get_stats_req_v01, ids), QMI_VS_MAX_IDS,
        offsetof(vs_get_stats_req_v01, ids) - offsetof(vs_get_stats_req_v01, ids_len),
};

constexpr uint8_t get_stats_resp[] = {
    0x02, QMI_IDL_AGGREGATE, offsetof(vs_get_stats_resp_v01, resp), type_response, 0,
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL |
            (offsetof(vs_get_stats_resp_v01, entries) - offsetof(vs_get_stats_resp_v01, entries_valid)),
        0x10, QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_AGGREGATE,
        offsetof(vs_get_stats_resp_v01, entries), QMI_VS_MAX_ENTRIES,
        offsetof(vs_get_stats_resp_v01, entries) - offsetof(vs_get_stats_resp_v01, entries_len),
        type_stats_entry, 0,
};

constexpr uint8_t ind_0004[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(vs_ind_0004_v01, value),
    0x02, QMI_IDL_1_BYTE, offsetof(vs_ind_0004_v01, flag_a),
    QMI_IDL_TLV_LAST | 0x03, QMI_IDL_1_BYTE, offsetof(vs_ind_0004_v01, flag_b),
};

constexpr uint8_t ind_0203[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(vs_ind_0203_v01, value),
    0x02, QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_AGGREGATE,
        offsetof(vs_ind_0203_v01, first), QMI_VS_MAX_ENTRIES,
        offsetof(vs_ind_0203_v01, first) - offsetof(vs_ind_0203_v01, first_len), type_ind_entry, 0,
    0x03, QMI_IDL_OFFSET_16 | QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_AGGREGATE,
        low(offsetof(vs_ind_0203_v01, second)), high(offsetof(vs_ind_0203_v01, second)),
        QMI_VS_MAX_SECOND_ENTRIES,
        offsetof(vs_ind_0203_v01, second) - offsetof(vs_ind_0203_v01, second_len), type_ind_entry, 0,
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL |
            (offsetof(vs_ind_0203_v01, extra) - offsetof(vs_ind_0203_v01, extra_valid)),
        0x10, QMI_IDL_OFFSET_16 | QMI_IDL_4_BYTE,
        low(offsetof(vs_ind_0203_v01, extra)), high(offsetof(vs_ind_0203_v01, extra)),
};

constexpr uint8_t ind_0204[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(vs_ind_0204_v01, value),
    0x02, QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(vs_ind_0204_v01, bytes), QMI_VS_MAX_BYTES,
        offsetof(vs_ind_0204_v01, bytes) - offsetof(vs_ind_0204_v01, bytes_len),
    0x03, QMI_IDL_2_BYTE, offsetof(vs_ind_0204_v01, first),
    QMI_IDL_TLV_LAST | 0x04, QMI_IDL_2_BYTE, offsetof(vs_ind_0204_v01, second),
};

constexpr uint8_t ind_0601[] = {
    QMI_IDL_TLV_LAST | 0x01, QMI_IDL_1_BYTE, offsetof(vs_ind_0601_v01, value),
};
// clang-format on

enum : uint16_t {
    msg_set_feature_req,
    msg_set_feature_resp,
    msg_get_stats_req,
    msg_get_stats_resp,
    msg_ind_0004,
    msg_ind_0203,
    msg_ind_0204,
    msg_ind_0601,
};

constexpr qmi_idl_message_table_entry messages[] = {
    {sizeof(vs_set_feature_req_v01), set_feature_req},
    {sizeof(vs_set_feature_resp_v01), set_feature_resp},
    {sizeof(vs_get_stats_req_v01), get_stats_req},
    {sizeof(vs_get_stats_resp_v01), get_stats_resp},
    {sizeof(vs_ind_0004_v01), ind_0004},
    {sizeof(vs_ind_0203_v01), ind_0203},
    {sizeof(vs_ind_0204_v01), ind_0204},
    {sizeof(vs_ind_0601_v01), ind_0601},
};

constexpr uint32_t longest = 10672; /* indication 0x0203 */

/* Message id, message, most bytes on the wire. */
constexpr qmi_idl_service_message_table_entry requests[] = {
    {QMI_VS_SET_FEATURE, msg_set_feature_req, 19},
    {QMI_VS_GET_STATS, msg_get_stats_req, 54},
};

constexpr qmi_idl_service_message_table_entry responses[] = {
    {QMI_VS_SET_FEATURE, msg_set_feature_resp, 7},
    {QMI_VS_GET_STATS, msg_get_stats_resp, 7111},
};

constexpr qmi_idl_service_message_table_entry indications[] = {
    {QMI_VS_IND_0004, msg_ind_0004, 15},
    {QMI_VS_IND_0203, msg_ind_0203, longest},
    {QMI_VS_IND_0204, msg_ind_0204, 121},
    {QMI_VS_IND_0601, msg_ind_0601, 4},
};

constexpr qmi_idl::Tables tables(types, messages);

} // namespace

constinit const struct qmi_idl_service_object vs_qmi_idl_service_object_v01 =
    tables.service({0xE4, QMI_VS_IDL_MINOR, longest}, requests, responses, indications);
