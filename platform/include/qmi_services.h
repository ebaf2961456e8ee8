// SPDX-License-Identifier: Apache-2.0
/* What kvt uses of the modem's QMI services: one row per service object of the platform, and one
 * per message, with the size of the record that kvt is compiled with and the most bytes that the
 * message takes on the wire. A phone whose objects say otherwise has records of another layout. */
#pragma once

#include "qmi_common.h"
#include "qmi_nas.h"
#include "qmi_sar.h"
#include "qmi_uim.h"
#include "qmi_vs.h"

/* The maker's own service. Its object is data of kvt's own, not of the platform. */
enum { QMI_VENDOR_SERVICE = 0xFFE4, QMI_VENDOR_IDL_MINOR = 1 };

/* Every service's major version. */
enum { QMI_IDL_MAJOR = 1 };

#ifdef __cplusplus
namespace qmi {

struct UsedService {
    const char* name;
    const char* object; /* symbol of its service object */
    uint32_t idl_minor;
};

inline constexpr UsedService used_services[] = {
    {"uim", "uim_qmi_idl_service_object_v01", QMI_UIM_IDL_MINOR},
    {"sar", "sar_qmi_idl_service_object_v01", QMI_SAR_IDL_MINOR},
    {"nas", "nas_qmi_idl_service_object_v01", QMI_NAS_IDL_MINOR},
    {"vs", "vs_qmi_idl_service_object_v01", QMI_VS_IDL_MINOR},
};

struct UsedMessage {
    const char* service; /* name of a used service */
    const char* name;
    qmi_idl_type_of_message_type type;
    uint16_t id;
    uint32_t record_size;
    uint32_t most_bytes; /* of TLVs on the wire, without the QMI header */
};

// clang-format off
inline constexpr UsedMessage used_messages[] = {
    {"uim", "card status", QMI_IDL_REQUEST, QMI_UIM_GET_CARD_STATUS, sizeof(uim_get_card_status_req_v01), 4},
    {"uim", "card status", QMI_IDL_RESPONSE, QMI_UIM_GET_CARD_STATUS, sizeof(uim_get_card_status_resp_v01), 24},
    {"uim", "power down", QMI_IDL_REQUEST, QMI_UIM_POWER_DOWN, sizeof(uim_power_down_req_v01), 4},
    {"uim", "power down", QMI_IDL_RESPONSE, QMI_UIM_POWER_DOWN, sizeof(uim_plain_resp_v01), 7},
    {"uim", "power up", QMI_IDL_REQUEST, QMI_UIM_POWER_UP, sizeof(uim_power_up_req_v01), 12},
    {"uim", "power up", QMI_IDL_RESPONSE, QMI_UIM_POWER_UP, sizeof(uim_plain_resp_v01), 7},
    {"uim", "send APDU", QMI_IDL_REQUEST, QMI_UIM_SEND_APDU, sizeof(uim_send_apdu_req_v01), 1052},
    {"uim", "send APDU", QMI_IDL_RESPONSE, QMI_UIM_SEND_APDU, sizeof(uim_send_apdu_resp_v01), 1045},
    {"uim", "close logical channel", QMI_IDL_REQUEST, QMI_UIM_LOGICAL_CHANNEL, sizeof(uim_logical_channel_req_v01), 52},
    {"uim", "close logical channel", QMI_IDL_RESPONSE, QMI_UIM_LOGICAL_CHANNEL, sizeof(uim_logical_channel_resp_v01), 1304},
    {"uim", "open logical channel", QMI_IDL_REQUEST, QMI_UIM_OPEN_LOGICAL_CHANNEL, sizeof(uim_open_logical_channel_req_v01), 44},
    {"uim", "open logical channel", QMI_IDL_RESPONSE, QMI_UIM_OPEN_LOGICAL_CHANNEL, sizeof(uim_logical_channel_resp_v01), 1304},
    {"uim", "EID", QMI_IDL_REQUEST, QMI_UIM_GET_EID, sizeof(uim_get_eid_req_v01), 4},
    {"uim", "EID", QMI_IDL_RESPONSE, QMI_UIM_GET_EID, sizeof(uim_get_eid_resp_v01), 27},
    {"sar", "RF state", QMI_IDL_REQUEST, QMI_SAR_RF_GET_STATE, 0, 0},
    {"sar", "RF state", QMI_IDL_RESPONSE, QMI_SAR_RF_GET_STATE, sizeof(sar_rf_get_state_resp_v01), 14},
    {"nas", "indication register", QMI_IDL_REQUEST, QMI_NAS_INDICATION_REGISTER, sizeof(nas_indication_register_req_v01), 336},
    {"nas", "indication register", QMI_IDL_RESPONSE, QMI_NAS_INDICATION_REGISTER, sizeof(nas_response_v01), 7},
    {"nas", "bind subscription", QMI_IDL_REQUEST, QMI_NAS_BIND_SUBSCRIPTION, sizeof(nas_bind_subscription_req_v01), 4},
    {"nas", "bind subscription", QMI_IDL_RESPONSE, QMI_NAS_BIND_SUBSCRIPTION, sizeof(nas_response_v01), 7},
    {"vs", "set feature", QMI_IDL_REQUEST, QMI_VS_SET_FEATURE, sizeof(vs_set_feature_req_v01), 19},
    {"vs", "set feature", QMI_IDL_RESPONSE, QMI_VS_SET_FEATURE, sizeof(vs_set_feature_resp_v01), 7},
    {"vs", "get statistics", QMI_IDL_REQUEST, QMI_VS_GET_STATS, sizeof(vs_get_stats_req_v01), 54},
    {"vs", "get statistics", QMI_IDL_RESPONSE, QMI_VS_GET_STATS, sizeof(vs_get_stats_resp_v01), 7111},
    {"vs", "event", QMI_IDL_INDICATION, QMI_VS_IND_0004, sizeof(vs_ind_0004_v01), 15},
    {"vs", "event", QMI_IDL_INDICATION, QMI_VS_IND_0203, sizeof(vs_ind_0203_v01), 10672},
    {"vs", "event", QMI_IDL_INDICATION, QMI_VS_IND_0204, sizeof(vs_ind_0204_v01), 121},
    {"vs", "event", QMI_IDL_INDICATION, QMI_VS_IND_0601, sizeof(vs_ind_0601_v01), 4},
};
// clang-format on

} // namespace qmi
#endif
