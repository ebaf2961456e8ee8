// SPDX-License-Identifier: Apache-2.0
/* libqmi_common_so as another phone's header has it. */
#ifndef OTHER_QMI_COMMON_H
#define OTHER_QMI_COMMON_H
#include "qmi_idl.h"
#include <stdint.h>
typedef struct {
    uint32_t result, error;
} qmi_response_type_v01;
#ifdef __cplusplus
extern "C" {
#endif
extern const struct qmi_idl_service_object nas_qmi_idl_service_object_v01;
extern const struct qmi_idl_service_object uim_qmi_idl_service_object_v01;
extern const struct qmi_idl_service_object sar_qmi_idl_service_object_v01;
extern const struct qmi_idl_service_object vs_qmi_idl_service_object_v01;
#ifdef __cplusplus
}
#endif
#endif
