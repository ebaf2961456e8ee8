// SPDX-License-Identifier: Apache-2.0
/* The debug information: block layouts by version, and log codes that go round. */
#include "debug_info.h"

#include <cstdint>
#include <numeric>

#include "phone_test.h"

namespace {

using StatsDebugInfoTest = PhoneTest;

TEST_F(StatsDebugInfoTest, BlockLengthsByVersion) {
    unsigned char data[100];
    std::iota(std::begin(data), std::end(data), 0);
    struct Row {
        int version, main, diag;
    };
    printed([&] {
        for (const Row& row : {Row{-1, 25, 43},
                               {0, 25, 43},
                               {1, 25, 67},
                               {2, 49, 87},
                               {3, 49, 95},
                               {4, 57, 95},
                               {255, 57, 95}}) {
            EXPECT_EQ(orvik_modem_stats_main_info_unpk(data, row.version), row.main);
            EXPECT_EQ(orvik_modem_stats_diag_info_unpk(data, row.version), row.diag);
            EXPECT_EQ(orvik_modem_stats_cm_info_unpk(data, row.version), 58);
            EXPECT_EQ(orvik_modem_stats_uim_info_unpk(data, row.version), 10);
        }
    });
    EXPECT_EQ(printed([&] { orvik_modem_stats_uim_info_unpk(data, 0); }),
              "UNPK[size:1], init_state = 0\n"
              "UNPK[size:1], listener_state = 1\n"
              "UNPK[size:4], listener_event_call_num = 84148994\n"
              "UNPK[size:4], listener_event_parse_num = 151521030\n");
}

TEST_F(StatsDebugInfoTest, NoData) {
    EXPECT_EQ(printed([] {
                  for (const auto unpk :
                       {orvik_modem_stats_main_info_unpk, orvik_modem_stats_diag_info_unpk,
                        orvik_modem_stats_cm_info_unpk, orvik_modem_stats_uim_info_unpk})
                      EXPECT_EQ(unpk(nullptr, 4), 0);
                  orvik_modem_stats_support_status_check(nullptr);
              }),
              "ptr is null\nptr is null\nptr is null\nptr is null\n"
              "orvik_modem_stats_support_status_check, ptr is null\n");
}

} // namespace
