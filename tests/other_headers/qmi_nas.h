// SPDX-License-Identifier: Apache-2.0
/* Records of NAS as another phone's header has them: a later minor version, more choices. */
#ifndef OTHER_QMI_NAS_H
#define OTHER_QMI_NAS_H
#include "qmi_common.h"
#include <stdint.h>
#define QMI_NAS_IDL_MINOR 402
#define QMI_NAS_INDICATION_REGISTER 0x0003
#define QMI_NAS_BIND_SUBSCRIPTION 0x0045
#define QMI_NAS_CHOICE_SERVING_SYSTEM 2
typedef struct {
    uint8_t valid, enable;
} other_choice;
typedef struct {
    other_choice choices[90];
} nas_indication_register_req_v01;
typedef struct {
    qmi_response_type_v01 resp;
} nas_response_v01;
typedef struct {
    uint32_t subscription;
} nas_bind_subscription_req_v01;
#endif
