// SPDX-License-Identifier: Apache-2.0
#include "modem/card_requests.h"

#include <cerrno>

#include "modem/sim_cards.h"

namespace simphone {

namespace {

constexpr size_t width = 4;

bool holds(ByteView payload, size_t numbers) { return payload.size() >= numbers * width; }

uint32_t number(ByteView payload, size_t index) {
    return static_cast<uint32_t>(get_le(payload.subspan(index * width), width));
}

} // namespace

int32_t card_status_query(ByteView, Bytes& reply) {
    for (uint32_t slot = 1; slot <= sim_slots; ++slot)
        put_le(reply, card_detected(slot) ? 1 : 0, width);
    return 0;
}

int32_t card_status_get(ByteView payload, Bytes& reply) {
    if (!holds(payload, 1) || number(payload, 0) >= sim_slots)
        return -EINVAL;
    put_le(reply, card_detected(number(payload, 0) + 1) ? 1 : 0, width);
    return 0;
}

int32_t card_type_query(ByteView, Bytes& reply) {
    put_le(reply, card_type(), width);
    return 0;
}

int32_t card_status_set(ByteView payload, Bytes&) {
    if (!holds(payload, 3) || number(payload, 0) >= sim_slots)
        return -EINVAL;
    force_card_detect(number(payload, 0) + 1, number(payload, 1) != 0, number(payload, 2) != 0);
    return 0;
}

int32_t card_hotswap(ByteView payload, Bytes&) {
    if (!holds(payload, 1))
        return -EINVAL;
    if (number(payload, 0) == 0) {
        stop_hotswap_test();
        return 0;
    }
    if (!holds(payload, 4))
        return -EINVAL;
    start_hotswap_test(number(payload, 1), number(payload, 2), number(payload, 3));
    return 0;
}

int32_t esim_switch(ByteView payload, Bytes&) {
    if (!holds(payload, 2) || number(payload, 0) > 1)
        return -EINVAL;
    connect_slot_2(number(payload, 0) == 1);
    return 0;
}

} // namespace simphone
