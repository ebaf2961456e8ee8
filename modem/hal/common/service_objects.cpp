#include "service_objects.h"

namespace {

bool fits(int32_t major, int32_t minor, int32_t library, int32_t wanted_minor) {
    return major == ORVIK_IDL_MAJOR && minor == wanted_minor && library == QMI_IDL_LIBRARY_VERSION;
}

} // namespace

qmi_idl_service_object_type vs_get_service_object_internal_v01(int32_t idl_maj_version,
                                                               int32_t idl_min_version,
                                                               int32_t library_version) {
    return fits(idl_maj_version, idl_min_version, library_version, ORVIK_VS_IDL_MINOR)
               ? &vs_qmi_idl_service_object_v01
               : nullptr;
}

qmi_idl_service_object_type sar_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                int32_t idl_min_version,
                                                                int32_t library_version) {
    return fits(idl_maj_version, idl_min_version, library_version, ORVIK_SAR_IDL_MINOR)
               ? &sar_qmi_idl_service_object_v01
               : nullptr;
}

qmi_idl_service_object_type nas_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                int32_t idl_min_version,
                                                                int32_t library_version) {
    return fits(idl_maj_version, idl_min_version, library_version, ORVIK_NAS_IDL_MINOR)
               ? &nas_qmi_idl_service_object_v01
               : nullptr;
}

qmi_idl_service_object_type uim_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                int32_t idl_min_version,
                                                                int32_t library_version) {
    return fits(idl_maj_version, idl_min_version, library_version, ORVIK_UIM_IDL_MINOR)
               ? &uim_qmi_idl_service_object_v01
               : nullptr;
}
