// SPDX-License-Identifier: Apache-2.0
/* Converters of command-line arguments. */
#pragma once

/* Decimal as atoi reads it, hexadecimal when the text begins with 0x or 0X. Null gives 0 and, while
 * the stdout-print flag is 1, the line "input is null". */
int orvik_string_to_int(const char* str);

/* Hexadecimal digits without prefix. Any character that is no hex digit counts as the digit 0; a
 * digit's term saturates at 2147483647 and the sum wraps at 32 bits, so "80000000" gives 0x7FFFFFFF
 * and "ffffffff" the bits 0x8FFFFFFE. Null as above; more than 50 digits give 0. */
int orvik_hex_string_to_int(const char* str);

/* Two lower-case hex characters per byte, high nibble first; no NUL is written. out holds 2 * count
 * characters. Nothing happens for null bytes or a count below 1. */
void orvik_byte_to_hex(const unsigned char* bytes, int count, char* out);
