// SPDX-License-Identifier: Apache-2.0
/* A packet of the captures that `kvt-lab pcap` writes: a head of numbers, little-endian, and the
 * crossing's bytes behind it. docs/wireshark.md tells it to others; the dissector's table of it is
 * made from this one. */
#pragma once

#include <cstddef>
#include <cstdint>

namespace lab::wireshark {

constexpr int link_type = 156; /* of those that are left to users, the tenth: DLT_USER9 */
constexpr uint8_t packet_version = 1;
constexpr uint16_t unknown_service = 0xFFFF;

enum HeadField : size_t {
    head_version,
    head_kind,
    head_direction,
    head_flags,
    head_run,
    head_thread,
    head_exchange,
    head_service,
    head_type,
    head_layout,
    head_message,
    head_result,
};

struct HeadRow {
    const char* name;
    uint8_t at, width;
};

/* In the order of HeadField. */
inline constexpr HeadRow head_rows[] = {
    {"version", 0, 1}, {"kind", 1, 1},    {"direction", 2, 1}, {"flags", 3, 1},
    {"run", 4, 4},     {"thread", 8, 4},  {"exchange", 12, 4}, {"service", 16, 2},
    {"type", 18, 1},   {"layout", 19, 1}, {"message", 20, 4},  {"result", 24, 4},
};
constexpr size_t head_size = 28;

} // namespace lab::wireshark
