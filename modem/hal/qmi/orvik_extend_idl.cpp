// SPDX-License-Identifier: Apache-2.0
#include "orvik_extend_idl.h"

#include "qmi_idl_layout.h"

namespace {

/* The two bytes of an aggregate's type, all in table 0. */
enum : uint8_t { type_a, type_b, type_c };

constexpr uint8_t low(size_t value) { return static_cast<uint8_t>(value & 0xFF); }
constexpr uint8_t high(size_t value) { return static_cast<uint8_t>(value >> 8); }

/* ---- item types: one element a row ---- */

// clang-format off
constexpr uint8_t item_a[] = {
    QMI_IDL_8_BYTE, offsetof(orvik_extend_item_a, value),
    QMI_IDL_ARRAY | QMI_IDL_4_BYTE, offsetof(orvik_extend_item_a, values), 12,
    QMI_IDL_TYPE_END,
};

constexpr uint8_t item_b[] = {
    QMI_IDL_8_BYTE, offsetof(orvik_extend_item_b, value),
    QMI_IDL_ARRAY | QMI_IDL_4_BYTE, offsetof(orvik_extend_item_b, values), 4,
    QMI_IDL_TYPE_END,
};

constexpr uint8_t item_c[] = {
    QMI_IDL_ARRAY | QMI_IDL_VARIABLE | QMI_IDL_AGGREGATE, offsetof(orvik_extend_item_c, items), 5,
        offsetof(orvik_extend_item_c, items) - offsetof(orvik_extend_item_c, items_len), type_b, 0,
    QMI_IDL_TYPE_END,
};

constexpr qmi_idl_type_table_entry types[] = {
    {sizeof(orvik_extend_item_a), item_a},
    {sizeof(orvik_extend_item_b), item_b},
    {sizeof(orvik_extend_item_c), item_c},
};

/* ---- messages: one TLV a row ---- */

constexpr uint8_t common_record[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(orvik_extend_common_record, id),
    0x02, QMI_IDL_4_BYTE, offsetof(orvik_extend_common_record, data_len),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 1, 0x10, QMI_IDL_ARRAY | QMI_IDL_SIZE_16 | QMI_IDL_1_BYTE,
        offsetof(orvik_extend_common_record, data),
        low(ORVIK_EXTEND_DATA_SIZE), high(ORVIK_EXTEND_DATA_SIZE),
};

constexpr uint8_t request_04[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(orvik_extend_request_04, id),
    0x02, QMI_IDL_4_BYTE, offsetof(orvik_extend_request_04, data_len),
    QMI_IDL_TLV_OPTIONAL | 1, 0x10, QMI_IDL_ARRAY | QMI_IDL_SIZE_16 | QMI_IDL_1_BYTE,
        offsetof(orvik_extend_request_04, data),
        low(ORVIK_EXTEND_DATA_SIZE), high(ORVIK_EXTEND_DATA_SIZE),
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 1, 0x11, QMI_IDL_OFFSET_16 | QMI_IDL_1_BYTE,
        low(offsetof(orvik_extend_request_04, extra)), high(offsetof(orvik_extend_request_04, extra)),
};

constexpr uint8_t pair[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(orvik_extend_pair, first),
    QMI_IDL_TLV_LAST | 0x02, QMI_IDL_4_BYTE, offsetof(orvik_extend_pair, second),
};

constexpr uint8_t ind_05[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(orvik_extend_ind_05, first),
    0x02, QMI_IDL_4_BYTE, offsetof(orvik_extend_ind_05, second),
    QMI_IDL_TLV_LAST | 0x03, QMI_IDL_ARRAY | QMI_IDL_AGGREGATE,
        offsetof(orvik_extend_ind_05, items), 20, type_a, 0,
};

constexpr uint8_t ind_06[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(orvik_extend_ind_06, first),
    0x02, QMI_IDL_4_BYTE, offsetof(orvik_extend_ind_06, second),
    QMI_IDL_TLV_LAST | 0x03, QMI_IDL_ARRAY | QMI_IDL_AGGREGATE,
        offsetof(orvik_extend_ind_06, items), 10, type_c, 0,
};

constexpr uint8_t ind_08[] = {
    0x01, QMI_IDL_4_BYTE, offsetof(orvik_extend_ind_08, first),
    0x02, QMI_IDL_4_BYTE, offsetof(orvik_extend_ind_08, second),
    QMI_IDL_TLV_LAST | 0x03, QMI_IDL_AGGREGATE, offsetof(orvik_extend_ind_08, item), type_b, 0,
};
// clang-format on

enum : uint16_t { msg_common, msg_request_04, msg_pair, msg_ind_05, msg_ind_06, msg_ind_08 };

constexpr qmi_idl_message_table_entry messages[] = {
    {sizeof(orvik_extend_common_record), common_record},
    {sizeof(orvik_extend_request_04), request_04},
    {sizeof(orvik_extend_pair), pair},
    {sizeof(orvik_extend_ind_05), ind_05},
    {sizeof(orvik_extend_ind_06), ind_06},
    {sizeof(orvik_extend_ind_08), ind_08},
};

/* Message id, message, most bytes on the wire. */
constexpr qmi_idl_service_message_table_entry requests[] = {
    {ORVIK_EXTEND_REQUEST, msg_common, 529},
    {ORVIK_EXTEND_REQUEST_03, msg_common, 529},
    {ORVIK_EXTEND_REQUEST_04, msg_request_04, 533},
};

constexpr qmi_idl_service_message_table_entry responses[] = {
    {ORVIK_EXTEND_REQUEST, msg_common, 529},
    {ORVIK_EXTEND_REQUEST_03, msg_common, 529},
    {ORVIK_EXTEND_REQUEST_04, msg_pair, 14},
};

constexpr qmi_idl_service_message_table_entry indications[] = {
    {ORVIK_EXTEND_IND_COMMON, msg_common, 529},
    {ORVIK_EXTEND_IND_05, msg_ind_05, 1137},
    {ORVIK_EXTEND_IND_06, msg_ind_06, 1227},
    {ORVIK_EXTEND_IND_07, msg_pair, 14},
    /* The service states 34, although the TLVs add up to more, see below. */
    {ORVIK_EXTEND_IND_08, msg_ind_08, 34},
};

static_assert(qmi_idl::max_message_wire_len(types, ind_08) == 41);

constexpr qmi_idl::Tables tables(types, messages);

constinit const qmi_idl_service_object service_object =
    tables.service({ORVIK_EXTEND_SERVICE_ID, 1, ORVIK_EXTEND_MAX_MSG_LEN}, requests, responses,
                   indications, ORVIK_EXTEND_IND_08);

} // namespace

qmi_idl_service_object_type orvik_extend_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                         int32_t idl_min_version,
                                                                         int32_t library_version) {
    if (idl_maj_version != 1 || idl_min_version != 1 || library_version != QMI_IDL_LIBRARY_VERSION)
        return nullptr;
    return &service_object;
}
