// SPDX-License-Identifier: Apache-2.0
/* Records of UIM as another phone's header has them: fields in another order, longer cards. */
#ifndef OTHER_QMI_UIM_H
#define OTHER_QMI_UIM_H
#include "qmi_common.h"
#include <stdint.h>
#define QMI_UIM_IDL_MINOR 120
#define QMI_UIM_GET_CARD_STATUS 0x002F
#define QMI_UIM_POWER_DOWN 0x0030
#define QMI_UIM_POWER_UP 0x0031
#define QMI_UIM_SEND_APDU 0x003B
#define QMI_UIM_LOGICAL_CHANNEL 0x003F
#define QMI_UIM_OPEN_LOGICAL_CHANNEL 0x0042
#define QMI_UIM_GET_EID 0x0065
#define QMI_UIM_CARDS_MAX 5
typedef struct {
    uint32_t slot;
} uim_power_down_req_v01;
typedef struct {
    uint32_t slot;
    uint8_t card_mode_valid;
    uint32_t card_mode;
    uint8_t ignore_hotswap_valid, ignore_hotswap;
} uim_power_up_req_v01;
typedef struct {
    qmi_response_type_v01 resp;
} uim_plain_resp_v01;
typedef struct {
    uint32_t slot;
} uim_get_eid_req_v01;
typedef struct {
    qmi_response_type_v01 resp;
    uint8_t eid_valid;
    uint32_t eid_len;
    uint8_t eid[20];
} uim_get_eid_resp_v01;
typedef struct {
    uint8_t other_valid, other, extended_valid, extended;
} uim_get_card_status_req_v01;
typedef struct {
    uint32_t card_state;
    uint8_t others[2000];
} other_card;
typedef struct {
    uint32_t cards_len;
    other_card cards[QMI_UIM_CARDS_MAX];
} other_card_status;
typedef struct {
    qmi_response_type_v01 resp;
    uint8_t extended_valid;
    other_card_status extended;
} uim_get_card_status_resp_v01;
typedef struct {
    uint32_t slot;
    uint8_t aid_valid;
    uint32_t aid_len;
    uint8_t aid[32];
    uint8_t fci_valid;
    uint32_t fci;
} uim_open_logical_channel_req_v01;
typedef struct {
    uint32_t slot;
    uint8_t aid_valid;
    uint32_t aid_len;
    uint8_t aid[32];
    uint8_t channel_valid, channel, terminate_valid, terminate;
} uim_logical_channel_req_v01;
typedef struct {
    qmi_response_type_v01 resp;
    uint8_t channel_valid, channel;
} uim_logical_channel_resp_v01;
typedef struct {
    uint32_t slot, apdu_len;
    uint8_t apdu[1024], channel_valid, channel, procedure_valid;
    uint32_t procedure;
} uim_send_apdu_req_v01;
typedef struct {
    qmi_response_type_v01 resp;
    uint8_t apdu_valid;
    uint32_t apdu_len;
    uint8_t apdu[1024];
} uim_send_apdu_resp_v01;
#endif
