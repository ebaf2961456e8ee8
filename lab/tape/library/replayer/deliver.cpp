// SPDX-License-Identifier: Apache-2.0
#include "deliver.h"

#include <cstring>

#include "diag.h"
#include "qmi_cci.h"

using engine::ScriptValue;
using engine::value_of;

Delivery::Delivery(const engine::ScriptEvent& recorded) : event(recorded) {
    if (const ScriptValue* const data = value_of(event, "data")) {
        bytes = data->text;
        has_bytes = true;
    }
    if (const ScriptValue* const told = value_of(event, "data_len"))
        length = static_cast<int>(told->number);
}

namespace {

template <typename Function> Function as(engine::AnyFunction function) {
    return reinterpret_cast<Function>(function);
}

qmi_client_type client_of(const Delivery& delivery) {
    return static_cast<qmi_client_type>(const_cast<void*>(delivery.client));
}

void* context_of(const Delivery& delivery) { return const_cast<void*>(delivery.context); }

int number_of(const Delivery& delivery, const char* name) {
    const ScriptValue* const value = value_of(delivery.event, name);
    return value != nullptr ? static_cast<int>(value->number) : 0;
}

unsigned char* bytes_of(Delivery& delivery) {
    return delivery.has_bytes ? reinterpret_cast<unsigned char*>(delivery.bytes.data()) : nullptr;
}

void indication(Delivery& d) {
    as<qmi_client_ind_cb>(d.function)(client_of(d), static_cast<unsigned>(number_of(d, "msg")),
                                      bytes_of(d), static_cast<unsigned>(d.length), context_of(d));
}

void error(Delivery& d) {
    as<qmi_client_error_cb>(d.function)(client_of(d), number_of(d, "error"), context_of(d));
}

void notify(Delivery& d) {
    as<qmi_client_notify_cb>(d.function)(
        client_of(d), static_cast<qmi_idl_service_object_type>(d.service),
        static_cast<qmi_client_notify_event_type>(number_of(d, "event")), context_of(d));
}

void packet(Delivery& d) { as<diag_packet_cb>(d.function)(bytes_of(d), d.length, context_of(d)); }

void response(Delivery& d) {
    as<diag_dci_response_cb>(d.function)(bytes_of(d), d.length, context_of(d));
}

void stream(Delivery& d) { as<diag_dci_stream_cb>(d.function)(bytes_of(d), d.length); }

struct Row {
    const char* kind;
    void (*run)(Delivery& delivery);
};

constexpr Row rows[] = {
    {"indication", indication}, {"error", error},       {"notify", notify},
    {"packet", packet},         {"response", response}, {"stream", stream},
};

} // namespace

void Delivery::run() {
    if (function == nullptr)
        return;
    for (const Row& row : rows)
        if (event.name == row.kind)
            row.run(*this);
}
