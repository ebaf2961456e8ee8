// SPDX-License-Identifier: Apache-2.0
/* Service object of the UIM service. */
#include "qmi_idl_layout.h"
#include "qmi_uim.h"

namespace {

constexpr uint8_t low(size_t value) { return static_cast<uint8_t>(value & 0xFF); }
constexpr uint8_t high(size_t value) { return static_cast<uint8_t>(value >> 8); }

/* ---- aggregate types: one element a row ---- */

enum : uint8_t { type_response, type_card_result, type_long_response, type_card, type_card_status };

// clang-format off
constexpr uint8_t response_type[] = {
    QMI_IDL_2_BYTE_ENUM, offsetof(qmi_response_type_v01, result),
    QMI_IDL_2_BYTE_ENUM, offsetof(qmi_response_type_v01, error),
    QMI_IDL_TYPE_END,
};

constexpr uint8_t card_result[] = {
    QMI_IDL_1_BYTE, offsetof(uim_card_result_v01, sw1),
    QMI_IDL_1_BYTE, offsetof(uim_card_result_v01, sw2),
    QMI_IDL_TYPE_END,
};

constexpr uint8_t long_response[] = {
    QMI_IDL_2_BYTE, offsetof(uim_long_response_v01, total),
    QMI_IDL_4_BYTE, offsetof(uim_long_response_v01, token),
    QMI_IDL_TYPE_END,
};

constexpr uint8_t card[] = {
    QMI_IDL_1_BYTE_ENUM, offsetof(uim_card_v01, card_state),
    QMI_IDL_TYPE_END,
};

constexpr uint8_t card_status[] = {
    QMI_IDL_2_BYTE, offsetof(uim_extended_card_status_v01, gw_primary),
    QMI_IDL_2_BYTE, offsetof(uim_extended_card_status_v01, c1x_primary),
    QMI_IDL_2_BYTE, offsetof(uim_extended_card_status_v01, gw_secondary),
    QMI_IDL_2_BYTE, offsetof(uim_extended_card_status_v01, c1x_secondary),
    QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_AGGREGATE,
        offsetof(uim_extended_card_status_v01, cards), QMI_UIM_CARDS_MAX,
        offsetof(uim_extended_card_status_v01, cards) - offsetof(uim_extended_card_status_v01, cards_len),
        type_card, 0,
    QMI_IDL_TYPE_END,
};

constexpr qmi_idl_type_table_entry types[] = {
    {sizeof(qmi_response_type_v01), response_type},
    {sizeof(uim_card_result_v01), card_result},
    {sizeof(uim_long_response_v01), long_response},
    {sizeof(uim_card_v01), card},
    {sizeof(uim_extended_card_status_v01), card_status},
};

/* ---- messages: one TLV a row; an optional one states how far before its field the valid flag
 *      lies ---- */

constexpr uint8_t power_down_req[] = {
    QMI_IDL_TLV_LAST | 0x01, QMI_IDL_1_BYTE_ENUM, offsetof(uim_power_down_req_v01, slot),
};

constexpr uint8_t power_up_req[] = {
    0x01, QMI_IDL_1_BYTE_ENUM, offsetof(uim_power_up_req_v01, slot),
    QMI_IDL_TLV_OPTIONAL | 1, 0x10, QMI_IDL_1_BYTE, offsetof(uim_power_up_req_v01, ignore_hotswap),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 2, 0x11,
        QMI_IDL_1_BYTE_ENUM, offsetof(uim_power_up_req_v01, card_mode),
};

constexpr uint8_t plain_resp[] = {
    QMI_IDL_TLV_LAST | 0x02, QMI_IDL_AGGREGATE, offsetof(uim_plain_resp_v01, resp), type_response, 0,
};

constexpr uint8_t get_eid_req[] = {
    QMI_IDL_TLV_LAST | 0x01, QMI_IDL_1_BYTE_ENUM, offsetof(uim_get_eid_req_v01, slot),
};

constexpr uint8_t get_eid_resp[] = {
    0x02, QMI_IDL_AGGREGATE, offsetof(uim_get_eid_resp_v01, resp), type_response, 0,
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 8, 0x10,
        QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE, offsetof(uim_get_eid_resp_v01, eid),
        QMI_UIM_EID_SIZE, offsetof(uim_get_eid_resp_v01, eid) - offsetof(uim_get_eid_resp_v01, eid_len),
};

constexpr uint8_t get_card_status_req[] = {
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 1, 0x10,
        QMI_IDL_1_BYTE, offsetof(uim_get_card_status_req_v01, extended),
};

constexpr uint8_t get_card_status_resp[] = {
    0x02, QMI_IDL_AGGREGATE, offsetof(uim_get_card_status_resp_v01, resp), type_response, 0,
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 4, 0x15,
        QMI_IDL_OFFSET_16 | QMI_IDL_AGGREGATE,
        low(offsetof(uim_get_card_status_resp_v01, extended)),
        high(offsetof(uim_get_card_status_resp_v01, extended)), type_card_status, 0,
};

constexpr uint8_t open_logical_channel_req[] = {
    0x01, QMI_IDL_1_BYTE_ENUM, offsetof(uim_open_logical_channel_req_v01, slot),
    QMI_IDL_TLV_OPTIONAL | 8, 0x10,
        QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(uim_open_logical_channel_req_v01, aid), QMI_UIM_AID_MAX,
        offsetof(uim_open_logical_channel_req_v01, aid) - offsetof(uim_open_logical_channel_req_v01, aid_len),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 4, 0x11,
        QMI_IDL_1_BYTE_ENUM, offsetof(uim_open_logical_channel_req_v01, fci),
};

constexpr uint8_t logical_channel_req[] = {
    0x01, QMI_IDL_1_BYTE_ENUM, offsetof(uim_logical_channel_req_v01, slot),
    QMI_IDL_TLV_OPTIONAL | 8, 0x10,
        QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(uim_logical_channel_req_v01, aid), QMI_UIM_AID_MAX,
        offsetof(uim_logical_channel_req_v01, aid) - offsetof(uim_logical_channel_req_v01, aid_len),
    QMI_IDL_TLV_OPTIONAL | 1, 0x11, QMI_IDL_1_BYTE, offsetof(uim_logical_channel_req_v01, channel),
    QMI_IDL_TLV_OPTIONAL | 2, 0x12, QMI_IDL_1_BYTE_ENUM, offsetof(uim_logical_channel_req_v01, fci),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 1, 0x13,
        QMI_IDL_1_BYTE, offsetof(uim_logical_channel_req_v01, terminate),
};

constexpr uint8_t logical_channel_resp[] = {
    0x02, QMI_IDL_AGGREGATE, offsetof(uim_logical_channel_resp_v01, resp), type_response, 0,
    QMI_IDL_TLV_OPTIONAL | 1, 0x10, QMI_IDL_1_BYTE, offsetof(uim_logical_channel_resp_v01, channel),
    QMI_IDL_TLV_OPTIONAL | 1, 0x11,
        QMI_IDL_AGGREGATE, offsetof(uim_logical_channel_resp_v01, card_result), type_card_result, 0,
    QMI_IDL_TLV_OPTIONAL | 7, 0x12,
        QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(uim_logical_channel_resp_v01, select), QMI_UIM_SELECT_MAX,
        offsetof(uim_logical_channel_resp_v01, select) - offsetof(uim_logical_channel_resp_v01, select_len),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 5, 0x13,
        QMI_IDL_OFFSET_16 | QMI_IDL_ARRAY | QMI_IDL_SIZE_16 | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        low(offsetof(uim_logical_channel_resp_v01, further_select)),
        high(offsetof(uim_logical_channel_resp_v01, further_select)),
        low(QMI_UIM_APDU_MAX), high(QMI_UIM_APDU_MAX),
        offsetof(uim_logical_channel_resp_v01, further_select) - offsetof(uim_logical_channel_resp_v01, further_select_len),
};

constexpr uint8_t send_apdu_req[] = {
    0x01, QMI_IDL_1_BYTE_ENUM, offsetof(uim_send_apdu_req_v01, slot),
    0x02, QMI_IDL_ARRAY | QMI_IDL_SIZE_16 | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(uim_send_apdu_req_v01, apdu), low(QMI_UIM_APDU_MAX), high(QMI_UIM_APDU_MAX),
        offsetof(uim_send_apdu_req_v01, apdu) - offsetof(uim_send_apdu_req_v01, apdu_len),
    QMI_IDL_TLV_OPTIONAL | 1, 0x10, QMI_IDL_OFFSET_16 | QMI_IDL_1_BYTE,
        low(offsetof(uim_send_apdu_req_v01, channel)), high(offsetof(uim_send_apdu_req_v01, channel)),
    QMI_IDL_TLV_OPTIONAL | 2, 0x11, QMI_IDL_OFFSET_16 | QMI_IDL_1_BYTE_ENUM,
        low(offsetof(uim_send_apdu_req_v01, procedure)), high(offsetof(uim_send_apdu_req_v01, procedure)),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 8, 0x12, QMI_IDL_OFFSET_16 | QMI_IDL_8_BYTE,
        low(offsetof(uim_send_apdu_req_v01, further)), high(offsetof(uim_send_apdu_req_v01, further)),
};

constexpr uint8_t send_apdu_resp[] = {
    0x02, QMI_IDL_AGGREGATE, offsetof(uim_send_apdu_resp_v01, resp), type_response, 0,
    QMI_IDL_TLV_OPTIONAL | 8, 0x10,
        QMI_IDL_ARRAY | QMI_IDL_SIZE_16 | QMI_IDL_VARIABLE | QMI_IDL_1_BYTE,
        offsetof(uim_send_apdu_resp_v01, apdu), low(QMI_UIM_APDU_MAX), high(QMI_UIM_APDU_MAX),
        offsetof(uim_send_apdu_resp_v01, apdu) - offsetof(uim_send_apdu_resp_v01, apdu_len),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 4, 0x11, QMI_IDL_OFFSET_16 | QMI_IDL_AGGREGATE,
        low(offsetof(uim_send_apdu_resp_v01, further)), high(offsetof(uim_send_apdu_resp_v01, further)),
        type_long_response, 0,
};
// clang-format on

enum : uint16_t {
    msg_power_down_req,
    msg_power_up_req,
    msg_plain_resp,
    msg_get_eid_req,
    msg_get_eid_resp,
    msg_get_card_status_req,
    msg_get_card_status_resp,
    msg_open_logical_channel_req,
    msg_logical_channel_req,
    msg_logical_channel_resp,
    msg_send_apdu_req,
    msg_send_apdu_resp,
};

constexpr qmi_idl_message_table_entry messages[] = {
    {sizeof(uim_power_down_req_v01), power_down_req},
    {sizeof(uim_power_up_req_v01), power_up_req},
    {sizeof(uim_plain_resp_v01), plain_resp},
    {sizeof(uim_get_eid_req_v01), get_eid_req},
    {sizeof(uim_get_eid_resp_v01), get_eid_resp},
    {sizeof(uim_get_card_status_req_v01), get_card_status_req},
    {sizeof(uim_get_card_status_resp_v01), get_card_status_resp},
    {sizeof(uim_open_logical_channel_req_v01), open_logical_channel_req},
    {sizeof(uim_logical_channel_req_v01), logical_channel_req},
    {sizeof(uim_logical_channel_resp_v01), logical_channel_resp},
    {sizeof(uim_send_apdu_req_v01), send_apdu_req},
    {sizeof(uim_send_apdu_resp_v01), send_apdu_resp},
};

/* Message id, message, most bytes on the wire. */
constexpr qmi_idl_service_message_table_entry requests[] = {
    {QMI_UIM_GET_CARD_STATUS, msg_get_card_status_req, 4},
    {QMI_UIM_POWER_DOWN, msg_power_down_req, 4},
    {QMI_UIM_POWER_UP, msg_power_up_req, 12},
    {QMI_UIM_SEND_APDU, msg_send_apdu_req, 1052},
    {QMI_UIM_LOGICAL_CHANNEL, msg_logical_channel_req, 52},
    {QMI_UIM_OPEN_LOGICAL_CHANNEL, msg_open_logical_channel_req, 44},
    {QMI_UIM_GET_EID, msg_get_eid_req, 4},
};

constexpr qmi_idl_service_message_table_entry responses[] = {
    {QMI_UIM_GET_CARD_STATUS, msg_get_card_status_resp, 24},
    {QMI_UIM_POWER_DOWN, msg_plain_resp, 7},
    {QMI_UIM_POWER_UP, msg_plain_resp, 7},
    {QMI_UIM_SEND_APDU, msg_send_apdu_resp, 1045},
    {QMI_UIM_LOGICAL_CHANNEL, msg_logical_channel_resp, 1304},
    {QMI_UIM_OPEN_LOGICAL_CHANNEL, msg_logical_channel_resp, 1304},
    {QMI_UIM_GET_EID, msg_get_eid_resp, 27},
};

constexpr qmi_idl::Tables tables(types, messages);

} // namespace

constinit const struct qmi_idl_service_object uim_qmi_idl_service_object_v01 =
    tables.service({QMI_UIM_SERVICE, QMI_UIM_IDL_MINOR, 4096}, requests, responses, {});
