/* Accessors of the platform's QMI service objects. Each returns its service's object for exactly
 * the version triple (1, minor, 6), the IDL that the records in platform/include belong to, and
 * null for any other. Minors: vs 2, sar 14, nas 378, uim 102. */
#pragma once

#include <cstdint>

#include "qmi_idl.h"

enum {
    ORVIK_IDL_MAJOR = 1,
    ORVIK_VS_IDL_MINOR = 2,
    ORVIK_SAR_IDL_MINOR = 14,
    ORVIK_NAS_IDL_MINOR = 378,
    ORVIK_UIM_IDL_MINOR = 102,
};

using service_object_accessor = qmi_idl_service_object_type(int32_t idl_maj_version,
                                                            int32_t idl_min_version,
                                                            int32_t library_version);

service_object_accessor vs_get_service_object_internal_v01;
service_object_accessor sar_get_service_object_internal_v01;
service_object_accessor nas_get_service_object_internal_v01;
service_object_accessor uim_get_service_object_internal_v01;
