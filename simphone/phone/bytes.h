// SPDX-License-Identifier: Apache-2.0
/* Bytes and little-endian numbers, as the phone's files and messages hold them. */
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace simphone {

using Bytes = std::vector<uint8_t>;
using ByteView = std::span<const uint8_t>;

/* The little-endian number in the first min(width, bytes.size()) bytes. */
uint64_t get_le(ByteView bytes, size_t width);
void put_le(Bytes& out, uint64_t value, size_t width);

/* out must reach offset + width. */
void set_le(Bytes& out, size_t offset, uint64_t value, size_t width);

/* Lower-case hex digits without blanks. */
std::string to_hex(ByteView bytes);

/* Reads hex digits, blanks between bytes allowed; stops at the first other character. */
Bytes from_hex(std::string_view text);

} // namespace simphone
