// SPDX-License-Identifier: Apache-2.0
/* One call into the platform, as the recorder sees it: passed on as it is, and written down with
 * what it gave. errno is the caller's throughout. */
#pragma once

#include <cerrno>
#include <cstddef>

#include "journal.h"
#include "qmi_cci.h"
#include "relay.h"

class Call {
  public:
    explicit Call(const char* name);
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
    /* Also gives out the signal's fields. */
    void in_signal(const char* name, qmi_client_os_params* os_params);

    /* What to hand to the platform in place of the callback. */
    template <typename Function> Function in_callback(const char* name, Function callback) {
        if (!active_ || callback == nullptr) {
            in(name, 0);
            return callback;
        }
        int number = 0;
        const Function relayed = relay::to(callback, number);
        in(name, number);
        return relayed;
    }

    /* ---- what comes out: named before the call is made ---- */
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
    /* Written when the response comes; the response's callback tells it. */
    void response_area(unsigned char*, int) {}

    /* Makes the call. The first number is what a call that can't be made would give. */
    template <typename Real> int make(int, Real real) {
        if (active_)
            begin();
        errno = errno_;
        const int result = real();
        errno_ = errno;
        if (active_)
            end(result);
        return result;
    }

    /* True: what came out is the platform's. */
    bool matched() const { return true; }

  private:
    struct Output {
        enum Kind { number, bytes, text, handle, signal };
        const char* name;
        void* at;
        size_t size;
        Kind kind;
    };

    void begin();
    void end(int result);
    void add_output(const Output& output) {
        if (active_ && output.at != nullptr && outputs_ < sizeof output_ / sizeof output_[0])
            output_[outputs_++] = output;
    }
    void put_output(Text& line, const Output& output, int result);

    int errno_;
    bool active_;
    Text inputs_;
    const char* key_ = nullptr; /* a property's */
    journal::InFlight flight_;
    Output output_[4];
    size_t outputs_ = 0;
    const void* os_params_ = nullptr;
};
