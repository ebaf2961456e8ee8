/* Compile-time check of a service object's tables. */
#pragma once

#include <cstddef>

#include "qmi_idl_layout.h"

/* True when the rows are sorted by message id, no message is longer on the wire than its row says,
 * and every field lies within its message's structure. */
template <size_t Rows>
constexpr bool idl_rows_sound(const qmi_idl_type_table_entry* types,
                              const qmi_idl_message_table_entry* messages,
                              const qmi_idl_service_message_table_entry (&rows)[Rows]) {
    for (size_t i = 0; i < Rows; ++i) {
        const qmi_idl_message_table_entry& message = messages[rows[i].message_table_message_id];
        if (i > 0 && rows[i - 1].qmi_message_id >= rows[i].qmi_message_id)
            return false;
        if (qmi_idl::max_message_wire_len(types, message.p_encoded_tlv_data) != rows[i].max_msg_len)
            return false;
        if (qmi_idl::message_fields_end(types, message.p_encoded_tlv_data) > message.c_struct_sz)
            return false;
    }
    return true;
}
