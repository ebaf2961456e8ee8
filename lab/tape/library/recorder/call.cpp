// SPDX-License-Identifier: Apache-2.0
#include "call.h"

#include <cstring>

#include "numbers.h"
#include "service_name.h"
#include "threads.h"
#include "turn.h"

Call::Call(const char* name)
    : errno_(errno), active_(journal::recording() && threads::place() == threads::Place::program) {
    flight_.name = name;
    if (!active_)
        journal::hold_after_end();
}

void Call::in(const char* name, long long value) {
    if (active_)
        inputs_.member(name, value);
}

void Call::in_text(const char* name, const char* text) {
    if (!active_)
        return;
    if (key_ == nullptr)
        key_ = text;
    inputs_.member_text(name, text);
}

void Call::in_bytes(const char* name, const void* bytes, size_t length) {
    if (active_)
        inputs_.member_bytes(name, bytes, length);
}

void Call::in_packet(const char* name, const unsigned char* bytes, int length) {
    if (active_ && length >= 0)
        inputs_.member_bytes(name, bytes, static_cast<size_t>(length));
}

void Call::in_handle(const char* name, qmi_client_type handle) {
    if (active_)
        inputs_.member(name, numbers::of_handle(handle));
}

void Call::in_service(const char* name, qmi_idl_service_object_type service) {
    if (active_)
        put_service(inputs_, name, service);
}

void Call::in_pointer(const char* name, const void* pointer) {
    if (active_)
        inputs_.member(name, numbers::of_pointer(pointer, true));
}

void Call::in_signal(const char* name, qmi_client_os_params* os_params) {
    if (!active_)
        return;
    inputs_.member(name, numbers::of_signal(os_params));
    add_output({name, os_params, 0, Output::signal});
}

void Call::begin() {
    flight_.inputs = &inputs_;
    flight_.thread = journal::this_thread();
    flight_.began_us = journal::now_us();
    journal::begin(flight_);
    threads::enter(threads::Place::platform);
    turn::give();
}

void Call::end(int result) {
    turn::take();
    Text line;
    line.member("at", flight_.began_us);
    line.member("took", journal::now_us() - flight_.began_us);
    line.member("thread", flight_.thread);
    line.member_text("call", flight_.name);
    line.key("in");
    line.add("{");
    line.add(inputs_.data(), inputs_.size());
    line.add("}");
    if (outputs_ > 0) {
        line.key("out");
        line.add("{");
        for (size_t i = 0; i < outputs_; ++i)
            put_output(line, output_[i], result);
        line.add("}");
    }
    line.member("result", result);
    if (errno_ != 0)
        line.member("errno", errno_);
    journal::end(flight_, line);
    threads::enter(threads::Place::program);
}

void Call::put_output(Text& line, const Output& output, int result) {
    switch (output.kind) {
    case Output::number: {
        uint32_t value = 0;
        if (output.size == sizeof(uint16_t)) {
            uint16_t narrow = 0;
            std::memcpy(&narrow, output.at, sizeof narrow);
            value = narrow;
        } else {
            std::memcpy(&value, output.at, sizeof value);
        }
        line.member(output.name, value);
        break;
    }
    case Output::bytes:
        line.member_bytes(output.name, output.at, output.size);
        break;
    case Output::text: {
        const auto* const text = static_cast<const char*>(output.at);
        const size_t length = ::strnlen(text, output.size);
        line.member_text(output.name, text, length);
        if (key_ != nullptr && length < output.size)
            journal::property(key_, text);
        break;
    }
    case Output::handle: {
        const void* handle = nullptr;
        std::memcpy(&handle, output.at, sizeof handle);
        if (result != QMI_NO_ERR || handle == nullptr)
            break;
        line.member(output.name, numbers::add_handle(handle, os_params_));
        line.key("raw");
        line.add_number(static_cast<long long>(reinterpret_cast<uintptr_t>(handle)));
        break;
    }
    case Output::signal: {
        auto* const params = static_cast<qmi_client_os_params*>(output.at);
        pthread_mutex_lock(&params->mutex);
        const uint32_t set = params->sig_set, timed_out = params->timed_out;
        pthread_mutex_unlock(&params->mutex);
        line.member("sig_set", set);
        line.member("timed_out", timed_out);
        break;
    }
    }
}
