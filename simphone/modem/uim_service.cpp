// SPDX-License-Identifier: Apache-2.0
/* The UIM service: power, card states, EID, logical channels, APDUs. */
#include "modem/modem.h"

#include "modem/euicc.h"
#include "modem/sim_cards.h"
#include "phone/phone.h"

namespace simphone {

namespace {

enum : uint16_t {
    msg_get_card_status = 0x2F,
    msg_power_down = 0x30,
    msg_power_up = 0x31,
    msg_send_apdu = 0x3B,
    msg_logical_channel = 0x3F,
    msg_open_logical_channel = 0x42,
    msg_get_eid = 0x65,
};

constexpr uint8_t tlv_slot = 0x01;
constexpr uint8_t tlv_apdu = 0x02;

/* A counted array's elements, cut to what is there. */
std::optional<ByteView> counted(const TlvReader& request, uint8_t type, size_t count_width) {
    const std::optional<ByteView> value = request.value(type);
    if (!value || value->size() < count_width)
        return std::nullopt;
    const ByteView rest = value->subspan(count_width);
    return get_le(*value, count_width) <= rest.size()
               ? std::optional(rest.first(get_le(*value, count_width)))
               : std::nullopt;
}

Bytes get_card_status(const TlvReader& request) {
    TlvWriter response;
    response.result(QMI_ERR_NONE);
    if (request.number(0x10) != 1)
        return response.take();
    /* Extended status: applications in use (none), then the cards. */
    Bytes status;
    for (int i = 0; i < 4; ++i)
        put_le(status, 0xFFFF, 2);
    status.push_back(sim_slots);
    for (uint32_t slot = 1; slot <= sim_slots; ++slot)
        status.push_back(static_cast<uint8_t>(card_state(slot)));
    return response.add(0x15, status).take();
}

Bytes power_down(const TlvReader&, uint32_t slot) {
    power_slot_down(slot);
    return success();
}

Bytes power_up(const TlvReader& request, uint32_t slot) {
    const bool ignore_detect = request.number(0x10).value_or(0) != 0;
    return power_slot_up(slot, ignore_detect) ? success() : refusal(QMI_ERR_UIM_UNINITIALIZED);
}

Bytes get_eid(const TlvReader&, uint32_t slot) {
    const std::optional<Bytes> eid = read_eid(slot);
    if (!eid)
        return refusal(QMI_ERR_INFO_UNAVAILABLE);
    return TlvWriter().result(QMI_ERR_NONE).counted(0x10, *eid, 1).take();
}

Bytes open_on(uint32_t slot, ByteView aid, uint64_t file_control) {
    const OpenedChannel opened = open_channel(slot, aid, file_control);
    TlvWriter response;
    response.result(opened.error);
    if (opened.error == QMI_ERR_NONE)
        response.number(0x10, opened.channel, 1);
    if (opened.card_word != 0) {
        const uint8_t words[] = {static_cast<uint8_t>(opened.card_word >> 8),
                                 static_cast<uint8_t>(opened.card_word)};
        response.add(0x11, words);
    }
    if (!opened.select.empty())
        response.counted(0x12, opened.select, 1);
    return response.take();
}

Bytes open_logical_channel(const TlvReader& request, uint32_t slot) {
    const std::optional<ByteView> aid = counted(request, 0x10, 1);
    if (!aid)
        return refusal(QMI_ERR_MISSING_ARG);
    return open_on(slot, *aid, request.number(0x11).value_or(0));
}

/* Opens with an AID, closes with a channel. */
Bytes logical_channel(const TlvReader& request, uint32_t slot) {
    if (const std::optional<ByteView> aid = counted(request, 0x10, 1))
        return open_on(slot, *aid, request.number(0x12).value_or(0));
    const std::optional<uint64_t> channel = request.number(0x11);
    if (!channel)
        return refusal(QMI_ERR_MISSING_ARG);
    return close_channel(slot, static_cast<uint8_t>(*channel)) ? success()
                                                               : refusal(QMI_ERR_INVALID_ARG);
}

Bytes send_apdu(const TlvReader& request, uint32_t slot) {
    const std::optional<ByteView> apdu = counted(request, tlv_apdu, 2);
    if (!apdu)
        return refusal(QMI_ERR_MISSING_ARG);
    const auto channel = static_cast<uint8_t>(request.number(0x10).value_or(0));
    const std::optional<Bytes> reply = exchange_apdu(slot, channel, *apdu);
    if (!reply)
        return refusal(QMI_ERR_INVALID_ARG);
    return TlvWriter().result(QMI_ERR_NONE).counted(0x10, *reply, 2).take();
}

struct Row {
    uint16_t msg_id;
    Bytes (*handle)(const TlvReader& request, uint32_t slot);
};

/* Messages about one slot. */
constexpr Row rows[] = {
    {msg_power_down, power_down},
    {msg_power_up, power_up},
    {msg_send_apdu, send_apdu},
    {msg_logical_channel, logical_channel},
    {msg_open_logical_channel, open_logical_channel},
    {msg_get_eid, get_eid},
};

class UimService : public Service {
  public:
    Bytes handle(uint16_t msg_id, const TlvReader& request) override {
        if (!request.well_formed())
            return refusal(QMI_ERR_MALFORMED_MSG);
        if (msg_id == msg_get_card_status)
            return get_card_status(request);
        for (const Row& row : rows) {
            if (row.msg_id != msg_id)
                continue;
            const std::optional<uint64_t> slot = request.number(tlv_slot);
            if (!slot)
                return refusal(QMI_ERR_MISSING_ARG);
            if (*slot < 1 || *slot > sim_slots)
                return refusal(QMI_ERR_INVALID_ARG);
            take_storage_error();
            Bytes answer = row.handle(request, static_cast<uint32_t>(*slot));
            /* What could not be stored must not look done. */
            return take_storage_error() != 0 ? refusal(QMI_ERR_INTERNAL) : answer;
        }
        return refusal(QMI_ERR_INVALID_QMI_CMD);
    }
};

} // namespace

std::unique_ptr<Service> make_uim_service() { return std::make_unique<UimService>(); }

} // namespace simphone
