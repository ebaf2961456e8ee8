// SPDX-License-Identifier: Apache-2.0
/* The unpack engine against a reader that takes one bit at a time. An input chooses payload, base,
 * limit and either fields of any place, width and type or a whole record of a version; every value,
 * and whether there is one at all, must agree. The payload lies in exactly as much memory as the
 * engine asks for, so that the address sanitizer sees any read that leaves it. */
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include "serving_cell.h"
#include "unpack.h"

namespace {

/* Takes numbers from an input; zeros when it is used up. */
class Input {
  public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    template <typename T> T take() {
        T value{};
        const size_t n = std::min(size_, sizeof value);
        std::memcpy(&value, data_, n);
        data_ += n;
        size_ -= n;
        return value;
    }

    /* Mostly near from..to, sometimes any number at all. */
    int32_t number(int32_t from, int32_t to) {
        if (take<uint8_t>() >= 250)
            return take<int32_t>();
        return from + take<uint16_t>() % (to - from + 1);
    }

    /* Fills out with what is left, over and over. */
    void fill(uint8_t* out, size_t count) const {
        for (size_t i = 0; i < count; ++i)
            out[i] = size_ == 0 ? 0 : static_cast<uint8_t>(data_[i % size_] + i / size_);
    }

  private:
    const uint8_t* data_;
    size_t size_;
};

void check(bool agreed, const char* what) {
    if (agreed)
        return;
    std::fprintf(stderr, "difference: %s\n", what);
    std::abort();
}

/* ==== the slow reader ==== */

uint64_t bits(const uint8_t* bytes, int64_t first, int64_t count) {
    uint64_t value = 0;
    for (int64_t i = 0; i < count; ++i)
        if ((bytes[(first + i) / 8] >> ((first + i) % 8) & 1) != 0)
            value |= UINT64_C(1) << i;
    return value;
}

/* The base bit wraps at 32 bits; nothing that is read lies there. */
int32_t sum(int64_t a, int64_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a + b)); }

constexpr int64_t last_byte = 2000;

/* A field has a value when its bit is in the payload, not before the base's byte and below the
 * limit, when both words of its span begin below byte 2000, and when its width fits its type. */
std::optional<uint64_t> field(const uint8_t* bytes, int32_t limit, int32_t base_bit, int32_t bit,
                              int64_t width, int64_t type_bits) {
    const int64_t first = sum(base_bit, bit);
    const int64_t position = first / 8 - base_bit / 8;
    if (first < 0 || position < 0 || position >= limit || first / 8 + 8 >= last_byte)
        return std::nullopt;
    if (width < 1 || width > type_bits)
        return std::nullopt;
    return bits(bytes, first, width);
}

/* Where the fields lie: the distance from dl_earfcn, the same in every version; pci apart. */
struct Place {
    int32_t pci;
    int32_t dl_earfcn;
};

std::optional<Place> place(uint32_t version) {
    switch (version) {
    case 4:
        return Place{0, 16};
    case 0x30000:
        return Place{0, 80};
    case 0x30001:
        return Place{10, 90};
    case 0x30002:
        return Place{24, 104};
    default:
        return std::nullopt;
    }
}

std::optional<serving_cell> record(const uint8_t* bytes, int32_t limit, int32_t base_bit) {
    if (base_bit / 8 < 0 || base_bit / 8 >= last_byte)
        return std::nullopt;
    serving_cell cell{};
    cell.record.version = static_cast<uint32_t>(bits(bytes, base_bit / 8 * 8, 32));
    const std::optional<Place> at = place(cell.record.version);
    if (!at)
        return std::nullopt;
    bool whole = true;
    const auto read = [&](int width, int32_t bit) {
        const auto value = field(bytes, limit, sum(base_bit, 32), bit, width, width);
        whole = whole && value.has_value();
        return value.value_or(0);
    };
    modem_stats_single_data_common_type& out = cell.record;
    out.pci = static_cast<uint16_t>(read(16, at->pci));
    out.dl_earfcn = static_cast<uint32_t>(read(32, at->dl_earfcn));
    out.ul_earfcn = static_cast<uint32_t>(read(32, at->dl_earfcn + 32));
    out.dl_bw = static_cast<uint16_t>(read(16, at->dl_earfcn + 64));
    out.ul_bw = static_cast<uint16_t>(read(16, at->dl_earfcn + 80));
    out.cgi = read(64, at->dl_earfcn + 96);
    out.mcc = static_cast<uint16_t>(read(16, at->dl_earfcn + 160));
    cell.mnc_num = static_cast<uint8_t>(read(8, at->dl_earfcn + 176));
    out.mnc = static_cast<uint16_t>(read(16, at->dl_earfcn + 184));
    out.allow_access = static_cast<uint8_t>(read(8, at->dl_earfcn + 200));
    out.tac = static_cast<uint32_t>(read(32, at->dl_earfcn + 208));
    out.freq_band_ind = static_cast<uint16_t>(read(16, at->dl_earfcn + 240));
    return whole ? std::optional(cell) : std::nullopt;
}

/* ==== comparisons ==== */

void compare_field(Input& input, const uint8_t* bytes, size_t size) {
    const int32_t bit = input.number(-40, 2100);
    const int32_t width = input.number(-1, 66);
    const auto expected = field(bytes, g_pk_data_len_max, g_pk_data_base_bit, bit, width,
                                8 * static_cast<int64_t>(size));
    uint64_t value = 0;
    const bool read = UNPK_AT("field", bit, width, size, value);
    check(read == expected.has_value(), "field: taken or not");
    check(!read || value == *expected, "field: value");
}

/* Any part of a span, chosen by number. */
void compare_span(Input& input, size_t size) {
    unpk_span span{};
    span.tmp1 = input.take<uint64_t>();
    span.tmp2 = input.take<uint64_t>();
    span.low = input.number(-2, 131);
    span.high = input.number(-2, 131);
    uint8_t bytes[16];
    std::memcpy(bytes, &span.tmp1, 8);
    std::memcpy(bytes + 8, &span.tmp2, 8);
    const int64_t low = span.low, high = span.high;
    const bool expected = low >= 1 && low <= high && high <= (low == 1 ? 64 : 128) && low <= 65 &&
                          high - low < 8 * static_cast<int64_t>(size);
    uint64_t value = 0;
    const bool read = UNPK_MID("span", span, size, value);
    check(read == expected, "span: taken or not");
    if (read && low == 65) {
        uint64_t both = span.tmp1 | span.tmp2;
        uint8_t both_bytes[8];
        std::memcpy(both_bytes, &both, 8);
        check(value == bits(both_bytes, 0, high - low + 1), "span: value from 65 on");
    } else if (read) {
        check(value == bits(bytes, low - 1, high - low + 1), "span: value");
    }
}

bool same(const serving_cell& a, const serving_cell& b) {
    return std::memcmp(&a.record, &b.record, sizeof a.record) == 0 && a.mnc_num == b.mnc_num;
}

void compare_record(const uint8_t* bytes, int32_t base_bit) {
    const auto expected = record(bytes, g_pk_data_len_max, base_bit);
    serving_cell cell{};
    check(serving_cell_unpack(cell) == expected.has_value(), "record: taken or not");
    check(!expected || same(cell, *expected), "record: value");
}

void compare_parsed(const uint8_t* bytes, int32_t base_bit) {
    const auto expected = record(bytes, g_pk_data_len_max, base_bit);
    modem_stats_parse_xxxx_diag_xxxx(0, nullptr, nullptr);
    check((g_pk_data_ptr != bytes) == expected.has_value(), "record: handed on or not");
    if (!expected)
        return;
    check(g_pk_data_cnt == 38, "record: length");
    check(bits(g_pk_data_ptr, 0, 32) == expected->record.version, "record: version handed on");
    check(bits(g_pk_data_ptr, 96, 64) == expected->record.cgi, "record: cgi handed on");
    check(bits(g_pk_data_ptr, 272, 16) == expected->record.ul_bw, "record: ul_bw handed on");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const auto choice = input.take<uint8_t>();
    const auto settings = input.take<uint8_t>();
    g_pk_print_flag = settings % 16 == 0 ? 1 : 0;
    const int32_t limit = settings >= 192 ? input.number(0, 2000) : 2000;
    const int32_t base_bit = settings % 4 == 0 ? input.number(-20, 16100) : 0;
    static constexpr uint32_t versions[] = {4, 0x30000, 0x30001, 0x30002};
    const auto version = input.take<uint8_t>();

    const std::unique_ptr<uint8_t[]> memory(new uint8_t[UNPK_MEMORY_SIZE]);
    uint8_t* const bytes = memory.get();
    Input(input).fill(bytes, UNPK_MEMORY_SIZE);
    if (choice % 4 < 2 && version < 252 && base_bit > -8 && base_bit / 8 < last_byte)
        std::memcpy(bytes + base_bit / 8, &versions[version % 4], 4);

    MODEM_STATS_DATA_UNPK_START(bytes, settings);
    g_pk_data_len_max = limit;
    if (base_bit != 0)
        BASE_WITH_BIT(base_bit);

    switch (choice % 4) {
    case 0:
        compare_record(bytes, base_bit);
        break;
    case 1:
        compare_parsed(bytes, base_bit);
        break;
    case 2:
        for (int i = 0; i < 4; ++i)
            for (const size_t field_size : {1, 2, 4, 8})
                compare_field(input, bytes, field_size);
        break;
    default:
        for (const size_t field_size : {1, 2, 4, 8})
            compare_span(input, field_size);
    }
    return 0;
}
