// SPDX-License-Identifier: Apache-2.0
/* Accessors of the platform's QMI service objects. Each returns its service's object for exactly
 * the version triple (1, minor, 6), the IDL that the records in platform/include belong to, and
 * null for any other. */
#pragma once

#include <cstdint>

#include "qmi_services.h"

enum {
    ORVIK_IDL_MAJOR = QMI_IDL_MAJOR,
    ORVIK_VS_IDL_MINOR = QMI_VS_IDL_MINOR,
    ORVIK_SAR_IDL_MINOR = QMI_SAR_IDL_MINOR,
    ORVIK_NAS_IDL_MINOR = QMI_NAS_IDL_MINOR,
    ORVIK_UIM_IDL_MINOR = QMI_UIM_IDL_MINOR,
};

using service_object_accessor = qmi_idl_service_object_type(int32_t idl_maj_version,
                                                            int32_t idl_min_version,
                                                            int32_t library_version);

service_object_accessor vs_get_service_object_internal_v01;
service_object_accessor sar_get_service_object_internal_v01;
service_object_accessor nas_get_service_object_internal_v01;
service_object_accessor uim_get_service_object_internal_v01;
