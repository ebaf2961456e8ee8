// SPDX-License-Identifier: Apache-2.0
/* Which service a client of a recorded run belongs to. */
#pragma once

#include <map>

#include "names.h"
#include "tape/format.h"

namespace lab::tape {

inline const names::Service* service_named(std::string_view name) {
    for (const names::Service& row : names::services)
        if (name == row.name)
            return &row;
    return nullptr;
}

/* A service as a tape names it; null: not known. */
inline const names::Service* service_of(const Field* field) {
    if (field == nullptr)
        return nullptr;
    return field->is_text ? service_named(field->text) : names::service_of(field->number);
}

class Clients {
  public:
    void clear() { clients_.clear(); }

    /* To be told every call. */
    void note(const Event& event) {
        for (const char* const name : {"client", "notifier"}) {
            const Field* const handle = event.output_named(name);
            const Field* const service = event.input("service");
            if (handle != nullptr && !handle->is_text && service != nullptr)
                clients_[handle->number] = service_of(service);
        }
    }

    const names::Service* service(int64_t client) const {
        const auto it = clients_.find(client);
        return it != clients_.end() ? it->second : nullptr;
    }

  private:
    std::map<int64_t, const names::Service*> clients_;
};

} // namespace lab::tape
