// SPDX-License-Identifier: Apache-2.0
/* The DIAG library's calls. Rules in the phone's file "faults" name them, the two that send with
 * the packet's first byte (diag_callback_send_data:0x7c, diag_send_dci_async_req:0x7c).
 *
 * Any call: "error N" is its result (without N, and where another action makes no sense, -1, or
 * false), "late N" delays it. Of the two that send, "late N" delays the answer; "timeout" and
 * "restart" lose it; "empty", "short", "long" and "garbage" spoil it; "reply HEX" replaces it. What
 * fails does nothing, except that a DCI client is always released.
 *
 * errno is 0 after a DCI call that succeeds and EIO after one that fails, so that a log line shows
 * the same every time. The data signal that a client asks for is never raised: it would end a
 * process that does not handle it. */
#include "diag.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "answers.h"
#include "library.h"
#include "modem/modem.h"
#include "phone/complaint.h"
#include "phone/faults.h"
#include "phone/guarded.h"
#include "phone/phone.h"
#include "phone/settings.h"

using namespace simphone;

namespace {

using std::chrono::milliseconds;

constexpr int failure = -1;

/* What a call that no fault stopped returns, or the fault's result. */
template <typename Call> int callback_call(const char* name, Call call) {
    return guarded(failure, [&] {
        const std::optional<Fault> fault = platform_call(name);
        if (fault && fault->kind != Fault::Kind::late)
            return fault->result_or(failure);
        if (fault)
            std::this_thread::sleep_for(milliseconds(fault->late_ms()));
        return call() ? 0 : failure;
    });
}

int dci_result(int result) {
    errno = result == DIAG_DCI_NO_ERROR ? 0 : EIO;
    return result;
}

template <typename Call> int dci_call(const char* name, Call call) {
    const int result = callback_call(name, call);
    return dci_result(result == 0 ? DIAG_DCI_NO_ERROR : result);
}

bool lost(const std::optional<Fault>& fault) {
    if (fault && fault->kind == Fault::Kind::restart)
        restart_modem();
    return fault && (fault->kind == Fault::Kind::timeout || fault->kind == Fault::Kind::restart);
}

/* What one packet may set in motion, so that a slip in a setting does not take all memory. */
constexpr size_t most_deliveries = 20000;

/* Appends an answer's copies in chunks, each a copy of the pattern with its bytes; due moves on. */
void append_answer(Library::Deliveries& deliveries, Library::Clock::time_point& due,
                   const Delivery& pattern, const Bytes& answer, size_t chunk) {
    const milliseconds gap(setting_number("diag/gap_ms"));
    const int64_t repeat = setting_number("diag/repeat");
    for (int64_t i = 0; i < repeat; ++i) {
        size_t at = 0;
        do {
            if (deliveries.size() >= most_deliveries) {
                complain("diag", 0,
                         "repeat and chunk make more than " + std::to_string(most_deliveries) +
                             " pieces of one packet's answers, the rest is left out");
                return;
            }
            const size_t left = answer.size() - at;
            const size_t n = chunk == 0 ? left : std::min(chunk, left);
            Delivery delivery = pattern;
            delivery.bytes.assign(answer.begin() + static_cast<ptrdiff_t>(at),
                                  answer.begin() + static_cast<ptrdiff_t>(at + n));
            deliveries.emplace(due, std::move(delivery));
            due += gap;
            at += n;
        } while (at < answer.size());
    }
}

/* Puts the answers to a packet on their way. */
void answer_packet(ByteView packet, const Delivery& pattern, size_t chunk,
                   const std::optional<Fault>& fault) {
    if (lost(fault) || setting_number("diag/silent") != 0)
        return;
    std::vector<Bytes> answers = answers_to(packet);
    if (fault && fault->kind == Fault::Kind::reply)
        answers = {reply_bytes(*fault)};
    else if (fault)
        for (Bytes& answer : answers)
            spoil(*fault, answer);

    auto due = Library::Clock::now() + milliseconds(setting_number("diag/delay_ms"));
    if (fault)
        due += milliseconds(fault->late_ms());
    Library::Deliveries deliveries;
    if (pattern.kind == Delivery::Kind::dci_response) {
        for (const auto& [file, kind] :
             {std::pair("diag/log_stream", Delivery::Kind::dci_log),
              std::pair("diag/event_stream", Delivery::Kind::dci_event)}) {
            if (const std::optional<Bytes> bytes = read_file(file)) {
                Delivery delivery = pattern;
                delivery.kind = kind;
                delivery.bytes = *bytes;
                deliveries.emplace(due, std::move(delivery));
            }
        }
    }
    for (const Bytes& answer : answers)
        append_answer(deliveries, due, pattern, answer, chunk);
    Library::instance().deliver(std::move(deliveries));
}

size_t setting_size(const char* name) { return static_cast<size_t>(setting_number(name)); }

std::string command_name(const unsigned char* buf, int len) {
    char text[16] = "none";
    if (buf != nullptr && len > 0)
        std::snprintf(text, sizeof text, "0x%02x", buf[0]);
    return text;
}

/* The fault of a call that sends, where it makes the call itself fail. */
bool refuses(const std::optional<Fault>& fault) {
    return fault && (fault->kind == Fault::Kind::error || fault->kind == Fault::Kind::gone);
}

/* The packet as the modem sees it; nothing when there is none. */
ByteView take_packet(const unsigned char* buf, int len) {
    if (buf == nullptr || len <= 0)
        return {};
    const ByteView packet(buf, static_cast<size_t>(len));
    log_line("diag", "tx " + to_hex(packet));
    return packet;
}

} // namespace

bool Diag_LSM_Init(unsigned char*) {
    return callback_call("Diag_LSM_Init", [] {
               if (!ensure_phone())
                   return false;
               Library::instance().up();
               return true;
           }) == 0;
}

bool Diag_LSM_DeInit(void) {
    return callback_call("Diag_LSM_DeInit", [] {
               Library::instance().down();
               return true;
           }) == 0;
}

void diag_switch_logging(int mode, char*) {
    callback_call("diag_switch_logging", [mode] {
        Library::instance().set_mode(mode);
        return true;
    });
}

int diag_register_callback(diag_packet_cb cb, void* context) {
    return callback_call("diag_register_callback",
                         [=] { return Library::instance().register_callback(0, cb, context); });
}

int diag_register_remote_callback(diag_packet_cb cb, int proc, void* context) {
    return callback_call("diag_register_remote_callback", [=] {
        return proc > 0 && Library::instance().register_callback(proc, cb, context);
    });
}

int diag_has_remote_device(uint16_t* remote_mask) {
    return callback_call("diag_has_remote_device", [remote_mask] {
        if (remote_mask == nullptr || !Library::instance().is_up())
            return false;
        *remote_mask = static_cast<uint16_t>(setting_number("diag/remote_mask"));
        return true;
    });
}

int diag_callback_send_data(int proc, unsigned char* buf, int len) {
    return guarded(failure, [=] {
        const std::optional<Fault> fault =
            platform_call("diag_callback_send_data", command_name(buf, len));
        if (refuses(fault))
            return fault->result_or(failure);
        if (proc != 0 || !Library::instance().is_up())
            return failure;
        const ByteView packet = take_packet(buf, len);
        if (packet.empty())
            return failure;
        const std::string from = setting("diag/from");
        Delivery pattern;
        pattern.no_context = from == "none";
        pattern.processor = static_cast<int>(whole_number(from).value_or(0));
        answer_packet(packet, pattern, setting_size("diag/callback_chunk"), fault);
        return 0;
    });
}

int diag_register_dci_client(int* client_id, uint16_t* peripherals, int proc, void* os_params) {
    return dci_call("diag_register_dci_client", [=] {
        if (client_id == nullptr || peripherals == nullptr || proc != 0 || os_params == nullptr)
            return false;
        *client_id = Library::instance().add_client();
        return *client_id != 0;
    });
}

int diag_register_dci_signal_data(int client_id, int) {
    return dci_call("diag_register_dci_signal_data",
                    [client_id] { return Library::instance().has_client(client_id); });
}

int diag_get_dci_support_list_proc(int proc, uint16_t* peripherals) {
    return dci_call("diag_get_dci_support_list_proc", [=] {
        if (proc != 0 || peripherals == nullptr || !Library::instance().is_up())
            return false;
        *peripherals = static_cast<uint16_t>(setting_number("diag/peripherals"));
        return true;
    });
}

int diag_register_dci_stream_proc(int client_id, diag_dci_stream_cb log_cb,
                                  diag_dci_stream_cb event_cb) {
    return dci_call("diag_register_dci_stream_proc",
                    [=] { return Library::instance().set_streams(client_id, log_cb, event_cb); });
}

int diag_send_dci_async_req(int client_id, unsigned char buf[], int len, unsigned char* rsp,
                            int rsp_len, diag_dci_response_cb cb, void* context) {
    return dci_result(guarded(failure, [=] {
        const std::optional<Fault> fault =
            platform_call("diag_send_dci_async_req", command_name(buf, len));
        if (refuses(fault))
            return fault->result_or(failure);
        if (!Library::instance().has_client(client_id) || rsp == nullptr || rsp_len <= 0)
            return failure;
        const ByteView packet = take_packet(buf, len);
        if (packet.empty())
            return failure;
        Delivery pattern;
        pattern.kind = Delivery::Kind::dci_response;
        pattern.client = client_id;
        pattern.response = cb;
        pattern.response_context = context;
        pattern.area = rsp;
        pattern.area_size = static_cast<size_t>(rsp_len);
        answer_packet(packet, pattern, setting_size("diag/dci_chunk"), fault);
        return static_cast<int>(DIAG_DCI_NO_ERROR);
    }));
}

int diag_release_dci_client(int* client_id) {
    const bool known = guarded(false, [client_id] {
        return client_id != nullptr && Library::instance().remove_client(*client_id);
    });
    return dci_call("diag_release_dci_client", [known] { return known; });
}
