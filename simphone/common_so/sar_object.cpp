// SPDX-License-Identifier: Apache-2.0
/* Service object of the SAR service. */
#include "qmi_idl_layout.h"
#include "qmi_sar.h"

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

/* One TLV a row. */
constexpr uint8_t rf_get_state_resp[] = {
    0x02, QMI_IDL_AGGREGATE, offsetof(sar_rf_get_state_resp_v01, resp), type_response, 0,
    QMI_IDL_TLV_LAST | QMI_IDL_TLV_OPTIONAL | 4, 0x10,
        QMI_IDL_4_BYTE, offsetof(sar_rf_get_state_resp_v01, state),
};
// clang-format on

enum : uint16_t { msg_nothing, msg_rf_get_state_resp };

constexpr qmi_idl_message_table_entry messages[] = {
    {0, nullptr},
    {sizeof(sar_rf_get_state_resp_v01), rf_get_state_resp},
};

/* Message id, message, most bytes on the wire. */
constexpr qmi_idl_service_message_table_entry requests[] = {
    {QMI_SAR_RF_GET_STATE, msg_nothing, 0},
};

constexpr qmi_idl_service_message_table_entry responses[] = {
    {QMI_SAR_RF_GET_STATE, msg_rf_get_state_resp, 14},
};

constexpr qmi_idl::Tables tables(types, messages);

} // namespace

constinit const struct qmi_idl_service_object sar_qmi_idl_service_object_v01 =
    tables.service({QMI_SAR_SERVICE, QMI_SAR_IDL_MINOR, 512}, requests, responses, {});
