// SPDX-License-Identifier: Apache-2.0
/* What the standard QMI services share (libqmi_common_so): the standard response and the four
 * service objects that kvt uses. The records lie in one header per service: qmi_nas.h, qmi_sar.h,
 * qmi_uim.h, qmi_vs.h. Where a layout is not public it is this project's assumption; a phone's own
 * header can replace ours. */
#pragma once

#include <stdint.h>

#include "qmi_idl.h"

/* Mandatory TLV 0x02 of every response of a standard service; two u16 on the wire. */
typedef struct {
    uint32_t result; /* 0 success, 1 failure */
    uint32_t error;
} qmi_response_type_v01;

#ifdef __cplusplus
static_assert(sizeof(qmi_response_type_v01) == 8);
extern "C" {
#endif

extern const struct qmi_idl_service_object
    nas_qmi_idl_service_object_v01; /* service 3, minor 378 */
extern const struct qmi_idl_service_object uim_qmi_idl_service_object_v01; /* 11, minor 102 */
extern const struct qmi_idl_service_object sar_qmi_idl_service_object_v01; /* 17, minor 14 */
extern const struct qmi_idl_service_object vs_qmi_idl_service_object_v01;  /* minor 2 */

#ifdef __cplusplus
}
#endif
