/* Service object of the SAR service. */
#include "qmi_common.h"

namespace {

const qmi_idl_type_table_object types = {0, 0, 0, nullptr, nullptr, nullptr, nullptr};

} // namespace

const struct qmi_idl_service_object sar_qmi_idl_service_object_v01 = {
    QMI_IDL_LIBRARY_VERSION,     1,      17, 512,    {0, 0, 0},
    {nullptr, nullptr, nullptr}, &types, 14, nullptr};
