/* DIAG commands to the modem, and the hex dump of the debug log. */
#pragma once

#include <cstdint>

/* Logs 1 to 4096 bytes as upper-case hex; any other length, and null, as a complaint. */
void orvik_print_data_with_hex(const uint8_t* data, uint32_t len);
