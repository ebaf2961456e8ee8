// SPDX-License-Identifier: Apache-2.0
/* The eUICC in slot 2: the files of the phone's folder euicc (docs/phone.md).
 *
 * A channel stays open until it is closed, the card loses its power or the modem restarts: not when
 * the process that opened it ends, so a command that leaves its channel open uses one up. */
#pragma once

#include <cstdint>
#include <optional>

#include "phone/bytes.h"

namespace simphone {

/* Nothing while the eUICC isn't connected to the slot, has no power or is still starting. */
std::optional<Bytes> read_eid(uint32_t slot);

struct OpenedChannel {
    uint16_t error = 0;     /* of the QMI response */
    uint8_t channel = 0;    /* 1 to euicc/max_channels, when there is no error */
    uint16_t card_word = 0; /* status word of the card, 0 when it was not asked */
    Bytes select;           /* answer to the selection, when one is wanted */
};

/* Only the ISD-R can be selected, and only on the eUICC. file_control: 1, the answer to the
 * selection is a file control parameters template; 2, a file control information; else none. */
OpenedChannel open_channel(uint32_t slot, ByteView aid, uint64_t file_control);

/* False when it was not open. */
bool close_channel(uint32_t slot, uint8_t channel);
void close_all_channels();

/* The reply ends with the status word. Nothing when that channel is not open. Requests known: the
 * EID (BF3E) and the memory reset (BF34), in a STORE DATA command each. */
std::optional<Bytes> exchange_apdu(uint32_t slot, uint8_t channel, ByteView apdu);

} // namespace simphone
