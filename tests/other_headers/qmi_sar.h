// SPDX-License-Identifier: Apache-2.0
/* Records of SAR as another phone's header has them. */
#ifndef OTHER_QMI_SAR_H
#define OTHER_QMI_SAR_H
#include "qmi_common.h"
#include <stdint.h>
#define QMI_SAR_IDL_MINOR 16
#define QMI_SAR_RF_GET_STATE 0x0002
typedef struct {
    qmi_response_type_v01 resp;
    uint8_t other_valid, state_valid;
    uint32_t other, state;
} sar_rf_get_state_resp_v01;
#endif
