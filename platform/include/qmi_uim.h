// SPDX-License-Identifier: Apache-2.0
/* Records of the UIM service (QMI service 11) in memory. Layouts that are not public are this
 * project's assumption. A ..._valid byte other than 0 says that the optional field after it is
 * present; an array's ..._len counts its elements. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "qmi_common.h"

enum {
    QMI_UIM_SERVICE = 11,
    QMI_UIM_IDL_MINOR = 102,

    QMI_UIM_GET_CARD_STATUS = 0x2F,
    QMI_UIM_POWER_DOWN = 0x30,
    QMI_UIM_POWER_UP = 0x31,
    QMI_UIM_SEND_APDU = 0x3B,
    QMI_UIM_LOGICAL_CHANNEL = 0x3F, /* opens or closes */
    QMI_UIM_OPEN_LOGICAL_CHANNEL = 0x42,
    QMI_UIM_GET_EID = 0x65,
};

enum {
    QMI_UIM_AID_MAX = 32,
    QMI_UIM_APDU_MAX = 1024,
    QMI_UIM_SELECT_MAX = 255,
    QMI_UIM_EID_SIZE = 16,
    QMI_UIM_CARDS_MAX = 5,
};

enum { UIM_CARD_ABSENT = 0, UIM_CARD_PRESENT = 1, UIM_CARD_ERROR = 2 };

typedef struct {
    uint32_t slot; /* 1, 2 */
} uim_power_down_req_v01;

typedef struct {
    uint32_t slot;
    uint8_t ignore_hotswap_valid;
    uint8_t ignore_hotswap; /* power up whatever the card-detect line says */
    uint8_t card_mode_valid;
    uint32_t card_mode;
} uim_power_up_req_v01;

/* Response of the messages that answer nothing else. */
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
    uint8_t eid[QMI_UIM_EID_SIZE];
} uim_get_eid_resp_v01;

typedef struct {
    uint8_t extended_valid;
    uint8_t extended; /* 1: the extended card status is wanted */
} uim_get_card_status_req_v01;

typedef struct {
    uint32_t card_state; /* UIM_CARD_... */
    uint8_t reserved[1856];
} uim_card_v01;

typedef struct {
    uint16_t gw_primary; /* indexes of the applications in use */
    uint16_t c1x_primary;
    uint16_t gw_secondary;
    uint16_t c1x_secondary;
    uint32_t cards_len;
    uim_card_v01 cards[QMI_UIM_CARDS_MAX];
} uim_extended_card_status_v01;

typedef struct {
    qmi_response_type_v01 resp;
    uint8_t reserved[1292];
    uint8_t extended_valid;
    uim_extended_card_status_v01 extended;
} uim_get_card_status_resp_v01;

typedef struct {
    uint32_t slot;
    uint8_t aid_valid;
    uint32_t aid_len;
    uint8_t aid[QMI_UIM_AID_MAX];
    uint8_t fci_valid;
    uint32_t fci; /* which file control information the select response is to hold */
} uim_open_logical_channel_req_v01;

typedef struct {
    uint32_t slot;
    uint8_t aid_valid;
    uint32_t aid_len;
    uint8_t aid[QMI_UIM_AID_MAX];
    uint8_t channel_valid; /* closes this channel */
    uint8_t channel;
    uint8_t fci_valid;
    uint32_t fci;
    uint8_t terminate_valid;
    uint8_t terminate; /* terminate the application with the channel */
} uim_logical_channel_req_v01;

typedef struct {
    uint8_t sw1;
    uint8_t sw2;
} uim_card_result_v01;

/* Also the response of QMI_UIM_LOGICAL_CHANNEL. */
typedef struct {
    qmi_response_type_v01 resp;
    uint8_t channel_valid;
    uint8_t channel;
    uint8_t card_result_valid;
    uim_card_result_v01 card_result;
    uint8_t select_valid;
    uint32_t select_len;
    uint8_t select[QMI_UIM_SELECT_MAX];
    uint8_t further_select_valid;
    uint32_t further_select_len;
    uint8_t further_select[QMI_UIM_APDU_MAX];
} uim_logical_channel_resp_v01;

typedef struct {
    uint32_t slot;
    uint32_t apdu_len;
    uint8_t apdu[QMI_UIM_APDU_MAX];
    uint8_t channel_valid;
    uint8_t channel;
    uint8_t procedure_valid;
    uint32_t procedure; /* procedure bytes */
    uint8_t further_valid;
    uint64_t further;
} uim_send_apdu_req_v01;

typedef struct {
    uint16_t total;
    uint32_t token;
} uim_long_response_v01;

typedef struct {
    qmi_response_type_v01 resp;
    uint8_t apdu_valid;
    uint32_t apdu_len;
    uint8_t apdu[QMI_UIM_APDU_MAX];
    uint8_t further_valid; /* the response goes on in indications */
    uim_long_response_v01 further;
} uim_send_apdu_resp_v01;

#ifdef __cplusplus
static_assert(sizeof(uim_power_down_req_v01) == 4);
static_assert(sizeof(uim_plain_resp_v01) == 8);

static_assert(sizeof(uim_power_up_req_v01) == 12);
static_assert(offsetof(uim_power_up_req_v01, ignore_hotswap_valid) == 4);
static_assert(offsetof(uim_power_up_req_v01, ignore_hotswap) == 5);
static_assert(offsetof(uim_power_up_req_v01, card_mode_valid) == 6);
static_assert(offsetof(uim_power_up_req_v01, card_mode) == 8);

static_assert(sizeof(uim_get_eid_req_v01) == 4);
static_assert(sizeof(uim_get_eid_resp_v01) == 32);
static_assert(offsetof(uim_get_eid_resp_v01, eid_valid) == 8);
static_assert(offsetof(uim_get_eid_resp_v01, eid_len) == 12);
static_assert(offsetof(uim_get_eid_resp_v01, eid) == 16);

static_assert(sizeof(uim_get_card_status_req_v01) == 2);
static_assert(sizeof(uim_get_card_status_resp_v01) == 10616);
static_assert(sizeof(uim_card_v01) == 1860);
static_assert(offsetof(uim_get_card_status_resp_v01, extended_valid) == 1300);
static_assert(offsetof(uim_get_card_status_resp_v01, extended) == 1304);
static_assert(offsetof(uim_extended_card_status_v01, cards_len) == 1312 - 1304);
static_assert(offsetof(uim_extended_card_status_v01, cards) == 1316 - 1304);

static_assert(sizeof(uim_open_logical_channel_req_v01) == 52);
static_assert(offsetof(uim_open_logical_channel_req_v01, aid_valid) == 4);
static_assert(offsetof(uim_open_logical_channel_req_v01, aid_len) == 8);
static_assert(offsetof(uim_open_logical_channel_req_v01, aid) == 12);
static_assert(offsetof(uim_open_logical_channel_req_v01, fci_valid) == 44);
static_assert(offsetof(uim_open_logical_channel_req_v01, fci) == 48);

static_assert(sizeof(uim_logical_channel_req_v01) == 56);
static_assert(offsetof(uim_logical_channel_req_v01, aid_valid) == 4);
static_assert(offsetof(uim_logical_channel_req_v01, aid_len) == 8);
static_assert(offsetof(uim_logical_channel_req_v01, aid) == 12);
static_assert(offsetof(uim_logical_channel_req_v01, channel_valid) == 44);
static_assert(offsetof(uim_logical_channel_req_v01, channel) == 45);
static_assert(offsetof(uim_logical_channel_req_v01, fci_valid) == 46);
static_assert(offsetof(uim_logical_channel_req_v01, fci) == 48);
static_assert(offsetof(uim_logical_channel_req_v01, terminate_valid) == 52);
static_assert(offsetof(uim_logical_channel_req_v01, terminate) == 53);

static_assert(sizeof(uim_logical_channel_resp_v01) == 1304);
static_assert(offsetof(uim_logical_channel_resp_v01, channel_valid) == 8);
static_assert(offsetof(uim_logical_channel_resp_v01, channel) == 9);
static_assert(offsetof(uim_logical_channel_resp_v01, card_result_valid) == 10);
static_assert(offsetof(uim_logical_channel_resp_v01, card_result) == 11);
static_assert(offsetof(uim_logical_channel_resp_v01, select_valid) == 13);
static_assert(offsetof(uim_logical_channel_resp_v01, select_len) == 16);
static_assert(offsetof(uim_logical_channel_resp_v01, select) == 20);
static_assert(offsetof(uim_logical_channel_resp_v01, further_select_valid) == 275);
static_assert(offsetof(uim_logical_channel_resp_v01, further_select_len) == 276);
static_assert(offsetof(uim_logical_channel_resp_v01, further_select) == 280);

static_assert(sizeof(uim_send_apdu_req_v01) == 1056);
static_assert(offsetof(uim_send_apdu_req_v01, apdu_len) == 4);
static_assert(offsetof(uim_send_apdu_req_v01, apdu) == 8);
static_assert(offsetof(uim_send_apdu_req_v01, channel_valid) == 1032);
static_assert(offsetof(uim_send_apdu_req_v01, channel) == 1033);
static_assert(offsetof(uim_send_apdu_req_v01, procedure_valid) == 1034);
static_assert(offsetof(uim_send_apdu_req_v01, procedure) == 1036);
static_assert(offsetof(uim_send_apdu_req_v01, further_valid) == 1040);
static_assert(offsetof(uim_send_apdu_req_v01, further) == 1048);

static_assert(sizeof(uim_send_apdu_resp_v01) == 1052);
static_assert(offsetof(uim_send_apdu_resp_v01, apdu_valid) == 8);
static_assert(offsetof(uim_send_apdu_resp_v01, apdu_len) == 12);
static_assert(offsetof(uim_send_apdu_resp_v01, apdu) == 16);
static_assert(offsetof(uim_send_apdu_resp_v01, further_valid) == 1040);
static_assert(offsetof(uim_send_apdu_resp_v01, further) == 1044);
static_assert(offsetof(uim_long_response_v01, token) == 1048 - 1044);
#endif
