/* The statistics items that the modem's vs service answers with.
 *
 * stats/SUB.ID holds the data of one item of a subscription (0, 1), bytes as they cross; at most
 * 700 fit into an answer. A missing file is made with a default for the ids below; any other id
 * without a file has no entry in the answer. Numbers are little-endian, floats IEEE-754 of 4 bytes,
 * nothing is aligned:
 *
 *   82, 103..108  4G carriers, 75 bytes: version u8, version_ssmr u8, earfcn u32, pci u16,
 *                 is_srv_cell u8, rx_valid u16, then rsrp, rsrq, rssi, snr of rx 0 to 3, floats
 *   94, 112       5G rssi, snr, 20 bytes: version u32, a float for each rx
 *   113           5G antenna switch, 16 bytes: version u32, old and new antenna u8 each of rx 0 to
 *                 3, tx 0 and 1
 *   135, 6, 7     5G carriers, 24 bytes: version u32, rsrp of rx 0 to 3, rsrq, floats
 *   110, 111      WCDMA and GSM, 9 bytes: version u8, two floats
 *   100           antennas, 8 bytes: version u8, number u8, switch path u16, signal path u16, old
 *                 configuration u8, new configuration u8 */
#pragma once

#include <cstdint>
#include <optional>

#include "phone/bytes.h"

namespace simphone {

/* To be called with the phone locked. */
std::optional<Bytes> stats_item(uint32_t sub, uint32_t id);

} // namespace simphone
