/* The statistics unpack engine: reads fields that lie at any bit of a payload.
 *
 * One cursor, the globals below, stands over one payload at a time. Bit 0 is the least significant
 * bit of byte 0. A field is taken from the 16 bytes that begin at the byte holding its first bit:
 * UNPK_SET_BIT goes to that byte, PRINT_CNT says which of the 128 bits are the field's, two UNPK_I
 * read them, UNPK_MID cuts the field out; UNPK_AT is all of that. Each operation can print a trace;
 * a check that fails prints its line always, and the record is given up. */
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

/* ==== the cursor ==== */

#pragma GCC visibility push(hidden)  /* addressed directly, not by way of the linker's table */
extern const uint8_t* g_pk_data_ptr; /* the payload; null: none is armed */
extern int32_t g_pk_data_len_max;    /* bound of the positions that UNPK_SET_BIT takes */
extern int32_t g_pk_data_base;       /* bytes: g_pk_data_base_bit / 8, truncated towards zero */
extern int32_t g_pk_data_base_bit;   /* where bit positions count from */
extern uint32_t g_pk_data_cnt;       /* bytes consumed since the base */
extern uint32_t g_pk_data_id;        /* of the payload; for the texts only */
extern int32_t g_pk_print_flag;      /* 0: no traces */
extern uint64_t g_pk_version_not_support_num; /* payloads of an unknown version; never reset */
#pragma GCC visibility pop

enum : uint32_t {
    /* A read that begins here or behind is refused, whatever the armed limit. Only its first byte
     * counts: the last read that passes takes 8 bytes from 1999 on. */
    UNPK_READ_MAX = 2000,
    /* Bytes of memory that whoever arms the cursor provides, however short the payload. */
    UNPK_MEMORY_SIZE = UNPK_READ_MAX - 1 + 8,
};

/* Arms the cursor at the start of a payload that lies in UNPK_MEMORY_SIZE readable bytes. False,
 * with a line, for null. */
bool MODEM_STATS_DATA_UNPK_START(const uint8_t* payload, uint32_t id) noexcept;

/* ==== what the operations print ==== */

/* One line. */
void unpk_line(const char* format, ...) noexcept __attribute__((format(printf, 1, 2)));

/* The line of a failed check. */
void unpk_fail(const char* format, ...) noexcept __attribute__((format(printf, 1, 2), cold));

/* Counts a payload whose record version a parser does not know, with its line. */
[[gnu::cold]] void unpk_version_not_support(uint32_t version, const char* parser) noexcept;

/* A value as the traces show it: "0x" and its bytes, the least significant first, without the zero
 * bytes at the end; 0 is "0x". */
struct unpk_hex_text {
    explicit unpk_hex_text(uint64_t value) noexcept;
    char text[50];
};

/* The name of a value; the two words of a field's span are named for the field. */
struct unpk_name {
    const char* field;
    const char* suffix = "";
};

/* ==== the operations ==== */

/* The cursor while a record is read. It works on a copy, so that the compiler may keep it in
 * registers or work it out beforehand, and puts it back where the record ends or is given up. */
template <bool traces> struct unpk_cursor {
    const uint8_t* const ptr;
    const int32_t len_max;
    int32_t base;
    int32_t base_bit;
    uint32_t cnt;

    /* Of the last field: its first and last bit, counted from 1, within the span of 128 bits. */
    int32_t low = 0;
    int32_t high = 0;
    uint64_t tmp1 = 0; /* the span's bits 1 to 64 */
    uint64_t tmp2 = 0; /* 65 to 128 */

    /* Where the globals stand. */
    unpk_cursor()
        : ptr(g_pk_data_ptr), len_max(g_pk_data_len_max), base(g_pk_data_base),
          base_bit(g_pk_data_base_bit), cnt(g_pk_data_cnt) {}

    /* At the start of a payload, with the limit that arming sets. */
    explicit unpk_cursor(const uint8_t* payload)
        : ptr(payload), len_max(UNPK_READ_MAX), base(0), base_bit(0), cnt(0) {}

    [[gnu::always_inline]] ~unpk_cursor() {
        g_pk_data_base = base;
        g_pk_data_base_bit = base_bit;
        g_pk_data_cnt = cnt;
    }
    unpk_cursor(const unpk_cursor&) = delete;
    unpk_cursor& operator=(const unpk_cursor&) = delete;

    /* Reads the next sizeof(T) bytes. */
    template <typename T> [[gnu::always_inline]] bool UNPK_I(unpk_name name, T& value) {
        static_assert(std::endian::native == std::endian::little);
        if (ptr == nullptr)
            return unpk_fail("MODEM_STATS_DATA_UNPK, g_pk_data_ptr is NULL, name: %s%s, id(0x%x)",
                             name.field, name.suffix, g_pk_data_id),
                   false;
        const uint32_t off = static_cast<uint32_t>(base) + cnt;
        if (off >= UNPK_READ_MAX)
            return unpk_fail("(base + cnt)(%d) is can not >= %d for %s%s, id(0x%x)", off,
                             UNPK_READ_MAX, name.field, name.suffix, g_pk_data_id),
                   false;
        std::memcpy(&value, ptr + off, sizeof value);
        cnt += sizeof value;
        if constexpr (traces)
            unpk_line("    UNPK_I, name: %s%s, val: %lu(%s), val_size: %d, unpk_cnt: %d, "
                      "data_base: %d, base_bit: %d",
                      name.field, name.suffix, static_cast<uint64_t>(value),
                      unpk_hex_text(value).text, static_cast<int>(sizeof value), cnt, base,
                      base_bit);
        return true;
    }

    /* Moves the base forward; the next read begins at it. */
    [[gnu::always_inline]] void BASE_WITH_BIT(int32_t bits) {
        cnt = 0;
        base_bit = wrapped(base_bit, bits);
        base = base_bit / 8;
        if constexpr (traces)
            unpk_line("BASE_WITH_BIT, g_pk_data_base_bit(%d), g_pk_data_base(%d), "
                      "g_pk_data_cnt(%d), bit(%d), id(0x%x)",
                      base_bit, base, cnt, bits, g_pk_data_id);
    }

    /* The next read begins at the byte that holds this bit, counted from the base. */
    [[gnu::always_inline]] bool UNPK_SET_BIT(int32_t bit) {
        const int32_t pos = wrapped(base_bit, bit) / 8 - base;
        if (pos < 0 || pos >= len_max)
            return unpk_fail("UNPK_SET_BIT, pos(%d) should be[0, %d), id(0x%x)", pos, len_max,
                             g_pk_data_id),
                   false;
        cnt = static_cast<uint32_t>(pos);
        if constexpr (traces)
            unpk_line("UNPK_SET_BIT, g_pk_data_base_bit(%d), g_pk_data_base(%d), "
                      "g_pk_data_cnt(%d), bit(%d), id(0x%x)",
                      base_bit, base, cnt, bit, g_pk_data_id);
        return true;
    }

    /* low and high of a field, for the span that begins where the next read does. */
    [[gnu::always_inline]] void PRINT_CNT(int32_t bit, int32_t width, const char* name) {
        const uint32_t span_bit = (static_cast<uint32_t>(base) + cnt) * 8;
        const int32_t rel = static_cast<int32_t>(static_cast<uint32_t>(base_bit) - span_bit);
        low = wrapped(wrapped(rel, bit), 1);
        high = wrapped(wrapped(rel, bit), width);
        if constexpr (traces)
            unpk_line("PRINT_CNT, base_bit: %d, base_byte: %d, data_cnt: %d, low: %d, high: %d, "
                      "param: %d, name: %s",
                      base_bit, base, cnt, low, high, bit, name);
    }

    /* Bits low to high of the span. */
    template <typename T> [[gnu::always_inline]] bool UNPK_MID(const char* name, T& value) {
        const uint32_t id = g_pk_data_id;
        if (low == 1) {
            if (high < 1 || high > word_bits)
                return unpk_fail("UNPK_MID, high(%d) should be in [1, %d] for %s, id(0x%x)", high,
                                 word_bits, name, id),
                       false;
        } else {
            if (low < 1 || low > span_bits)
                return unpk_fail("UNPK_MID, low(%d) should be in [1, 128] for %s, id(0x%x)", low,
                                 name, id),
                       false;
            if (high < 1 || high > span_bits)
                return unpk_fail("UNPK_MID, high(%d) should be in [1, 128] for %s, id(0x%x)", high,
                                 name, id),
                       false;
            if (low > high)
                return unpk_fail("UNPK_MID, low(%d) should <= high(%d) for %s, id(0x%x)", low, high,
                                 name, id),
                       false;
        }
        uint64_t old_val = 0;
        uint64_t new_val = 0;
        if (!UNPK_HIGH<T>(name, old_val) || !UNPK_LOW<T>(name, old_val, new_val))
            return false;
        if constexpr (traces)
            unpk_line("UNPK_MID, old_val: %lu, new_val: %lu, low: %d, high: %d, name: %s, id(0x%x)",
                      low == 1 ? old_val : new_val, new_val, low, high, name, id);
        value = static_cast<T>(new_val);
        return true;
    }

    /* A whole field: width bits at a bit counted from the base. */
    template <typename T>
    [[gnu::always_inline]] bool UNPK_AT(const char* name, int32_t bit, int32_t width, T& value) {
        if (!UNPK_SET_BIT(bit))
            return false;
        PRINT_CNT(bit, width, name);
        if (!UNPK_I({name, "_tmp1"}, tmp1) || !UNPK_I({name, "_tmp2"}, tmp2) ||
            !UNPK_MID(name, value))
            return false;
        if constexpr (traces)
            unpk_line("    UNPK_AT, name: %s, val: %lu(%s), low: %d, high: %d, bit_start: %d, "
                      "bit_num: %d",
                      name, static_cast<uint64_t>(value), unpk_hex_text(value).text, low, high, bit,
                      width);
        return true;
    }

  private:
    static constexpr int32_t word_bits = 64;
    static constexpr int32_t span_bits = 128;
    template <typename T> static constexpr uint64_t mask_max = static_cast<T>(~UINT64_C(0));
    template <typename T> static constexpr int32_t type_bits = 8 * sizeof(T);

    static constexpr int32_t wrapped(int32_t a, int32_t b) {
        return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
    }

    /* The span from bit low on; its low 64 bits. */
    template <typename T>
    [[gnu::always_inline]] bool UNPK_HIGH(const char* name, uint64_t& old_val) {
        const int32_t bit_num = low == 1 ? word_bits : span_bits + 1 - low;
        if (bit_num < word_bits)
            return unpk_fail("UNPK_HIGH, bit_num(%d) should be in [64, 128] for %s, id(0x%x)",
                             bit_num, name, g_pk_data_id),
                   false;
        if (low == 1) {
            old_val = tmp1;
        } else {
            /* Shift counts are taken modulo 64, which for low 65 gives tmp1 | tmp2. That is kept:
             * no field begins there. */
            const int32_t down = (low - 1) % word_bits;
            const int32_t up = (word_bits + 1 - low) % word_bits;
            old_val = (tmp1 >> down) | ((tmp2 & (~UINT64_C(0) >> up)) << up);
        }
        if constexpr (traces)
            unpk_line("UNPK_HIGH, old_val: %lu, new_val: %lu, bit_num: %d, name: %s, id(0x%x)",
                      old_val, old_val & mask_max<T>, bit_num, name, g_pk_data_id);
        return true;
    }

    /* The lowest bits of it, as many as the field has. */
    template <typename T>
    [[gnu::always_inline]] bool UNPK_LOW(const char* name, uint64_t old_val, uint64_t& new_val) {
        const int32_t n = high - low;
        if (n >= type_bits<T>)
            return unpk_fail("UNPK_LOW, bit_num(%d) should be in [1, %d] for %s, id(0x%x)", n + 1,
                             type_bits<T>, name, g_pk_data_id),
                   false;
        new_val = old_val & (mask_max<T> >> (type_bits<T> - 1 - n));
        if constexpr (traces)
            unpk_line("UNPK_LOW, old_val: %lu, new_val: %lu, bit_num: %d, mask_max(0x%lx), "
                      "old_size(%d), name: %s, id(0x%x)",
                      new_val, new_val, n + 1, mask_max<T>, static_cast<int>(sizeof(T)), name,
                      g_pk_data_id);
        return true;
    }
};

/* Reads a record with read(cursor) where the globals stand. */
template <bool traces, typename Read> [[gnu::noinline]] bool unpk_from_globals(Read read) {
    unpk_cursor<traces> cursor;
    return read(cursor);
}

/* Reads a record with read(cursor) on the global cursor and returns its result.
 *
 * A record is nearly always read from the start of a freshly armed payload. That case is expanded
 * by itself, with the cursor's place known to the compiler: it works out every position, span and
 * check beforehand, and of each field a load and a shift are left. */
template <typename Read> [[gnu::always_inline]] inline bool unpk_with_cursor(Read read) {
    if (g_pk_print_flag != 0) [[unlikely]]
        return unpk_from_globals<true>(read);
    if (g_pk_data_base_bit != 0 || g_pk_data_base != 0 || g_pk_data_cnt != 0 ||
        g_pk_data_len_max != static_cast<int32_t>(UNPK_READ_MAX)) [[unlikely]]
        return unpk_from_globals<false>(read);
    unpk_cursor<false> cursor(g_pk_data_ptr);
    return read(cursor);
}
