// SPDX-License-Identifier: Apache-2.0
#include "stats_query.h"

#include "phone_test.h"

namespace {

using StatsQueryTest = PhoneTest;

TEST_F(StatsQueryTest, WithoutAClientNothingIsAsked) {
    EXPECT_EQ(printed([] { EXPECT_EQ(orvik_test_qmi_modem_stats_get(0, 94), 1); }),
              "ravex qmi is not yet inited\n");
    EXPECT_EQ(printed([] { orvik_test_qmi_modem_stats_start(); }),
              "modem_api_set_ravex_feature_status, start fail, result = 7\n");
}

/* A second initialisation frees the client of the first. */
TEST_F(StatsQueryTest, InitTwice) {
    orvik_qmi_modem_stats_api_init();
    orvik_qmi_modem_stats_api_init();
    EXPECT_EQ(g_ravex_client_id, 0u);
    orvik_qmi_modem_stats_api_deinit();
    EXPECT_EQ(g_ravex_client_id, 0xFFFFFFFFu);
    EXPECT_EQ(logged({"call qmi_client_release:vs"}), 2);
}

} // namespace
