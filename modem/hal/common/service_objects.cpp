// SPDX-License-Identifier: Apache-2.0
#include "service_objects.h"

namespace {

qmi_idl_service_object_type fitting(const qmi_idl_service_object& object, int32_t wanted_minor,
                                    int32_t major, int32_t minor, int32_t library) {
    const bool fits =
        major == ORVIK_IDL_MAJOR && minor == wanted_minor && library == QMI_IDL_LIBRARY_VERSION;
    return fits ? &object : nullptr;
}

} // namespace

qmi_idl_service_object_type vs_get_service_object_internal_v01(int32_t major, int32_t minor,
                                                               int32_t library) {
    return fitting(vs_qmi_idl_service_object_v01, ORVIK_VS_IDL_MINOR, major, minor, library);
}

qmi_idl_service_object_type sar_get_service_object_internal_v01(int32_t major, int32_t minor,
                                                                int32_t library) {
    return fitting(sar_qmi_idl_service_object_v01, ORVIK_SAR_IDL_MINOR, major, minor, library);
}

qmi_idl_service_object_type nas_get_service_object_internal_v01(int32_t major, int32_t minor,
                                                                int32_t library) {
    return fitting(nas_qmi_idl_service_object_v01, ORVIK_NAS_IDL_MINOR, major, minor, library);
}

qmi_idl_service_object_type uim_get_service_object_internal_v01(int32_t major, int32_t minor,
                                                                int32_t library) {
    return fitting(uim_qmi_idl_service_object_v01, ORVIK_UIM_IDL_MINOR, major, minor, library);
}
