// SPDX-License-Identifier: Apache-2.0
/* A libqmi_common_so of another phone: the service objects, with the one fault that
 * KVT_TEST_FAULT names as "KIND SERVICE". A message fault is in the service's first response. */
#include <cstdlib>
#include <string>
#include <vector>

#include "qmi_idl.h"

/* The faultless objects, renamed by the build. */
extern "C" {
extern const qmi_idl_service_object right_nas, right_sar, right_uim, right_vs;
__attribute__((visibility("default"))) qmi_idl_service_object nas_qmi_idl_service_object_v01,
    sar_qmi_idl_service_object_v01, uim_qmi_idl_service_object_v01, vs_qmi_idl_service_object_v01;
}

namespace {

/* Writable copies of one service's tables. */
struct Tables {
    std::vector<qmi_idl_service_message_table_entry> rows;
    std::vector<qmi_idl_message_table_entry> messages;
    const qmi_idl_type_table_object* referenced[1];
    qmi_idl_type_table_object types;
};
Tables g_tables;

void spoil(qmi_idl_service_object& object, const std::string& kind) {
    const uint16_t count = object.n_msgs[QMI_IDL_RESPONSE];
    const auto* const rows = object.msgid_to_msg[QMI_IDL_RESPONSE];
    const qmi_idl_type_table_object& types = *object.p_type_table;
    g_tables.rows.assign(rows, rows + count);
    g_tables.messages.assign(types.p_messages, types.p_messages + types.n_messages);
    g_tables.types = types;
    g_tables.types.p_messages = g_tables.messages.data();
    g_tables.types.p_referenced_tables = g_tables.referenced;
    g_tables.referenced[0] = &g_tables.types;
    object.msgid_to_msg[QMI_IDL_RESPONSE] = g_tables.rows.data();
    object.p_type_table = &g_tables.types;

    if (kind == "minor")
        --object.idl_minor_version;
    else if (kind == "library")
        object = {5, 1, object.service_id, 0, {9, 9, 9}, {}, nullptr, 0, nullptr};
    else if (kind == "size") {
        /* The row's own message, since others may share it. */
        g_tables.messages.push_back(g_tables.messages[rows[0].message_table_message_id]);
        g_tables.messages.back().c_struct_sz += 4;
        g_tables.rows[0].message_table_message_id = g_tables.types.n_messages++;
        g_tables.types.p_messages = g_tables.messages.data();
    } else if (kind == "bytes")
        --g_tables.rows[0].max_msg_len;
    else if (kind == "absent")
        g_tables.rows[0].qmi_message_id = 0;
}

bool make() {
    const struct {
        const char* name;
        qmi_idl_service_object& object;
        const qmi_idl_service_object& right;
    } services[] = {{"nas", nas_qmi_idl_service_object_v01, right_nas},
                    {"sar", sar_qmi_idl_service_object_v01, right_sar},
                    {"uim", uim_qmi_idl_service_object_v01, right_uim},
                    {"vs", vs_qmi_idl_service_object_v01, right_vs}};
    const char* const setting = std::getenv("KVT_TEST_FAULT");
    const std::string fault = setting != nullptr ? setting : "";
    for (const auto& service : services) {
        service.object = service.right;
        const size_t blank = fault.find(' ');
        if (blank != std::string::npos && fault.substr(blank + 1) == service.name)
            spoil(service.object, fault.substr(0, blank));
    }
    return true;
}

[[maybe_unused]] const bool made = make(); /* behind the tables, which it fills */

} // namespace
