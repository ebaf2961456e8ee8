// SPDX-License-Identifier: Apache-2.0
/* Little-endian numbers at any address, and records as the bytes they are. */
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/* A number of size bytes, 1 to 8. */
inline uint64_t get_le(const uint8_t* from, size_t size) {
    uint64_t value = 0;
    while (size > 0)
        value = value << 8 | from[--size];
    return value;
}

/* The bytes of a record, whose numbers are little-endian as on both processors. */
template <typename Record> const uint8_t* bytes_of(const Record& record) {
    static_assert(std::endian::native == std::endian::little);
    static_assert(std::is_trivially_copyable_v<Record>);
    return reinterpret_cast<const uint8_t*>(&record);
}
