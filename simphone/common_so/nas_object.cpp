// SPDX-License-Identifier: Apache-2.0
/* Service object of the NAS service. */
#include "qmi_idl_layout.h"
#include "qmi_nas.h"

#include <array>
#include <iterator>

namespace {

enum : uint8_t { type_response };

// clang-format off
constexpr uint8_t response_type[] = {
    QMI_IDL_2_BYTE_ENUM, offsetof(qmi_response_type_v01, result),
    QMI_IDL_2_BYTE_ENUM, offsetof(qmi_response_type_v01, error),
    QMI_IDL_TYPE_END,
};

constexpr qmi_idl_type_table_entry types[] = {
    {sizeof(qmi_response_type_v01), response_type},
};

/* ---- messages: one TLV a row ---- */

constexpr uint8_t response[] = {
    QMI_IDL_TLV_LAST | 0x02, QMI_IDL_AGGREGATE, offsetof(nas_response_v01, resp), type_response, 0,
};

constexpr uint8_t bind_subscription_req[] = {
    QMI_IDL_TLV_LAST | 0x01, QMI_IDL_1_BYTE_ENUM, offsetof(nas_bind_subscription_req_v01, subscription),
};

constexpr uint8_t serving_system_ind[] = {
    QMI_IDL_TLV_LAST | 0x01, QMI_IDL_1_BYTE, offsetof(nas_serving_system_ind_v01, registration_state),
};
// clang-format on

constexpr size_t choices = std::size(nas_indication_register_req_v01{}.choices);
constexpr size_t choice_row = 4; /* flags, type, element, offset */

/* One optional TLV a choice: 0x10, 0x12, 0x13, 0x14... 0x11 is not in use. */
constexpr std::array<uint8_t, choices * choice_row> indication_register_rows() {
    std::array<uint8_t, choices * choice_row> rows{};
    for (size_t i = 0; i < choices; ++i) {
        uint8_t* const row = &rows[i * choice_row];
        const bool last = i + 1 == choices;
        row[0] = static_cast<uint8_t>(QMI_IDL_TLV_OPTIONAL | (last ? QMI_IDL_TLV_LAST : 0) | 1);
        row[1] = static_cast<uint8_t>(i == 0 ? 0x10 : 0x11 + i);
        row[2] = QMI_IDL_1_BYTE;
        row[3] = static_cast<uint8_t>(i * sizeof(nas_indication_choice_v01) +
                                      offsetof(nas_indication_choice_v01, enable));
    }
    return rows;
}

constexpr std::array<uint8_t, choices* choice_row> indication_register_req =
    indication_register_rows();
static_assert(indication_register_req[QMI_NAS_CHOICE_SERVING_SYSTEM * choice_row + 1] == 0x13);

enum : uint16_t {
    msg_response,
    msg_bind_subscription_req,
    msg_indication_register_req,
    msg_serving_system_ind,
};

constexpr qmi_idl_message_table_entry messages[] = {
    {sizeof(nas_response_v01), response},
    {sizeof(nas_bind_subscription_req_v01), bind_subscription_req},
    {sizeof(nas_indication_register_req_v01), indication_register_req.data()},
    {sizeof(nas_serving_system_ind_v01), serving_system_ind},
};

/* Message id, message, most bytes on the wire. */
constexpr qmi_idl_service_message_table_entry requests[] = {
    {QMI_NAS_INDICATION_REGISTER, msg_indication_register_req, choices * 4},
    {QMI_NAS_BIND_SUBSCRIPTION, msg_bind_subscription_req, 4},
};

constexpr qmi_idl_service_message_table_entry responses[] = {
    {QMI_NAS_INDICATION_REGISTER, msg_response, 7},
    {QMI_NAS_BIND_SUBSCRIPTION, msg_response, 7},
};

constexpr qmi_idl_service_message_table_entry indications[] = {
    {QMI_NAS_SERVING_SYSTEM_IND, msg_serving_system_ind, 4},
};

constexpr qmi_idl::Tables tables(types, messages);

} // namespace

constinit const struct qmi_idl_service_object nas_qmi_idl_service_object_v01 =
    tables.service({QMI_NAS_SERVICE, QMI_NAS_IDL_MINOR, 512}, requests, responses, indications);
