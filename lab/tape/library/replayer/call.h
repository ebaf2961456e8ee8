// SPDX-License-Identifier: Apache-2.0
/* One call into the platform, as the replayer sees it: compared with the recorded one, and answered
 * with what that gave. Nothing is called. */
#pragma once

#include <cerrno>
#include <cstddef>
#include <string>

#include "diag.h"
#include "engine.h"
#include "qmi_cci.h"

class Call {
  public:
    explicit Call(const char* name) : name_(name), errno_(errno) {}
    ~Call() { errno = errno_; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /* ---- what goes in ---- */
    void in(const char* name, long long value);
    void in_text(const char* name, const char* text);
    void in_bytes(const char* name, const void* bytes, size_t length);
    void in_packet(const char* name, const unsigned char* bytes, int length);
    void in_handle(const char* name, qmi_client_type handle);
    void in_service(const char* name, qmi_idl_service_object_type service);
    void in_pointer(const char* name, const void* pointer);
    void in_signal(const char* name, qmi_client_os_params* os_params);

    template <typename Function> Function in_callback(const char* name, Function callback) {
        in(name, callback == nullptr
                     ? 0
                     : engine::callback_number(kind_of(callback),
                                               reinterpret_cast<engine::AnyFunction>(callback)));
        return callback;
    }

    /* ---- what comes out ---- */
    template <typename Number> void out(const char* name, Number* number) {
        add_output({name, number, sizeof *number, Output::number});
    }
    void out_bytes(const char* name, void* bytes, size_t length) {
        add_output({name, bytes, length, Output::bytes});
    }
    void out_text(const char* name, char* text, size_t room) {
        add_output({name, text, room, Output::text});
    }
    void out_handle(const char* name, qmi_client_type* handle, qmi_client_os_params* os_params) {
        add_output({name, handle, 0, Output::handle});
        os_params_ = os_params;
    }
    void response_area(unsigned char* area, int size) {
        engine::set_response_area(area, size > 0 ? static_cast<size_t>(size) : 0);
    }

    /* Takes the recorded call's place; `refused` when there is none. */
    template <typename Real> int make(int refused, const Real&) { return replay(refused); }

    /* False: the tape did not have this call. */
    bool matched() const { return matched_; }

  private:
    struct Output {
        enum Kind { number, bytes, text, handle, signal };
        const char* name;
        void* at;
        size_t size;
        Kind kind;
    };

    static const char* kind_of(qmi_client_ind_cb) { return "indication"; }
    static const char* kind_of(qmi_client_error_cb) { return "error"; }
    static const char* kind_of(qmi_client_notify_cb) { return "notify"; }
    static const char* kind_of(diag_packet_cb) { return "packet"; }
    static const char* kind_of(diag_dci_response_cb) { return "response"; }
    static const char* kind_of(diag_dci_stream_cb) { return "stream"; }

    int replay(int refused);
    void add_output(const Output& output) {
        if (output.at != nullptr && outputs_ < sizeof output_ / sizeof output_[0])
            output_[outputs_++] = output;
    }
    void give(const Output& output, const engine::ScriptEvent& event) const;

    const char* name_;
    int errno_;
    bool matched_ = false;
    std::string inputs_;
    Output output_[4];
    size_t outputs_ = 0;
    qmi_client_os_params* os_params_ = nullptr;
};
