// SPDX-License-Identifier: Apache-2.0
/* The statistics unpack engine: reads fields that lie at any bit of a payload.
 *
 * One cursor, the globals below, stands over one payload at a time. Bit 0 is the least significant
 * bit of byte 0. Each operation prints a trace while g_pk_print_flag is set. A check that fails
 * always prints its line and returns false; the cursor stays, and the caller gives the record up.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/* Reached directly, not by way of the linker's tables: every field needs all of it. */
#pragma GCC visibility push(hidden)

/* ==== the cursor ==== */

extern const uint8_t* g_pk_data_ptr; /* the payload; null: none is armed */
extern int32_t g_pk_data_len_max;    /* bound of the positions that UNPK_SET_BIT takes */
extern int32_t g_pk_data_base;       /* bytes: g_pk_data_base_bit / 8, truncated towards zero */
extern int32_t g_pk_data_base_bit;   /* where bit positions count from */
extern uint32_t g_pk_data_cnt;       /* bytes consumed since the base */
extern uint32_t g_pk_data_id;        /* of the payload; for the texts only */
extern int32_t g_pk_print_flag;      /* 0: no traces */
extern uint64_t g_pk_version_not_support_num; /* payloads of an unknown version; never reset */

enum : uint32_t {
    /* A read that begins here or later is refused, whatever the armed limit. Only its first byte
     * counts: the last read that passes takes 8 bytes from 1999 on. */
    UNPK_READ_MAX = 2000,
    /* Bytes of memory that whoever arms the cursor provides, however short the payload. */
    UNPK_MEMORY_SIZE = UNPK_READ_MAX - 1 + 8,
};

/* Arms the cursor at the start of a payload that lies in UNPK_MEMORY_SIZE readable bytes. False,
 * with a line, for null. */
bool MODEM_STATS_DATA_UNPK_START(const uint8_t* payload, uint32_t id);

/* ==== operations; size is that of the value in bytes: 1, 2, 4 or 8 ==== */

/* 128 bits of the payload, and the field in them: its first and last bit, counted from 1. */
struct unpk_span {
    int32_t low;
    int32_t high;
    uint64_t tmp1; /* bits 1 to 64 */
    uint64_t tmp2; /* 65 to 128 */
};

/* Reads the next size bytes. The value is called name and suffix in the texts. */
bool UNPK_I(const char* name, const char* suffix, size_t size, uint64_t& value);

/* Moves the base forward; the next read begins at it. */
void BASE_WITH_BIT(int32_t bits);

/* The next read begins at the byte that holds this bit, counted from the base. */
bool UNPK_SET_BIT(int32_t bit);

/* Sets low and high for a field of width bits, in the span that begins where the next read does. */
void PRINT_CNT(int32_t bit, int32_t width, const char* name, unpk_span& span);

/* Bits low to high of the span. */
bool UNPK_MID(const char* name, const unpk_span& span, size_t size, uint64_t& value);

/* A whole field, of width bits at a bit counted from the base, by all of the above: the 16 bytes
 * that begin at the byte with its first bit are read, and the field is cut out of them. */
bool UNPK_AT(const char* name, int32_t bit, int32_t width, size_t size, uint64_t& value);

/* ==== records ==== */

enum { UNPK_VERSIONS_MAX = 4 };

struct unpk_field {
    const char* name;
    size_t offset;                  /* in the struct that the record is read into */
    size_t size;                    /* there, in bytes */
    int32_t width;                  /* in the payload, in bits */
    int32_t bit[UNPK_VERSIONS_MAX]; /* the first, after the version word, in each version */
};

struct unpk_record {
    const char* parser;
    std::span<const uint32_t> versions;
    std::span<const unpk_field> fields; /* in the order of reading */
};

/* Reads a record, its version word first, into a struct that begins with that word. When false, the
 * struct holds what had been read until then. */
bool unpk_read_record(const unpk_record& record, void* out);

/* ==== texts ==== */

struct unpk_text {
    char text[50];
};

/* A value as the traces show it: "0x" and its bytes, the least significant first, without the zero
 * bytes at the end; 0 is "0x". */
unpk_text unpk_hex_text(uint64_t value);

#pragma GCC visibility pop
