// SPDX-License-Identifier: Apache-2.0
#include "exchange.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <thread>

#include "phone/lock.h"
#include "phone/phone.h"

namespace simphone {

namespace {

/* The message as it crosses: header (control flag, transaction, message id, length) and TLVs. */
void log_message(const Client& client, uint8_t control_flag, uint16_t transaction, unsigned msg_id,
                 ByteView tlvs) {
    Bytes message;
    put_le(message, control_flag, 1);
    put_le(message, transaction, 2);
    put_le(message, msg_id, 2);
    put_le(message, tlvs.size(), 2);
    message.insert(message.end(), tlvs.begin(), tlvs.end());
    log_line("qmi", service_name(client.service->service_id) +
                        (control_flag == 0 ? " req " : " rsp ") + to_hex(message));
}

/* The last TLV's value grows, with a length to match. */
void lengthen_last_tlv(Bytes& answer) {
    for (size_t at = 0, next = 0; next < answer.size(); at = next) {
        next = at + 3 + get_le(ByteView(answer).subspan(at + 1), 2);
        if (next >= answer.size()) {
            set_le(answer, at + 1, next - at - 3 + lengthy_by, 2);
            answer.resize(answer.size() + lengthy_by, 0xA5);
            return;
        }
    }
}

/* The modem's part; the phone is locked no longer than the modem has the request: an indication
 * that is delivered afterwards may make its handler send one more. */
int ask_modem(Client& client, uint16_t msg_id, const Bytes& request, unsigned timeout_ms,
              const std::optional<Fault>& fault, Bytes& answer, uint16_t& transaction) {
    /* The simulation's own contention is no time-out: a short one waits a second for the lock. */
    const Lock lock(std::max<int64_t>(timeout_ms, 1000));
    if (lock.error() == ETIMEDOUT)
        return QMI_TIMEOUT_ERR;
    if (!service_up(client.service->service_id) || client.born != restart_count())
        return QMI_SERVICE_ERR;
    transaction = ++client.transaction;
    log_message(client, 0, transaction, msg_id, request);
    answer = fault && fault->kind == Fault::Kind::reply
                 ? reply_bytes(*fault)
                 : client.modem_side->handle(msg_id, TlvReader(request));
    if (fault && fault->kind == Fault::Kind::restart) {
        restart_modem();
        return QMI_SERVICE_ERR;
    }
    return QMI_NO_ERR;
}

} // namespace

std::string message_name(const Client& client, unsigned msg_id) {
    char text[64];
    std::snprintf(text, sizeof text, "%s.0x%02x", service_name(client.service->service_id).c_str(),
                  msg_id);
    return text;
}

int exchange(Client& client, uint16_t msg_id, const Bytes& request, unsigned timeout_ms,
             const std::optional<Fault>& fault, Bytes& answer) {
    uint16_t transaction = 0;
    {
        const std::lock_guard guard(client.exchange);
        if (const int failed =
                ask_modem(client, msg_id, request, timeout_ms, fault, answer, transaction))
            return failed;
    }
    if (fault && fault->kind == Fault::Kind::lengthy)
        lengthen_last_tlv(answer);
    else if (fault)
        spoil(*fault, answer);
    if (fault && fault->kind == Fault::Kind::late) {
        const int64_t late = fault->late_ms();
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min<int64_t>(late, timeout_ms)));
        if (late >= timeout_ms)
            return QMI_TIMEOUT_ERR;
    }
    if (Framework::instance().indications_under_way())
        Framework::instance().deliver_waiting();
    log_message(client, 2, transaction, msg_id, answer);
    return QMI_NO_ERR;
}

} // namespace simphone
