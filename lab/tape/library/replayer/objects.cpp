// SPDX-License-Identifier: Apache-2.0
#include "objects.h"

#include "qmi_idl.h"

/* qmi_common.h, which declares them constant, is left out here: they are filled from the tape. */
extern "C" {
qmi_idl_service_object nas_qmi_idl_service_object_v01;
qmi_idl_service_object uim_qmi_idl_service_object_v01;
qmi_idl_service_object sar_qmi_idl_service_object_v01;
qmi_idl_service_object vs_qmi_idl_service_object_v01;
}

namespace objects {

namespace {

struct Row {
    const char* name;
    qmi_idl_service_object* object;
};

constexpr Row rows[] = {
    {"nas", &nas_qmi_idl_service_object_v01},
    {"uim", &uim_qmi_idl_service_object_v01},
    {"sar", &sar_qmi_idl_service_object_v01},
    {"vs", &vs_qmi_idl_service_object_v01},
};

} // namespace

void set(const lab::tape::ScriptService& service) {
    for (const Row& row : rows) {
        if (service.name != row.name)
            continue;
        row.object->library_version = service.library;
        row.object->idl_version = service.major;
        row.object->service_id = service.id;
        row.object->idl_minor_version = service.minor;
    }
}

std::string name_of(const void* service) {
    for (const Row& row : rows)
        if (service == row.object)
            return row.name;
    const auto* const other = static_cast<qmi_idl_service_object_type>(service);
    return other != nullptr ? std::to_string(other->service_id) : "-1";
}

const void* find(const std::string& name) {
    for (const Row& row : rows)
        if (name == row.name)
            return row.object;
    return nullptr;
}

} // namespace objects
