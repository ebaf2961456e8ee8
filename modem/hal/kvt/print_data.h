// SPDX-License-Identifier: Apache-2.0
/* How the commands show bytes. */
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>

/* Each byte as " XX", upper-case, then a newline. */
inline void print_bytes_line(std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes)
        std::printf(" %02X", byte);
    std::putchar('\n');
}

/* What was read from an NV item or EFS file. */
inline void print_read_data(std::span<const uint8_t> bytes) {
    std::printf("\ndata len(%d)\ndata: ", static_cast<int>(bytes.size()));
    print_bytes_line(bytes);
}
