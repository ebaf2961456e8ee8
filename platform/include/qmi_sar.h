// SPDX-License-Identifier: Apache-2.0
/* Records of the SAR service (QMI service 17) in memory. Layouts that are not public are this
 * project's assumption. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "qmi_common.h"

enum {
    QMI_SAR_SERVICE = 17,
    QMI_SAR_IDL_MINOR = 14,

    QMI_SAR_RF_GET_STATE = 0x02, /* the request holds nothing */
};

typedef struct {
    qmi_response_type_v01 resp;
    uint8_t state_valid;
    uint32_t state; /* index of the back-off table in force (DSI) */
    uint8_t reserved[24];
} sar_rf_get_state_resp_v01;

#ifdef __cplusplus
static_assert(sizeof(sar_rf_get_state_resp_v01) == 40);
static_assert(offsetof(sar_rf_get_state_resp_v01, state_valid) == 8);
static_assert(offsetof(sar_rf_get_state_resp_v01, state) == 12);
#endif
