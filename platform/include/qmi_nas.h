// SPDX-License-Identifier: Apache-2.0
/* Records of the NAS service (3, minor 378): the two requests that bind a client to a subscription
 * and choose its indications. Both are answered with the standard response alone. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "qmi_common.h"

enum {
    QMI_NAS_SERVICE = 3,
    QMI_NAS_IDL_MINOR = 378,

    QMI_NAS_INDICATION_REGISTER = 0x0003,
    QMI_NAS_SERVING_SYSTEM_IND = 0x0024,
    QMI_NAS_BIND_SUBSCRIPTION = 0x0045,
};

/* One choice of the indication register request. */
typedef struct {
    uint8_t valid;
    uint8_t enable;
} nas_indication_choice_v01;

/* On the wire: an optional TLV a choice, 0x10 system selection, 0x12 DDTM, 0x13 serving system and
 * so on upwards; the last byte does not cross. */
typedef struct {
    nas_indication_choice_v01 choices[84];
    uint8_t last;
} nas_indication_register_req_v01;

enum { QMI_NAS_CHOICE_SERVING_SYSTEM = 2 };

typedef struct {
    qmi_response_type_v01 resp;
} nas_response_v01;

typedef struct {
    uint32_t subscription; /* 0 first, 1 second; TLV 0x01, u8 on the wire */
} nas_bind_subscription_req_v01;

typedef struct {
    uint8_t registration_state; /* TLV 0x01 */
} nas_serving_system_ind_v01;

#ifdef __cplusplus
static_assert(sizeof(nas_indication_register_req_v01) == 169);
static_assert(offsetof(nas_indication_register_req_v01, choices) == 0);
static_assert(QMI_NAS_CHOICE_SERVING_SYSTEM * sizeof(nas_indication_choice_v01) == 4);
static_assert(sizeof(nas_response_v01) == 8);
static_assert(sizeof(nas_bind_subscription_req_v01) == 4);
static_assert(sizeof(nas_serving_system_ind_v01) == 1);
#endif
