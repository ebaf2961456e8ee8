// SPDX-License-Identifier: Apache-2.0
/* The unpack engine: each check's line with its numbers, the traces, and where the cursor is left.
 */
#include "unpack.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "phone_test.h"

namespace {

class UnpackTest : public PhoneTest {
  protected:
    UnpackTest() : bytes_(new uint8_t[UNPK_MEMORY_SIZE]()) {
        g_pk_print_flag = 0;
        MODEM_STATS_DATA_UNPK_START(bytes_.get(), 0x5e);
    }
    ~UnpackTest() override { g_pk_print_flag = 0; }

    /* What a read prints that must fail. */
    template <typename Read> static std::string refused(Read read) {
        return printed([&] { EXPECT_FALSE(read()); });
    }

    template <typename Operate> static std::string traced(Operate operate) {
        g_pk_print_flag = 1;
        std::string lines = printed(operate);
        g_pk_print_flag = 0;
        return lines;
    }

    bool read_word() { return UNPK_I("version", "", 4, value_); }

    /* Exactly what the engine asks for: the address sanitizer sees a read that leaves it. */
    const std::unique_ptr<uint8_t[]> bytes_;
    uint64_t value_ = 0;
};

TEST_F(UnpackTest, NothingIsReadWithoutPayload) {
    EXPECT_EQ(printed([] { EXPECT_FALSE(MODEM_STATS_DATA_UNPK_START(nullptr, 0x10)); }),
              "MODEM_STATS_DATA_UNPK_START, payload is NULL, id(0x10)\n");
    EXPECT_EQ(g_pk_data_ptr, bytes_.get()) << "a refused payload arms nothing";
    EXPECT_EQ(g_pk_data_id, 0x5eU);

    g_pk_data_ptr = nullptr;
    EXPECT_EQ(refused([&] { return read_word(); }),
              "MODEM_STATS_DATA_UNPK, g_pk_data_ptr is NULL, name: version, id(0x5e)\n");
}

TEST_F(UnpackTest, OnlyTheFirstByteOfAReadIsChecked) {
    bytes_[2006] = 0x80;
    g_pk_data_cnt = 1999;
    EXPECT_TRUE(UNPK_I("last", "", 8, value_));
    EXPECT_EQ(value_, UINT64_C(0x8000000000000000));
    EXPECT_EQ(g_pk_data_cnt, 2007U);

    g_pk_data_cnt = 2000;
    EXPECT_EQ(refused([&] { return read_word(); }),
              "(base + cnt)(2000) is can not >= 2000 for version, id(0x5e)\n");

    /* The second word of a span is a read of its own; the cursor stays where it failed. */
    EXPECT_EQ(refused([&] { return UNPK_AT("mcc", 1992 * 8, 8, 4, value_); }),
              "(base + cnt)(2000) is can not >= 2000 for mcc_tmp2, id(0x5e)\n");
    EXPECT_EQ(g_pk_data_cnt, 2000U);

    /* An armed limit above the constant does not help. */
    g_pk_data_len_max = 3000;
    EXPECT_EQ(refused([&] { return UNPK_AT("mcc", 2000 * 8, 8, 4, value_); }),
              "(base + cnt)(2000) is can not >= 2000 for mcc_tmp1, id(0x5e)\n");

    EXPECT_EQ(refused([&] {
                  BASE_WITH_BIT(-8);
                  return read_word();
              }),
              "(base + cnt)(-1) is can not >= 2000 for version, id(0x5e)\n");
}

TEST_F(UnpackTest, TheBaseMovesByBitsAndTruncatesTowardsZero) {
    EXPECT_EQ(traced([] { BASE_WITH_BIT(32); }),
              "BASE_WITH_BIT, g_pk_data_base_bit(32), g_pk_data_base(4), g_pk_data_cnt(0), "
              "bit(32), id(0x5e)\n");
    g_pk_data_cnt = 7;
    EXPECT_EQ(traced([] { BASE_WITH_BIT(-33); }),
              "BASE_WITH_BIT, g_pk_data_base_bit(-1), g_pk_data_base(0), g_pk_data_cnt(0), "
              "bit(-33), id(0x5e)\n");
    g_pk_data_base_bit = INT32_MAX;
    BASE_WITH_BIT(1);
    EXPECT_EQ(g_pk_data_base_bit, INT32_MIN);
}

TEST_F(UnpackTest, PositionsLieBetweenTheBaseAndTheArmedLimit) {
    g_pk_data_len_max = 10;
    EXPECT_TRUE(UNPK_SET_BIT(79));
    EXPECT_EQ(g_pk_data_cnt, 9U);
    EXPECT_EQ(refused([] { return UNPK_SET_BIT(80); }),
              "UNPK_SET_BIT, pos(10) should be[0, 10), id(0x5e)\n");
    EXPECT_EQ(refused([] {
                  BASE_WITH_BIT(16);
                  return UNPK_SET_BIT(-9);
              }),
              "UNPK_SET_BIT, pos(-2) should be[0, 10), id(0x5e)\n");
}

/* The checks of low and high; those that no field can fail are reached by setting both. */
TEST_F(UnpackTest, ASpanIsCheckedInOrder) {
    struct Row {
        int32_t low, high;
        const char* line;
    };
    static constexpr Row rows[] = {
        {1, 0, "UNPK_MID, high(0) should be in [1, 64] for f, id(0x5e)\n"},
        {1, 65, "UNPK_MID, high(65) should be in [1, 64] for f, id(0x5e)\n"},
        {0, 0, "UNPK_MID, low(0) should be in [1, 128] for f, id(0x5e)\n"},
        {129, 129, "UNPK_MID, low(129) should be in [1, 128] for f, id(0x5e)\n"},
        {2, 0, "UNPK_MID, high(0) should be in [1, 128] for f, id(0x5e)\n"},
        {66, 129, "UNPK_MID, high(129) should be in [1, 128] for f, id(0x5e)\n"},
        {70, 69, "UNPK_MID, low(70) should <= high(69) for f, id(0x5e)\n"},
        {66, 66, "UNPK_HIGH, bit_num(63) should be in [64, 128] for f, id(0x5e)\n"},
        {1, 33, "UNPK_LOW, bit_num(33) should be in [1, 32] for f, id(0x5e)\n"},
        {8, 128, "UNPK_LOW, bit_num(121) should be in [1, 32] for f, id(0x5e)\n"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(refused([&] {
                      return UNPK_MID("f", {row.low, row.high, 0, 0}, 4, value_);
                  }),
                  row.line);
    EXPECT_EQ(value_, 0U);

    EXPECT_EQ(refused([&] { return UNPK_AT("f", 3, 9, 1, value_); }),
              "UNPK_LOW, bit_num(9) should be in [1, 8] for f, id(0x5e)\n");
    EXPECT_EQ(refused([&] { return UNPK_AT("f", 3, 0, 1, value_); }),
              "UNPK_MID, low(4) should <= high(3) for f, id(0x5e)\n");
    EXPECT_EQ(refused([&] {
                  BASE_WITH_BIT(-1);
                  return UNPK_AT("f", 0, 8, 1, value_);
              }),
              "UNPK_MID, low(0) should be in [1, 128] for f, id(0x5e)\n");
}

TEST_F(UnpackTest, AFieldMayNeedBothWords) {
    for (size_t i = 0; i < 24; ++i)
        bytes_[i] = static_cast<uint8_t>(0x11 * (i % 15 + 1));
    EXPECT_TRUE(UNPK_AT("wide", 10, 64, 8, value_));
    /* bytes 1 to 9 are 22 33 44 55 66 77 88 99 AA, taken from bit 2 on */
    EXPECT_EQ(value_, UINT64_C(0x9988776655443322) >> 2 | UINT64_C(0xAA) << 62);

    /* Shift counts are modulo 64, so a span from bit 65 on is both words at once. */
    EXPECT_TRUE(UNPK_MID("both", {65, 128, 0x0F, 0xF0}, 8, value_));
    EXPECT_EQ(value_, 0xFFU);
}

/* low 1: UNPK_MID shows the value before the mask; the text of a value is its bytes in memory. */
TEST_F(UnpackTest, TracesOfAFieldAtAByte) {
    const uint8_t payload[] = {0, 0x34, 0x12, 0, 0, 0, 0, 0, 0, 0xFF};
    std::copy(std::begin(payload), std::end(payload), bytes_.get());
    EXPECT_EQ(
        traced([&] { EXPECT_TRUE(UNPK_AT("mcc", 8, 8, 1, value_)); }),
        "UNPK_SET_BIT, g_pk_data_base_bit(0), g_pk_data_base(0), g_pk_data_cnt(1), bit(8), "
        "id(0x5e)\n"
        "PRINT_CNT, base_bit: 0, base_byte: 0, data_cnt: 1, low: 1, high: 8, param: 8, name: mcc\n"
        "    UNPK_I, name: mcc_tmp1, val: 4660(0x3412), val_size: 8, unpk_cnt: 9, data_base: 0, "
        "base_bit: 0\n"
        "    UNPK_I, name: mcc_tmp2, val: 255(0xFF), val_size: 8, unpk_cnt: 17, data_base: 0, "
        "base_bit: 0\n"
        "UNPK_HIGH, old_val: 4660, new_val: 52, bit_num: 64, name: mcc, id(0x5e)\n"
        "UNPK_LOW, old_val: 52, new_val: 52, bit_num: 8, mask_max(0xff), old_size(1), name: mcc, "
        "id(0x5e)\n"
        "UNPK_MID, old_val: 4660, new_val: 52, low: 1, high: 8, name: mcc, id(0x5e)\n"
        "    UNPK_AT, name: mcc, val: 52(0x34), low: 1, high: 8, bit_start: 8, bit_num: 8\n");
    EXPECT_STREQ(unpk_hex_text(0).text, "0x");
    EXPECT_STREQ(unpk_hex_text(0x30001).text, "0x010003");
    EXPECT_STREQ(unpk_hex_text(UINT64_C(0x8000000000000000)).text, "0x0000000000000080");
}

} // namespace
