#include "stats_query.h"

#include <string>
#include <vector>

#include "phone_test.h"
#include "stats_commands.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

class StatsQueryTest : public PhoneTest {
  protected:
    StatsQueryTest() { g_ravex_req_number = 0; }

    /* kvt 9 OPT SUB; the lines behind the one that tells the arguments. */
    static std::string query(const std::string& opt, const std::string& sub) {
        std::string words[] = {"kvt", "9", opt, sub};
        char* argv[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                        nullptr};
        const std::string text = printed([&] { orvik_test_qmi_modem_stats_do(4, argv); });
        return text.substr(text.find('\n') + 1);
    }
};

struct Field {
    const char* name;
    int size;
};

struct Item {
    const char* opt;
    int id;
    std::vector<Field> fields;
};

const std::vector<Item> items = {
    {"0", 82, {{"version", 1},     {"version_ssmr", 1}, {"earfcn", 4},   {"pci", 2},
               {"is_srv_cell", 1}, {"rx_valid", 2},     {"rsrp_rx0", 4}, {"rsrq_rx0", 4},
               {"rssi_rx0", 4},    {"snr_rx0", 4},      {"rsrp_rx1", 4}, {"rsrq_rx1", 4},
               {"rssi_rx1", 4},    {"snr_rx1", 4},      {"rsrp_rx2", 4}, {"rsrq_rx2", 4},
               {"rssi_rx2", 4},    {"snr_rx2", 4},      {"rsrp_rx3", 4}, {"rsrq_rx3", 4},
               {"rssi_rx3", 4},    {"snr_rx3", 4}}},
    {"7", 94, {{"version", 4}, {"rssi0", 4}, {"rssi1", 4}, {"rssi2", 4}, {"rssi3", 4}}},
    {"8", 112, {{"version", 4}, {"snr0", 4}, {"snr1", 4}, {"snr2", 4}, {"snr3", 4}}},
    {"9",
     113,
     {{"version", 4},
      {"ant_rx_0_old", 1},
      {"ant_rx_0_new", 1},
      {"ant_rx_1_old", 1},
      {"ant_rx_1_new", 1},
      {"ant_rx_2_old", 1},
      {"ant_rx_2_new", 1},
      {"ant_rx_3_old", 1},
      {"ant_rx_3_new", 1},
      {"ant_tx_0_old", 1},
      {"ant_tx_0_new", 1},
      {"ant_tx_1_old", 1},
      {"ant_tx_1_new", 1}}},
    {"11",
     6,
     {{"version", 4},
      {"rsrp_rx0", 4},
      {"rsrp_rx1", 4},
      {"rsrp_rx2", 4},
      {"rsrp_rx3", 4},
      {"rsrq", 4}}},
    {"20", 110, {{"version", 1}, {"rx_agc_0", 4}, {"rx_agc_1", 4}}},
    {"21", 111, {{"version", 1}, {"rx_prx", 4}, {"rx_drx", 4}}},
    {"30",
     100,
     {{"version", 1},
      {"ant_number", 1},
      {"ant_switch_path", 2},
      {"sig_path", 2},
      {"old_config", 1},
      {"new_config", 1}}},
};

/* A reply that is one byte short of each field in turn names that field and what was left. */
TEST_F(StatsQueryTest, ReplyThatEndsInTheMiddleOfAnyField) {
    for (const Item& item : items) {
        int before = 0;
        for (const Field& field : item.fields) {
            const int length = before + field.size - 1;
            before += field.size;
            if (length == 0)
                continue; /* an empty reply is another failure */
            put("stats/0." + std::to_string(item.id), std::string(static_cast<size_t>(length), 1));
            char expected[128];
            std::snprintf(expected, sizeof expected,
                          "data_len = %d\ng_ravex_data_left(%d) is not enough for %s, id(0x%x)\n",
                          length, field.size - 1, field.name, static_cast<unsigned>(item.id));
            EXPECT_THAT(query(item.opt, "0"), EndsWith(expected)) << item.opt;
        }
        put("stats/0." + std::to_string(item.id), std::string(static_cast<size_t>(before), 1));
        EXPECT_THAT(query(item.opt, "0"),
                    testing::AnyOf(HasSubstr("ASDIV DATA: "), HasSubstr("ANT INFO: ")))
            << item.opt;
    }
}

TEST_F(StatsQueryTest, SignsAndWidthsOfTheNumbersShown) {
    put("stats/0.82", std::string(11, '\xFF') + std::string(64, '\0'));
    EXPECT_THAT(query("0", "0"), HasSubstr("earfcn: -1, pci: 65535, rx_valid: 65535, rsrp_rx0: "
                                           "0.00"));
    put("stats/0.100", std::string(8, '\x80'));
    EXPECT_THAT(query("30", "0"), EndsWith("ANT INFO: ant_num: 128, ant_path: 32896, sig_path: "
                                           "32896, old_config: 128, new_config: 128\n"));
}

TEST_F(StatsQueryTest, LengthsAtTheirLimit) {
    put("stats/1.94", std::string(700, '\0'));
    EXPECT_THAT(query("7", "1"), HasSubstr("data_len = 700\nASDIV DATA: rssi_rx0: 0.00"));
    put("stats/1.94", std::string(701, '\0'));
    EXPECT_EQ(query("7", "1"), "Fail to get data fail, number = 2, ret = 1, sub = 1, id = 94\n");
    EXPECT_EQ(g_ravex_data_len, 0);
}

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
