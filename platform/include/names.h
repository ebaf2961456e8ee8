// SPDX-License-Identifier: Apache-2.0
/* Names of what crosses between a program and the modem, for those who show it to a person: the QMI
 * services, their messages, TLVs and fields, the vendor service's records, DIAG commands, APDUs and
 * result codes. Plain data: each row tells where a value lies on the wire and where in the record
 * that the client sees (qmi_uim.h and its like). What has no row is shown by number. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "qmi_cci.h"
#include "qmi_nas.h"
#include "qmi_sar.h"
#include "qmi_uim.h"
#include "qmi_vs.h"

namespace names {

struct Number {
    int64_t value;
    const char* name;
};

/* ---- QMI ---- */

inline constexpr uint16_t nowhere = 0xFFFF;

/* A number, or a run of bytes. On the wire fields stand one behind the other. */
struct Field {
    const char* name;
    uint8_t wire;      /* bytes of a number; of a run the bytes of the count before it */
    uint8_t memory;    /* bytes of a number in the record */
    uint16_t at;       /* offset in the record; within a list in its element */
    uint16_t most;     /* of a run: how many bytes at most; 0: a number */
    uint16_t count_at; /* of a run: offset of its u32 count */
    std::span<const Number> values = {};
};

/* Elements of the same fields, counted. */
struct List {
    const char* name = nullptr; /* null: no list */
    uint8_t wire = 0;           /* bytes of the count */
    uint16_t count_at = 0;      /* u32 */
    uint16_t at = 0;            /* of the first element */
    uint16_t stride = 0;        /* bytes of an element in the record */
    uint16_t most = 0;
    std::span<const Field> fields = {};
};

/* Fields first, then a list. */
struct Tlv {
    uint8_t type;
    const char* name;
    uint16_t valid_at; /* offset of the valid flag; nowhere: mandatory */
    std::span<const Field> fields;
    List list = {};
};

struct Message {
    uint16_t id;
    const char* name;
    std::span<const Tlv> request, response, indication;
};

struct Service {
    const char* name; /* short, as the simulated phone's log and tapes have it */
    uint16_t id;
    const char* title;
    std::span<const Message> messages;
};

constexpr Field number(const char* name, uint8_t wire, uint8_t memory, size_t at,
                       std::span<const Number> values = {}) {
    return {name, wire, memory, static_cast<uint16_t>(at), 0, 0, values};
}
constexpr Field bytes(const char* name, uint8_t count, size_t at, size_t most, size_t count_at) {
    return {name,
            count,
            0,
            static_cast<uint16_t>(at),
            static_cast<uint16_t>(most),
            static_cast<uint16_t>(count_at)};
}

/* Offset of a record's field. */
#define NAMES_AT(record, field) offsetof(record, field)

// clang-format off

inline constexpr Number qmi_results[] = {{0, "success"}, {1, "failure"}};
inline constexpr Number qmi_errors[] = {
    {0, "none"}, {1, "malformed message"}, {2, "no memory"}, {3, "internal"}, {4, "aborted"},
    {17, "missing argument"}, {37, "UIM uninitialized"}, {48, "invalid argument"}, {50, "no entry"},
    {52, "device not ready"}, {66, "session invalid"}, {68, "insufficient resources"}, {71, "invalid QMI command"},
    {74, "information unavailable"}, {94, "not supported"},
};
inline constexpr Field standard_response[] = {
    number("result", 2, 4, NAMES_AT(qmi_response_type_v01, result), qmi_results),
    number("error", 2, 4, NAMES_AT(qmi_response_type_v01, error), qmi_errors),
};
inline constexpr Tlv plain_response[] = {{0x02, "response", nowhere, standard_response}};

/* UIM */

inline constexpr Number card_states[] = {{UIM_CARD_ABSENT, "absent"}, {UIM_CARD_PRESENT, "present"}, {UIM_CARD_ERROR, "error"}};

inline constexpr Field uim_slot[] = {number("slot", 1, 4, NAMES_AT(uim_power_down_req_v01, slot))};
inline constexpr Field uim_ignore_hotswap[] = {number("ignore hot swap", 1, 1, NAMES_AT(uim_power_up_req_v01, ignore_hotswap))};
inline constexpr Field uim_card_mode[] = {number("card mode", 1, 4, NAMES_AT(uim_power_up_req_v01, card_mode))};
inline constexpr Field uim_extended[] = {number("extended", 1, 1, NAMES_AT(uim_get_card_status_req_v01, extended))};
inline constexpr Field uim_eid[] = {bytes("EID", 1, NAMES_AT(uim_get_eid_resp_v01, eid), QMI_UIM_EID_SIZE, NAMES_AT(uim_get_eid_resp_v01, eid_len))};
inline constexpr size_t uim_extended_at = NAMES_AT(uim_get_card_status_resp_v01, extended);
inline constexpr Field uim_indexes[] = {
    number("GW primary", 2, 2, uim_extended_at + NAMES_AT(uim_extended_card_status_v01, gw_primary)),
    number("1X primary", 2, 2, uim_extended_at + NAMES_AT(uim_extended_card_status_v01, c1x_primary)),
    number("GW secondary", 2, 2, uim_extended_at + NAMES_AT(uim_extended_card_status_v01, gw_secondary)),
    number("1X secondary", 2, 2, uim_extended_at + NAMES_AT(uim_extended_card_status_v01, c1x_secondary)),
};
inline constexpr Field uim_card[] = {number("state", 1, 4, NAMES_AT(uim_card_v01, card_state), card_states)};
inline constexpr List uim_cards = {"card", 1,
    uim_extended_at + NAMES_AT(uim_extended_card_status_v01, cards_len),
    uim_extended_at + NAMES_AT(uim_extended_card_status_v01, cards),
    sizeof(uim_card_v01), QMI_UIM_CARDS_MAX, uim_card};
inline constexpr Field uim_open_aid[] = {bytes("AID", 1, NAMES_AT(uim_open_logical_channel_req_v01, aid), QMI_UIM_AID_MAX, NAMES_AT(uim_open_logical_channel_req_v01, aid_len))};
inline constexpr Field uim_open_fci[] = {number("FCI", 1, 4, NAMES_AT(uim_open_logical_channel_req_v01, fci))};
inline constexpr Field uim_channel_aid[] = {bytes("AID", 1, NAMES_AT(uim_logical_channel_req_v01, aid), QMI_UIM_AID_MAX, NAMES_AT(uim_logical_channel_req_v01, aid_len))};
inline constexpr Field uim_close_channel[] = {number("channel", 1, 1, NAMES_AT(uim_logical_channel_req_v01, channel))};
inline constexpr Field uim_channel_fci[] = {number("FCI", 1, 4, NAMES_AT(uim_logical_channel_req_v01, fci))};
inline constexpr Field uim_terminate[] = {number("terminate", 1, 1, NAMES_AT(uim_logical_channel_req_v01, terminate))};
inline constexpr Field uim_channel[] = {number("channel", 1, 1, NAMES_AT(uim_logical_channel_resp_v01, channel))};
inline constexpr Field uim_card_result[] = {
    number("SW1", 1, 1, NAMES_AT(uim_logical_channel_resp_v01, card_result)),
    number("SW2", 1, 1, NAMES_AT(uim_logical_channel_resp_v01, card_result) + 1),
};
inline constexpr Field uim_select[] = {bytes("select response", 1, NAMES_AT(uim_logical_channel_resp_v01, select), QMI_UIM_SELECT_MAX, NAMES_AT(uim_logical_channel_resp_v01, select_len))};
inline constexpr Field uim_further_select[] = {bytes("select response", 2, NAMES_AT(uim_logical_channel_resp_v01, further_select), QMI_UIM_APDU_MAX, NAMES_AT(uim_logical_channel_resp_v01, further_select_len))};
inline constexpr Field uim_apdu[] = {bytes("APDU", 2, NAMES_AT(uim_send_apdu_req_v01, apdu), QMI_UIM_APDU_MAX, NAMES_AT(uim_send_apdu_req_v01, apdu_len))};
inline constexpr Field uim_apdu_channel[] = {number("channel", 1, 1, NAMES_AT(uim_send_apdu_req_v01, channel))};
inline constexpr Field uim_procedure[] = {number("procedure bytes", 1, 4, NAMES_AT(uim_send_apdu_req_v01, procedure))};
inline constexpr Field uim_further[] = {number("further", 8, 8, NAMES_AT(uim_send_apdu_req_v01, further))};
inline constexpr Field uim_reply[] = {bytes("reply APDU", 2, NAMES_AT(uim_send_apdu_resp_v01, apdu), QMI_UIM_APDU_MAX, NAMES_AT(uim_send_apdu_resp_v01, apdu_len))};
inline constexpr Field uim_long_response[] = {
    number("total", 2, 2, NAMES_AT(uim_send_apdu_resp_v01, further) + NAMES_AT(uim_long_response_v01, total)),
    number("token", 4, 4, NAMES_AT(uim_send_apdu_resp_v01, further) + NAMES_AT(uim_long_response_v01, token)),
};

inline constexpr Tlv uim_slot_request[] = {{0x01, "slot", nowhere, uim_slot}};
inline constexpr Tlv uim_power_up_request[] = {
    {0x01, "slot", nowhere, uim_slot},
    {0x10, "ignore hot swap", NAMES_AT(uim_power_up_req_v01, ignore_hotswap_valid), uim_ignore_hotswap},
    {0x11, "card mode", NAMES_AT(uim_power_up_req_v01, card_mode_valid), uim_card_mode},
};
inline constexpr Tlv uim_card_status_request[] = {{0x10, "extended", NAMES_AT(uim_get_card_status_req_v01, extended_valid), uim_extended}};
inline constexpr Tlv uim_card_status_response[] = {
    {0x02, "response", nowhere, standard_response},
    {0x15, "card status", NAMES_AT(uim_get_card_status_resp_v01, extended_valid), uim_indexes, uim_cards},
};
inline constexpr Tlv uim_eid_response[] = {
    {0x02, "response", nowhere, standard_response},
    {0x10, "EID", NAMES_AT(uim_get_eid_resp_v01, eid_valid), uim_eid},
};
inline constexpr Tlv uim_open_request[] = {
    {0x01, "slot", nowhere, uim_slot},
    {0x10, "AID", NAMES_AT(uim_open_logical_channel_req_v01, aid_valid), uim_open_aid},
    {0x11, "FCI", NAMES_AT(uim_open_logical_channel_req_v01, fci_valid), uim_open_fci},
};
inline constexpr Tlv uim_channel_request[] = {
    {0x01, "slot", nowhere, uim_slot},
    {0x10, "AID", NAMES_AT(uim_logical_channel_req_v01, aid_valid), uim_channel_aid},
    {0x11, "channel", NAMES_AT(uim_logical_channel_req_v01, channel_valid), uim_close_channel},
    {0x12, "FCI", NAMES_AT(uim_logical_channel_req_v01, fci_valid), uim_channel_fci},
    {0x13, "terminate", NAMES_AT(uim_logical_channel_req_v01, terminate_valid), uim_terminate},
};
inline constexpr Tlv uim_channel_response[] = {
    {0x02, "response", nowhere, standard_response},
    {0x10, "channel", NAMES_AT(uim_logical_channel_resp_v01, channel_valid), uim_channel},
    {0x11, "card result", NAMES_AT(uim_logical_channel_resp_v01, card_result_valid), uim_card_result},
    {0x12, "select response", NAMES_AT(uim_logical_channel_resp_v01, select_valid), uim_select},
    {0x13, "further select response", NAMES_AT(uim_logical_channel_resp_v01, further_select_valid), uim_further_select},
};
inline constexpr Tlv uim_apdu_request[] = {
    {0x01, "slot", nowhere, uim_slot},
    {0x02, "APDU", nowhere, uim_apdu},
    {0x10, "channel", NAMES_AT(uim_send_apdu_req_v01, channel_valid), uim_apdu_channel},
    {0x11, "procedure bytes", NAMES_AT(uim_send_apdu_req_v01, procedure_valid), uim_procedure},
    {0x12, "further", NAMES_AT(uim_send_apdu_req_v01, further_valid), uim_further},
};
inline constexpr Tlv uim_apdu_response[] = {
    {0x02, "response", nowhere, standard_response},
    {0x10, "reply APDU", NAMES_AT(uim_send_apdu_resp_v01, apdu_valid), uim_reply},
    {0x11, "long response", NAMES_AT(uim_send_apdu_resp_v01, further_valid), uim_long_response},
};

inline constexpr Message uim_messages[] = {
    {QMI_UIM_GET_CARD_STATUS, "card status", uim_card_status_request, uim_card_status_response, {}},
    {QMI_UIM_POWER_DOWN, "power down", uim_slot_request, plain_response, {}},
    {QMI_UIM_POWER_UP, "power up", uim_power_up_request, plain_response, {}},
    {QMI_UIM_SEND_APDU, "send APDU", uim_apdu_request, uim_apdu_response, {}},
    {QMI_UIM_LOGICAL_CHANNEL, "logical channel", uim_channel_request, uim_channel_response, {}},
    {QMI_UIM_OPEN_LOGICAL_CHANNEL, "open logical channel", uim_open_request, uim_channel_response, {}},
    {QMI_UIM_GET_EID, "EID", uim_slot_request, uim_eid_response, {}},
};

/* SAR */

inline constexpr Field sar_state[] = {number("state", 4, 4, NAMES_AT(sar_rf_get_state_resp_v01, state))};
inline constexpr Tlv sar_state_response[] = {
    {0x02, "response", nowhere, standard_response},
    {0x10, "state", NAMES_AT(sar_rf_get_state_resp_v01, state_valid), sar_state},
};
inline constexpr Message sar_messages[] = {{QMI_SAR_RF_GET_STATE, "RF state", {}, sar_state_response, {}}};

/* NAS */

constexpr size_t nas_choice_at(size_t choice) { return choice * sizeof(nas_indication_choice_v01); }
inline constexpr Field nas_system_selection[] = {number("enable", 1, 1, nas_choice_at(0) + 1)};
inline constexpr Field nas_ddtm[] = {number("enable", 1, 1, nas_choice_at(1) + 1)};
inline constexpr Field nas_serving_system[] = {number("enable", 1, 1, nas_choice_at(QMI_NAS_CHOICE_SERVING_SYSTEM) + 1)};
inline constexpr Field nas_subscription[] = {number("subscription", 1, 4, NAMES_AT(nas_bind_subscription_req_v01, subscription))};
inline constexpr Field nas_registration[] = {number("registration", 1, 1, NAMES_AT(nas_serving_system_ind_v01, registration_state))};
inline constexpr Tlv nas_register_request[] = {
    {0x10, "system selection", static_cast<uint16_t>(nas_choice_at(0)), nas_system_selection},
    {0x12, "DDTM", static_cast<uint16_t>(nas_choice_at(1)), nas_ddtm},
    {0x13, "serving system", static_cast<uint16_t>(nas_choice_at(QMI_NAS_CHOICE_SERVING_SYSTEM)), nas_serving_system},
};
inline constexpr Tlv nas_bind_request[] = {{0x01, "subscription", nowhere, nas_subscription}};
inline constexpr Tlv nas_serving_system_indication[] = {{0x01, "serving system", nowhere, nas_registration}};
inline constexpr Message nas_messages[] = {
    {QMI_NAS_INDICATION_REGISTER, "indication register", nas_register_request, plain_response, {}},
    {QMI_NAS_SERVING_SYSTEM_IND, "serving system", {}, {}, nas_serving_system_indication},
    {QMI_NAS_BIND_SUBSCRIPTION, "bind subscription", nas_bind_request, plain_response, {}},
};

/* vs */

inline constexpr Number statistics_items[] = {
    {6, "5G SCC1 RSRP"}, {7, "5G SCC2 RSRP"}, {82, "4G PCC RSSI"}, {94, "5G PCC RSSI"}, {100, "antennas"},
    {103, "4G SCC1 RSSI"}, {104, "4G SCC2 RSSI"}, {105, "4G SCC3 RSSI"}, {106, "4G SCC4 RSSI"},
    {107, "4G SCC5 RSSI"}, {108, "4G SCC6 RSSI"}, {110, "WCDMA RSSI"}, {111, "GSM RSSI"}, {112, "5G PCC SNR"},
    {113, "5G antenna switch"}, {135, "5G PCC RSRP"},
};
inline constexpr Field vs_feature[] = {number("feature", 4, 4, NAMES_AT(vs_set_feature_req_v01, feature))};
inline constexpr Field vs_a[] = {number("a", 1, 1, NAMES_AT(vs_set_feature_req_v01, a))};
inline constexpr Field vs_b[] = {number("b", 1, 1, NAMES_AT(vs_set_feature_req_v01, b))};
inline constexpr Field vs_c[] = {number("c", 1, 1, NAMES_AT(vs_set_feature_req_v01, c))};
inline constexpr Field vs_sub[] = {number("subscription", 2, 2, NAMES_AT(vs_get_stats_req_v01, sub))};
inline constexpr Field vs_number[] = {number("number", 2, 2, NAMES_AT(vs_get_stats_req_v01, number))};
inline constexpr Field vs_id[] = {number("id", 4, 4, 0, statistics_items)};
inline constexpr Field vs_entry[] = {
    number("subscription", 4, 4, NAMES_AT(vs_stats_entry_v01, sub)),
    number("id", 4, 4, NAMES_AT(vs_stats_entry_v01, id), statistics_items),
    bytes("data", 2, NAMES_AT(vs_stats_entry_v01, data), QMI_VS_MAX_DATA, NAMES_AT(vs_stats_entry_v01, data_len)),
};
inline constexpr size_t vs_entry_data = 2; /* the item's record, by the id before it */
inline constexpr Field vs_ind_entry[] = {
    number("value", 4, 4, NAMES_AT(vs_ind_entry_v01, value)),
    bytes("data", 2, NAMES_AT(vs_ind_entry_v01, data), QMI_VS_MAX_DATA, NAMES_AT(vs_ind_entry_v01, data_len)),
    number("first", 2, 2, NAMES_AT(vs_ind_entry_v01, first)),
    number("second", 2, 2, NAMES_AT(vs_ind_entry_v01, second)),
};
inline constexpr Field vs_value[] = {number("value", 4, 4, 0)};
inline constexpr Field vs_flag_a[] = {number("a", 1, 1, NAMES_AT(vs_ind_0004_v01, flag_a))};
inline constexpr Field vs_flag_b[] = {number("b", 1, 1, NAMES_AT(vs_ind_0004_v01, flag_b))};
inline constexpr Field vs_extra[] = {number("extra", 4, 4, NAMES_AT(vs_ind_0203_v01, extra))};
inline constexpr Field vs_0204_bytes[] = {bytes("bytes", 1, NAMES_AT(vs_ind_0204_v01, bytes), QMI_VS_MAX_BYTES, NAMES_AT(vs_ind_0204_v01, bytes_len))};
inline constexpr Field vs_0204_first[] = {number("first", 2, 2, NAMES_AT(vs_ind_0204_v01, first))};
inline constexpr Field vs_0204_second[] = {number("second", 2, 2, NAMES_AT(vs_ind_0204_v01, second))};
inline constexpr Field vs_0601_value[] = {number("value", 1, 1, 0)};

inline constexpr Tlv vs_feature_request[] = {
    {0x01, "feature", nowhere, vs_feature}, {0x02, "a", nowhere, vs_a},
    {0x03, "b", nowhere, vs_b}, {0x04, "c", nowhere, vs_c},
};
inline constexpr Tlv vs_stats_request[] = {
    {0x01, "subscription", nowhere, vs_sub},
    {0x02, "number", nowhere, vs_number},
    {0x03, "ids", nowhere, {}, {"id", 1, NAMES_AT(vs_get_stats_req_v01, ids_len), NAMES_AT(vs_get_stats_req_v01, ids), 4, QMI_VS_MAX_IDS, vs_id}},
};
inline constexpr Tlv vs_stats_response[] = {
    {0x02, "response", nowhere, standard_response},
    {0x10, "entries", NAMES_AT(vs_get_stats_resp_v01, entries_valid), {}, {"entry", 1, NAMES_AT(vs_get_stats_resp_v01, entries_len), NAMES_AT(vs_get_stats_resp_v01, entries), sizeof(vs_stats_entry_v01), QMI_VS_MAX_ENTRIES, vs_entry}},
};
inline constexpr Tlv vs_0004[] = {{0x01, "value", nowhere, vs_value}, {0x02, "a", nowhere, vs_flag_a}, {0x03, "b", nowhere, vs_flag_b}};
inline constexpr Tlv vs_0203[] = {
    {0x01, "value", nowhere, vs_value},
    {0x02, "first", nowhere, {}, {"entry", 1, NAMES_AT(vs_ind_0203_v01, first_len), NAMES_AT(vs_ind_0203_v01, first), sizeof(vs_ind_entry_v01), QMI_VS_MAX_ENTRIES, vs_ind_entry}},
    {0x03, "second", nowhere, {}, {"entry", 1, NAMES_AT(vs_ind_0203_v01, second_len), NAMES_AT(vs_ind_0203_v01, second), sizeof(vs_ind_entry_v01), QMI_VS_MAX_SECOND_ENTRIES, vs_ind_entry}},
    {0x10, "extra", NAMES_AT(vs_ind_0203_v01, extra_valid), vs_extra},
};
inline constexpr Tlv vs_0204[] = {
    {0x01, "value", nowhere, vs_value}, {0x02, "bytes", nowhere, vs_0204_bytes},
    {0x03, "first", nowhere, vs_0204_first}, {0x04, "second", nowhere, vs_0204_second},
};
inline constexpr Tlv vs_0601[] = {{0x01, "value", nowhere, vs_0601_value}};

inline constexpr Message vs_messages[] = {
    {QMI_VS_SET_FEATURE, "set feature", vs_feature_request, plain_response, {}},
    {QMI_VS_IND_0004, "indication 0x0004", {}, {}, vs_0004},
    {QMI_VS_IND_0203, "indication 0x0203", {}, {}, vs_0203},
    {QMI_VS_IND_0204, "indication 0x0204", {}, {}, vs_0204},
    {QMI_VS_GET_STATS, "statistics", vs_stats_request, vs_stats_response, {}},
    {QMI_VS_IND_0601, "indication 0x0601", {}, {}, vs_0601},
};

/* The vendor-extended service. Its TLV 0x10 holds a record, see below. */

inline constexpr uint16_t vendor_service = 0xFFE4;
inline constexpr uint16_t vendor_data_size = 512;
inline constexpr uint16_t vendor_record_message = 2;

inline constexpr Field vendor_id[] = {number("id", 4, 4, 0)};
inline constexpr Field vendor_length[] = {number("length", 4, 4, 4)};
/* Without a count: as many bytes as the TLV has. */
inline constexpr Field vendor_data[] = {{"data", 0, 0, 9, vendor_data_size, 4}};
inline constexpr Tlv vendor_record[] = {
    {0x01, "id", nowhere, vendor_id},
    {0x02, "length", nowhere, vendor_length},
    {0x10, "data", 8, vendor_data},
};
inline constexpr Tlv vendor_pair[] = {{0x01, "first", nowhere, vendor_id}, {0x02, "second", nowhere, vendor_length}};
inline constexpr Message vendor_messages[] = {
    {0x02, "record", vendor_record, vendor_record, {}},
    {0x03, "record", vendor_record, vendor_record, vendor_record},
    {0x04, "request 0x04", vendor_record, vendor_pair, {}},
    {0x05, "indication 0x05", {}, {}, vendor_pair},
    {0x06, "indication 0x06", {}, {}, vendor_pair},
    {0x07, "indication 0x07", {}, {}, vendor_pair},
    {0x08, "indication 0x08", {}, {}, vendor_pair},
};

/* The statistics service has no public number; this is the simulated phone's. */
inline constexpr Service services[] = {
    {"nas", 3, "network access", nas_messages},
    {"uim", QMI_UIM_SERVICE, "SIM cards", uim_messages},
    {"sar", QMI_SAR_SERVICE, "specific absorption rate", sar_messages},
    {"vs", 0xE4, "statistics", vs_messages},
    {"vendor", vendor_service, "vendor-extended", vendor_messages},
};

/* Results of the client framework's calls. */
inline constexpr Number transport_results[] = {
    {QMI_NO_ERR, "ok"}, {QMI_INTERNAL_ERR, "internal"}, {QMI_SERVICE_ERR, "service gone"},
    {QMI_TIMEOUT_ERR, "time-out"}, {QMI_EXTENDED_ERR, "extended"}, {QMI_PORT_NOT_OPEN_ERR, "port not open"},
    {QMI_MEMCOPY_ERROR, "memory copy"}, {QMI_INVALID_TXN, "invalid transaction"},
    {QMI_CLIENT_ALLOC_FAILURE, "allocation"}, {QMI_CLIENT_TRANSPORT_ERR, "transport"},
    {QMI_CLIENT_PARAM_ERR, "parameter"}, {QMI_CLIENT_INVALID_CLIENT, "invalid client"},
    {QMI_CLIENT_FW_NOT_UP, "framework not up"}, {QMI_CLIENT_INVALID_SIG, "invalid signal"},
    {QMI_XPORT_BUSY_ERR, "busy"},
    /* and of its decoder */
    {-40, "message ends early"}, {-41, "array too long"}, {-42, "unknown message"}, {-44, "TLV twice"},
    {-45, "wrong length"}, {-46, "TLV missing"}, {-49, "unknown TLV"}, {-50, "text too long"},
};

/* ---- the vendor service's records (bytes of its data) ---- */

enum : uint8_t { vendor_kind_nvefs = 2, vendor_kind_common = 4 };
inline constexpr Number vendor_kinds[] = {{vendor_kind_nvefs, "NV and EFS"}, {vendor_kind_common, "common"}};

enum : uint8_t { nv_read = 1, nv_write, nv_delete, efs_read, efs_write, efs_delete };
inline constexpr Number nvefs_operations[] = {
    {nv_read, "NV read"}, {nv_write, "NV write"}, {nv_delete, "NV delete"},
    {efs_read, "EFS read"}, {efs_write, "EFS write"}, {efs_delete, "EFS delete"},
};

/* Where a record's fields lie; a data field reaches as far as its length field tells. */
namespace nvefs_request {
enum : size_t { operation = 0, subscription = 1, item = 2, path_length = 4, path = 5, path_most = 71, whole = 76, chunk = 80, offset = 84, data = 88 };
}
namespace nvefs_response {
enum : size_t { whole = 4, chunk = 8, result = 16, data = 20 };
}
/* Common records: kind u32, then zero in a request and the result in a response. */
namespace common_record {
enum : size_t { kind = 0, result = 4, data = 8, type = 8, length = 12, payload = 16 };
}

enum : uint32_t { record_typed = 2, record_statistics = 20, record_log_codes = 27 };
inline constexpr Number common_kinds[] = {
    {0, "GPIO test"}, {1, "transmit antenna"}, {record_typed, "typed"},
    {record_statistics, "statistics debug information"}, {record_log_codes, "diag logs not supported"},
};

enum : uint32_t { type_restart = 31, type_card_status = 39, type_card_detect = 55, type_card_type = 56, type_switch_slot = 84, type_full_dump = 99 };
inline constexpr Number typed_commands[] = {
    {type_restart, "restart the modem"}, {35, "NV sync"}, {type_card_status, "card status"},
    {type_card_detect, "card-detect status"}, {type_card_type, "card type"}, {57, "force card detect"},
    {80, "hot-swap test"}, {type_switch_slot, "switch slot 2"}, {type_full_dump, "full dump"},
};

/* ---- DIAG: the first byte of a packet ---- */

inline constexpr uint8_t diag_bad_command = 0x13;
inline constexpr uint8_t diag_refusals[] = {diag_bad_command, 0x14, 0x15, 0x18};
inline constexpr Number diag_commands[] = {
    {0x00, "version"}, {0x0C, "status"}, {diag_bad_command, "bad command"}, {0x14, "bad parameters"},
    {0x15, "bad length"}, {0x18, "bad mode"}, {0x26, "NV read"}, {0x27, "NV write"}, {0x29, "mode change"},
    {0x4B, "subsystem"}, {0x60, "event report"}, {0x73, "log configuration"}, {0x7B, "loopback"},
    {0x7C, "extended build id"}, {0x7D, "message configuration"}, {0x80, "subsystem, delayed"},
};

/* ---- APDUs ---- */

inline constexpr Number apdu_instructions[] = {
    {0x20, "VERIFY"}, {0x70, "MANAGE CHANNEL"}, {0x88, "AUTHENTICATE"}, {0xA4, "SELECT"},
    {0xB0, "READ BINARY"}, {0xB2, "READ RECORD"}, {0xC0, "GET RESPONSE"}, {0xCA, "GET DATA"},
    {0xD6, "UPDATE BINARY"}, {0xDC, "UPDATE RECORD"}, {0xE2, "STORE DATA"}, {0xF2, "STATUS"},
};
inline constexpr Number status_words[] = {
    {0x9000, "ok"}, {0x6700, "wrong length"}, {0x6982, "security status"}, {0x6985, "conditions of use"},
    {0x6A80, "wrong data"}, {0x6A82, "not found"}, {0x6A86, "wrong parameters"}, {0x6A88, "data not found"},
    {0x6D00, "wrong instruction"}, {0x6E00, "wrong class"},
};
// clang-format on

#undef NAMES_AT

/* The name of a value; null when it has none. */
constexpr const char* name_of(std::span<const Number> rows, int64_t value) {
    for (const Number& row : rows)
        if (row.value == value)
            return row.name;
    return nullptr;
}

/* Whether a packet from the phone that begins with this byte says no. */
constexpr bool diag_refuses(uint8_t command) {
    for (const uint8_t refusal : diag_refusals)
        if (refusal == command)
            return true;
    return false;
}

constexpr const Service* service_of(int64_t id) {
    for (const Service& row : services)
        if (row.id == id)
            return &row;
    return nullptr;
}

constexpr const Message* message_of(const Service& service, int64_t id) {
    for (const Message& row : service.messages)
        if (row.id == id)
            return &row;
    return nullptr;
}

} // namespace names
