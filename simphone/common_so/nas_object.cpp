/* Service object of the NAS service. */
#include "qmi_common.h"

namespace {

const qmi_idl_type_table_object types = {0, 0, 0, nullptr, nullptr, nullptr, nullptr};

} // namespace

const struct qmi_idl_service_object nas_qmi_idl_service_object_v01 = {
    QMI_IDL_LIBRARY_VERSION,     1,      3,   512,    {0, 0, 0},
    {nullptr, nullptr, nullptr}, &types, 378, nullptr};
