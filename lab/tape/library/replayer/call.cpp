// SPDX-License-Identifier: Apache-2.0
#include "call.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "threads.h"

using engine::ScriptEvent;
using engine::ScriptValue;
using lab::tape::add_input;

namespace {

std::string hex(const void* bytes, size_t length) {
    static constexpr char digits[] = "0123456789abcdef";
    const auto* const p = static_cast<const unsigned char*>(bytes);
    while (length > 0 && p[length - 1] == 0)
        --length;
    std::string text(2 * length, '\0');
    for (size_t i = 0; i < length; ++i) {
        text[2 * i] = digits[p[i] >> 4];
        text[2 * i + 1] = digits[p[i] & 15];
    }
    return text;
}

/* As the platform sets them up for a client. */
void init_os_params(qmi_client_os_params* params) {
    std::memset(params, 0, sizeof *params);
    pthread_condattr_init(&params->attr);
    pthread_condattr_setclock(&params->attr, CLOCK_MONOTONIC);
    pthread_cond_init(&params->cond, &params->attr);
    pthread_mutex_init(&params->mutex, nullptr);
}

} // namespace

void Call::in(const char* name, long long value) {
    add_input(inputs_, name, std::to_string(value));
}

void Call::in_text(const char* name, const char* text) {
    if (text != nullptr)
        add_input(inputs_, name, text);
}

void Call::in_bytes(const char* name, const void* bytes, size_t length) {
    if (bytes == nullptr)
        return;
    add_input(inputs_, name, hex(bytes, length));
    add_input(inputs_, std::string(name) + "_len", std::to_string(length));
}

void Call::in_packet(const char* name, const unsigned char* bytes, int length) {
    if (length >= 0)
        in_bytes(name, bytes, static_cast<size_t>(length));
}

void Call::in_handle(const char* name, qmi_client_type handle) {
    in(name, engine::handle_number(handle));
}

void Call::in_service(const char* name, qmi_idl_service_object_type service) {
    const std::string text = engine::service_name(service);
    engine::know_service(text, service);
    add_input(inputs_, name, text);
}

void Call::in_pointer(const char* name, const void* pointer) {
    in(name, engine::pointer_number(pointer));
}

void Call::in_signal(const char* name, qmi_client_os_params* os_params) {
    in(name, engine::signal_number(os_params));
    add_output({name, os_params, 0, Output::signal});
}

int Call::replay(int refused) {
    threads::enter(threads::Place::platform);
    const ScriptEvent* const event = engine::begin_call(name_, inputs_);
    if (event == nullptr) {
        threads::enter(threads::Place::program);
        return refused;
    }
    matched_ = true;
    for (size_t i = 0; i < outputs_; ++i)
        give(output_[i], *event);
    errno_ = static_cast<int>(event->error);
    const auto result = static_cast<int>(event->result);
    threads::enter(threads::Place::program);
    return result;
}

void Call::give(const Output& output, const ScriptEvent& event) const {
    if (output.kind == Output::signal) {
        auto* const params = static_cast<qmi_client_os_params*>(output.at);
        const ScriptValue* const set = engine::value_of(event, "sig_set");
        const ScriptValue* const timed_out = engine::value_of(event, "timed_out");
        pthread_mutex_lock(&params->mutex);
        if (set != nullptr)
            params->sig_set = static_cast<uint32_t>(set->number);
        if (timed_out != nullptr)
            params->timed_out = static_cast<uint32_t>(timed_out->number);
        pthread_mutex_unlock(&params->mutex);
        return;
    }
    if (output.kind == Output::handle && event.result == QMI_NO_ERR && os_params_ != nullptr)
        init_os_params(os_params_);
    const ScriptValue* const value = engine::value_of(event, output.name);
    if (value == nullptr)
        return;
    const std::string& bytes = value->text;
    switch (output.kind) {
    case Output::number: {
        const auto wide = static_cast<uint32_t>(value->number);
        const auto narrow = static_cast<uint16_t>(value->number);
        if (output.size == sizeof narrow)
            std::memcpy(output.at, &narrow, sizeof narrow);
        else
            std::memcpy(output.at, &wide, sizeof wide);
        break;
    }
    case Output::bytes:
        std::memcpy(output.at, bytes.data(), std::min(output.size, bytes.size()));
        break;
    case Output::text: {
        const size_t length = std::min(output.size - 1, bytes.size());
        std::memcpy(output.at, bytes.data(), length);
        static_cast<char*>(output.at)[length] = '\0';
        break;
    }
    case Output::handle: {
        const ScriptValue* const raw = engine::value_of(event, "raw");
        void* const handle =
            reinterpret_cast<void*>(raw != nullptr ? static_cast<uintptr_t>(raw->number) : 0);
        std::memcpy(output.at, &handle, sizeof handle);
        engine::add_handle(handle, static_cast<int>(value->number), os_params_);
        break;
    }
    case Output::signal:
        break;
    }
}
