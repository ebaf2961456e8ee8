// SPDX-License-Identifier: Apache-2.0
/* How the tape names a service: one of the platform's objects by its name, any other by its
 * number. */
#pragma once

#include "program.h"
#include "text.h"

inline void put_service(Text& text, const char* member, qmi_idl_service_object_type service) {
    for (const program::Service& row : program::services()) {
        if (service == nullptr || service != row.object)
            continue;
        text.member_text(member, row.name);
        return;
    }
    text.member(member, service != nullptr ? static_cast<long long>(service->service_id) : -1);
}
