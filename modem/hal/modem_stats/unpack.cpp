// SPDX-License-Identifier: Apache-2.0
#include "unpack.h"

#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "values are copied as they lie");

const uint8_t* g_pk_data_ptr;
int32_t g_pk_data_len_max;
int32_t g_pk_data_base;
int32_t g_pk_data_base_bit;
uint32_t g_pk_data_cnt;
uint32_t g_pk_data_id;
int32_t g_pk_print_flag;
uint64_t g_pk_version_not_support_num;

namespace {

constexpr int32_t word_bits = 64;
constexpr int32_t span_bits = 128;

/* Prints a line. Returns false, for a check that fails. */
[[gnu::format(printf, 1, 2), gnu::cold]] bool unpk_line(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::putchar('\n');
    return false;
}

bool traces() { return g_pk_print_flag != 0; }

int32_t wrapped_sum(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

[[gnu::cold]] void trace_cursor(const char* operation, int32_t bit) {
    unpk_line("%s, g_pk_data_base_bit(%d), g_pk_data_base(%d), g_pk_data_cnt(%d), bit(%d), "
              "id(0x%x)",
              operation, g_pk_data_base_bit, g_pk_data_base, g_pk_data_cnt, bit, g_pk_data_id);
}

} // namespace

unpk_text unpk_hex_text(uint64_t value) {
    unpk_text hex{"0x"};
    for (char* end = hex.text + 2; value != 0; value >>= 8)
        end += std::snprintf(end, 3, "%02X", static_cast<unsigned>(value & 0xFF));
    return hex;
}

bool MODEM_STATS_DATA_UNPK_START(const uint8_t* payload, uint32_t id) {
    if (payload == nullptr)
        return unpk_line("MODEM_STATS_DATA_UNPK_START, payload is NULL, id(0x%x)", id);
    g_pk_data_id = id;
    g_pk_data_len_max = UNPK_READ_MAX;
    g_pk_data_ptr = payload;
    g_pk_data_base = 0;
    g_pk_data_base_bit = 0;
    g_pk_data_cnt = 0;
    return true;
}

bool UNPK_I(const char* name, const char* suffix, size_t size, uint64_t& value) {
    if (g_pk_data_ptr == nullptr)
        return unpk_line("MODEM_STATS_DATA_UNPK, g_pk_data_ptr is NULL, name: %s%s, id(0x%x)", name,
                         suffix, g_pk_data_id);
    const uint32_t off = static_cast<uint32_t>(g_pk_data_base) + g_pk_data_cnt;
    if (off >= UNPK_READ_MAX)
        return unpk_line("(base + cnt)(%d) is can not >= %d for %s%s, id(0x%x)", off, UNPK_READ_MAX,
                         name, suffix, g_pk_data_id);
    /* Eight bytes are always there, see UNPK_MEMORY_SIZE. */
    std::memcpy(&value, g_pk_data_ptr + off, sizeof value);
    value &= ~UINT64_C(0) >> (8 * (sizeof value - size));
    g_pk_data_cnt += static_cast<uint32_t>(size);
    if (traces())
        unpk_line("    UNPK_I, name: %s%s, val: %lu(%s), val_size: %d, unpk_cnt: %d, "
                  "data_base: %d, base_bit: %d",
                  name, suffix, value, unpk_hex_text(value).text, static_cast<int>(size),
                  g_pk_data_cnt, g_pk_data_base, g_pk_data_base_bit);
    return true;
}

void BASE_WITH_BIT(int32_t bits) {
    g_pk_data_cnt = 0;
    g_pk_data_base_bit = wrapped_sum(g_pk_data_base_bit, bits);
    g_pk_data_base = g_pk_data_base_bit / 8;
    if (traces())
        trace_cursor("BASE_WITH_BIT", bits);
}

bool UNPK_SET_BIT(int32_t bit) {
    const int32_t pos = wrapped_sum(g_pk_data_base_bit, bit) / 8 - g_pk_data_base;
    if (pos < 0 || pos >= g_pk_data_len_max)
        return unpk_line("UNPK_SET_BIT, pos(%d) should be[0, %d), id(0x%x)", pos, g_pk_data_len_max,
                         g_pk_data_id);
    g_pk_data_cnt = static_cast<uint32_t>(pos);
    if (traces())
        trace_cursor("UNPK_SET_BIT", bit);
    return true;
}

void PRINT_CNT(int32_t bit, int32_t width, const char* name, unpk_span& span) {
    const uint32_t span_bit = (static_cast<uint32_t>(g_pk_data_base) + g_pk_data_cnt) * 8;
    const int32_t rel = static_cast<int32_t>(static_cast<uint32_t>(g_pk_data_base_bit) - span_bit);
    span.low = wrapped_sum(wrapped_sum(rel, bit), 1);
    span.high = wrapped_sum(wrapped_sum(rel, bit), width);
    if (traces())
        unpk_line("PRINT_CNT, base_bit: %d, base_byte: %d, data_cnt: %d, low: %d, high: %d, "
                  "param: %d, name: %s",
                  g_pk_data_base_bit, g_pk_data_base, g_pk_data_cnt, span.low, span.high, bit,
                  name);
}

namespace {

/* what: the operation and the number's name. */
bool in_range(const char* what, int32_t number, int32_t from, int32_t to, const char* name) {
    if (number >= from && number <= to)
        return true;
    return unpk_line("%s(%d) should be in [%d, %d] for %s, id(0x%x)", what, number, from, to, name,
                     g_pk_data_id);
}

bool span_is_good(const char* name, int32_t low, int32_t high) {
    if (low == 1)
        return in_range("UNPK_MID, high", high, 1, word_bits, name);
    if (!in_range("UNPK_MID, low", low, 1, span_bits, name) ||
        !in_range("UNPK_MID, high", high, 1, span_bits, name))
        return false;
    if (low > high)
        return unpk_line("UNPK_MID, low(%d) should <= high(%d) for %s, id(0x%x)", low, high, name,
                         g_pk_data_id);
    return true;
}

} // namespace

bool UNPK_MID(const char* name, const unpk_span& span, size_t size, uint64_t& value) {
    const int32_t low = span.low, high = span.high;
    if (!span_is_good(name, low, high))
        return false;

    /* UNPK_HIGH: the 64 bits from bit low on. */
    const int32_t left = low == 1 ? word_bits : span_bits + 1 - low;
    if (!in_range("UNPK_HIGH, bit_num", left, word_bits, span_bits, name))
        return false;
    uint64_t old_val = span.tmp1;
    if (low != 1) {
        /* Published: shift counts are taken modulo 64, so low 65 gives tmp1 | tmp2. No field begins
         * there. */
        const int32_t down = (low - 1) % word_bits;
        const int32_t up = (word_bits + 1 - low) % word_bits;
        old_val = (span.tmp1 >> down) | ((span.tmp2 & (~UINT64_C(0) >> up)) << up);
    }
    const uint64_t mask_max = ~UINT64_C(0) >> (8 * (sizeof(uint64_t) - size));
    if (traces())
        unpk_line("UNPK_HIGH, old_val: %lu, new_val: %lu, bit_num: %d, name: %s, id(0x%x)", old_val,
                  old_val & mask_max, left, name, g_pk_data_id);

    /* UNPK_LOW: as many of their lowest bits as the field has. */
    const int32_t bit_num = high - low + 1;
    const int32_t type_bits = 8 * static_cast<int32_t>(size);
    if (!in_range("UNPK_LOW, bit_num", bit_num, 1, type_bits, name))
        return false;
    value = old_val & (mask_max >> (type_bits - bit_num));
    if (traces()) {
        unpk_line("UNPK_LOW, old_val: %lu, new_val: %lu, bit_num: %d, mask_max(0x%lx), "
                  "old_size(%d), name: %s, id(0x%x)",
                  value, value, bit_num, mask_max, static_cast<int>(size), name, g_pk_data_id);
        unpk_line("UNPK_MID, old_val: %lu, new_val: %lu, low: %d, high: %d, name: %s, id(0x%x)",
                  low == 1 ? old_val : value, value, low, high, name, g_pk_data_id);
    }
    return true;
}

bool UNPK_AT(const char* name, int32_t bit, int32_t width, size_t size, uint64_t& value) {
    unpk_span span{};
    if (!UNPK_SET_BIT(bit))
        return false;
    PRINT_CNT(bit, width, name, span);
    if (!UNPK_I(name, "_tmp1", sizeof span.tmp1, span.tmp1) ||
        !UNPK_I(name, "_tmp2", sizeof span.tmp2, span.tmp2) || !UNPK_MID(name, span, size, value))
        return false;
    if (traces())
        unpk_line("    UNPK_AT, name: %s, val: %lu(%s), low: %d, high: %d, bit_start: %d, "
                  "bit_num: %d",
                  name, value, unpk_hex_text(value).text, span.low, span.high, bit, width);
    return true;
}

bool unpk_read_record(const unpk_record& record, void* out) {
    uint64_t value = 0;
    if (!UNPK_I("version", "", sizeof(uint32_t), value))
        return false;
    const auto version = static_cast<uint32_t>(value);
    std::memcpy(out, &version, sizeof version);
    BASE_WITH_BIT(8 * sizeof version);

    size_t column = 0;
    while (column < record.versions.size() && record.versions[column] != version)
        ++column;
    if (column == record.versions.size())
        return unpk_line(
            "VERSION_NOT_SUPPORT, version(%d), not_support_num(%lu), name(%s), id(0x%x)", version,
            ++g_pk_version_not_support_num, record.parser, g_pk_data_id);

    for (const unpk_field& field : record.fields) {
        if (!UNPK_AT(field.name, field.bit[column], field.width, field.size, value))
            return false;
        std::memcpy(static_cast<uint8_t*>(out) + field.offset, &value, field.size);
    }
    return true;
}
