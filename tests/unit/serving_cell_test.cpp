// SPDX-License-Identifier: Apache-2.0
/* The serving-cell record: where its fields lie in each version, and what becomes of it. */
#include "serving_cell.h"

#include <cstring>
#include <memory>

#include "phone_test.h"
#include "unpack.h"

namespace {

class ServingCellTest : public PhoneTest {
  protected:
    ServingCellTest() : bytes_(new uint8_t[UNPK_MEMORY_SIZE]()) { g_pk_print_flag = 0; }

    /* Puts a value at a bit behind the version word; bits around it stay as they are. */
    void put_bits(int bit, int width, uint64_t value) {
        for (int i = 0; i < width; ++i) {
            const int at = 32 + bit + i;
            const auto mask = static_cast<uint8_t>(1 << at % 8);
            bytes_[at / 8] = static_cast<uint8_t>((value >> i & 1) != 0 ? bytes_[at / 8] | mask
                                                                        : bytes_[at / 8] & ~mask);
        }
    }

    /* A record with another value in every field, ones in all bits between. base: of pci; gap:
     * bits between pci and dl_earfcn. */
    void put_record(uint32_t version, int base, int gap) {
        std::memset(bytes_.get(), 0xFF, 64);
        std::memcpy(bytes_.get(), &version, sizeof version);
        put_bits(base, 16, 501);
        const int bit = base + 16 + gap;
        put_bits(bit, 32, 1850);
        put_bits(bit + 32, 32, 19850);
        put_bits(bit + 64, 16, 100);
        put_bits(bit + 80, 16, 75);
        put_bits(bit + 96, 64, UINT64_C(0x8123456789ABCDE1));
        put_bits(bit + 160, 16, 460);
        put_bits(bit + 176, 8, 2);
        put_bits(bit + 184, 16, 11);
        put_bits(bit + 200, 8, 1);
        put_bits(bit + 208, 32, 0x80001234);
        put_bits(bit + 240, 16, 3);
    }

    std::string parse() {
        return printed([&] {
            ASSERT_TRUE(MODEM_STATS_DATA_UNPK_START(bytes_.get(), 0x2a));
            modem_stats_parse_xxxx_diag_xxxx(0, nullptr, nullptr);
        });
    }

    const std::unique_ptr<uint8_t[]> bytes_;
};

TEST_F(ServingCellTest, EveryVersionHasItsLayout) {
    struct Row {
        uint32_t version;
        int base, gap;
    };
    for (const Row& row : {Row{0x30000, 0, 64}, {0x30001, 10, 64}, {0x30002, 24, 64}, {4, 0, 0}}) {
        put_record(row.version, row.base, row.gap);
        EXPECT_EQ(parse(), "version = " + std::to_string(row.version) +
                               ", mcc = 460, mnc_num 2, mnc 11, tac -2147478988, "
                               "cgi 9305357566071262689, pci 501\n"
                               "freq_band_ind = 3, dl_earfcn = 1850, dl_bw 100, ul_earfcn 19850, "
                               "ul_bw 75, allow_access 1, scs 0\n");
        /* mnc_num has no place in the record that is handed on. */
        static constexpr uint8_t packed[] = {0xCC, 0x01, 11,   0,    0x34, 0x12, 0x00, 0x80, 0xE1,
                                             0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x81, 0xF5, 0x01,
                                             3,    0,    0x3A, 0x07, 0,    0,    100,  0,    0x8A,
                                             0x4D, 0,    0,    75,   0,    1,    0};
        ASSERT_EQ(g_pk_data_cnt, 38U);
        ASSERT_NE(g_pk_data_ptr, bytes_.get());
        EXPECT_EQ(std::memcmp(g_pk_data_ptr, &row.version, 4), 0);
        EXPECT_EQ(std::memcmp(g_pk_data_ptr + 4, packed, sizeof packed), 0);
    }
}

TEST_F(ServingCellTest, UnknownVersionsAreCounted) {
    const uint64_t before = g_pk_version_not_support_num;
    uint64_t count = before;
    for (const uint32_t version : {5U, 0U, 0x2FFFFU, 0x30003U}) {
        put_record(version, 0, 0);
        EXPECT_EQ(parse(), "VERSION_NOT_SUPPORT, version(" + std::to_string(version) +
                               "), not_support_num(" + std::to_string(++count) +
                               "), name(modem_stats_parse_xxxx_diag_xxxx), id(0x2a)\n");
    }
    EXPECT_EQ(g_pk_version_not_support_num, before + 4);
}

TEST_F(ServingCellTest, AFailedParseHandsNothingOn) {
    put_record(0x30000, 0, 64);
    parse();
    const uint8_t* const record = g_pk_data_ptr;
    const std::string good(record, record + 38);

    /* tac, the fourth field, is the first that lies behind the limit. */
    put_record(4, 0, 0);
    EXPECT_EQ(printed([&] {
                  MODEM_STATS_DATA_UNPK_START(bytes_.get(), 0);
                  g_pk_data_len_max = 28;
                  modem_stats_parse_xxxx_diag_xxxx(0, nullptr, nullptr);
              }),
              "UNPK_SET_BIT, pos(28) should be[0, 28), id(0x0)\n");
    EXPECT_EQ(g_pk_data_ptr, bytes_.get());
    EXPECT_EQ(g_pk_data_base_bit, 32);
    EXPECT_EQ(g_pk_data_cnt, 25U + 16U) << "behind the span of mnc";
    EXPECT_EQ(std::string(record, record + 38), good);
}

TEST_F(ServingCellTest, ARecordMayBeginAnywhere) {
    put_record(0x30001, 10, 64);
    std::memmove(bytes_.get() + 1900, bytes_.get(), 64);
    EXPECT_NE(printed([&] {
                  MODEM_STATS_DATA_UNPK_START(bytes_.get(), 0);
                  BASE_WITH_BIT(1900 * 8);
                  modem_stats_parse_xxxx_diag_xxxx(0, nullptr, nullptr);
              }).find("mcc = 460"),
              std::string::npos);
    /* The cursor now points at the record handed on; what lies around that may be read as well. */
    EXPECT_NE(printed([] {
                  BASE_WITH_BIT(60);
                  modem_stats_parse_xxxx_diag_xxxx(0, nullptr, nullptr);
              }).find("VERSION_NOT_SUPPORT"),
              std::string::npos);
}

} // namespace
