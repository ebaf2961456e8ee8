/* Service object of the VS service. */
#include "qmi_common.h"

namespace {

const qmi_idl_type_table_object types = {0, 0, 0, nullptr, nullptr, nullptr, nullptr};

} // namespace

const struct qmi_idl_service_object vs_qmi_idl_service_object_v01 = {
    QMI_IDL_LIBRARY_VERSION,     1,      0xE4, 8192,   {0, 0, 0},
    {nullptr, nullptr, nullptr}, &types, 2,    nullptr};
