// SPDX-License-Identifier: Apache-2.0
#include "modem_api.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <string_view>
#include <thread>

#include "client_statuses.h"
#include "client_table.h"
#include "eventually.h"
#include "modem/modem.h"
#include "phone_test.h"
#include "traced_alloc.h"

namespace {

using testing::ElementsAre;

class ModemApiTest : public PhoneTest {
  protected:
    ModemApiTest() {
        put("prop/persist.ravex.mem_trace", "true");
        put("restart_ms", "20");
        g_client_retry_wait_ms = 5;
        ClientStatuses::instance().clear();
        modem_api_init();
        blocks_ = ravex_mem_trace_list().count;
    }
    ~ModemApiTest() override {
        for (int32_t id = 0; id < 10; ++id)
            modem_api_free_client(id);
        EXPECT_EQ(ravex_mem_trace_list().count, blocks_ + kept_);
        modem_api_release();
        g_client_retry_wait_ms = 1000;
    }

    static int new_client(uint32_t kind, int32_t* id) {
        return modem_api_init_client(kind, nullptr, note, id);
    }

    /* A status notifier: the event as status, its low digit. */
    static void note(uint32_t event, uint32_t kind) {
        ClientStatuses::record(static_cast<int32_t>(kind), static_cast<int32_t>(event & 0xFFF));
    }

    static modem_api_client* record_of(uint32_t kind, int32_t status) {
        auto* const record = static_cast<modem_api_client*>(
            ravex_malloc_adv(sizeof(modem_api_client), "test", __LINE__));
        record->kind = kind;
        record->operational_status = status;
        return record;
    }

    uint64_t blocks_ = 0;
    uint64_t kept_ = 0; /* records that are left unfreed on purpose */
};

TEST_F(ModemApiTest, ClientLifeIsToldToItsNotifierAndOtherKindsAreIndependent) {
    int32_t vs = -1, nas = -1, sar = -1;
    EXPECT_EQ(new_client(CLIENT_KIND_VS, &vs), 0);
    EXPECT_EQ(new_client(CLIENT_KIND_NAS_1, &nas), 0);
    EXPECT_EQ(new_client(CLIENT_KIND_SAR, &sar), 0);
    EXPECT_THAT((std::vector{vs, nas, sar}), ElementsAre(0, 1, 2));
    EXPECT_EQ(logged({"android 4 RAVEX modem_api_init_client: new client: type 3, id 1"}), 1);
    EXPECT_EQ(logged({"modem_api_util_enable_networking_indications: enable_indication result: 0"}),
              1);
    EXPECT_EQ(modem_api_util_enable_networking_indications(nas, 1), 0);
    EXPECT_EQ(modem_api_util_enable_networking_indications(nas, 0), 7);
    EXPECT_EQ(modem_api_util_enable_networking_indications(nas, 2), 7);
    EXPECT_EQ(modem_api_set_ravex_feature_status(nas, 2, 1, 1, 1), 7);
    EXPECT_EQ(modem_api_set_ravex_feature_status(vs, 5, 1, 0, 2), 0);
    EXPECT_EQ(get("features/5"), "1 0 2\n");

    EXPECT_THAT(ClientStatuses::instance().seen(), ElementsAre(2, 2, 2));
    simphone::restart_modem();
    EXPECT_TRUE(ClientStatuses::instance().wait_for(9));
    EXPECT_EQ(modem_api_set_ravex_feature_status(vs, 2, 1, 1, 1), 0);
    EXPECT_EQ(modem_api_free_client(vs), 0);
    EXPECT_EQ(modem_api_set_ravex_feature_status(vs, 2, 1, 1, 1), 7);
    EXPECT_EQ(logged({"modem_api_operational_status_cb: client type 0, client id 0, "
                      "operational_status 0"}),
              1);
    EXPECT_EQ(modem_api_free_client(vs), 0);
    EXPECT_EQ(logged({"modem_api_free_client: client already freed"}), 1);
}

/* It would wait for its own end; another thread may free the client meanwhile. */
TEST_F(ModemApiTest, HandlerCantFreeItsOwnClient) {
    static std::atomic<int> in_notifier, in_indication;
    in_notifier = in_indication = -1;
    static std::thread other;
    int32_t id = -1;
    ASSERT_EQ(modem_api_init_client(
                  CLIENT_KIND_VS,
                  [](uint32_t, void*, uint32_t) { in_indication = modem_api_free_client(0); },
                  [](uint32_t event, uint32_t) {
                      if (event != MODEM_API_EVENT_SUSPEND)
                          return;
                      other = std::thread([] { EXPECT_EQ(modem_api_free_client(0), 0); });
                      std::this_thread::sleep_for(std::chrono::milliseconds(20));
                      in_notifier = modem_api_free_client(0);
                  },
                  &id),
              0);
    put("ind/vs.0x0601", std::string("\x01\x01\x00\x07", 4));
    EXPECT_EQ(modem_api_set_ravex_feature_status(id, 2, 1, 1, 1), 0);
    EXPECT_EQ(in_indication, 7);
    simphone::restart_modem();
    ASSERT_TRUE(eventually([] { return in_notifier != -1; })) << "the notifier hangs";
    EXPECT_EQ(in_notifier, 7);
    other.join();
    EXPECT_EQ(logged({"modem_api_free_client: Unexpected condition, return error 7!"}), 2);
    EXPECT_EQ(logged({"operational_status 5"}), 1);
    EXPECT_EQ(g_modem_api_clients.slots[0], nullptr);
}

TEST_F(ModemApiTest, IdsOutOfRangeAndBadArguments) {
    int32_t id = -1;
    uint32_t out[1781] = {};
    const uint32_t ids[11] = {94};
    for (const int32_t bad : {-1, 10, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(modem_api_free_client(bad), 7);
        EXPECT_EQ(modem_api_set_ravex_feature_status(bad, 2, 1, 1, 1), 7);
        EXPECT_EQ(modem_api_get_stats_parameter(bad, 0, 1, 1, ids, out), 7);
        EXPECT_EQ(modem_api_util_enable_networking_indications(bad, 0), 7);
    }
    EXPECT_EQ(logged({"modem_api_get_stats_parameter: Unexpected condition, return error 7!"}), 4);
    EXPECT_EQ(new_client(4, &id), 4);
    EXPECT_EQ(logged({"modem_api_init_client: modem api client type 4 not supported"}), 1);
    EXPECT_EQ(new_client(0, nullptr), 5);
    ASSERT_EQ(new_client(0, &id), 0);
    EXPECT_EQ(modem_api_get_stats_parameter(id, 0, 1, 0, ids, out), 5);
    EXPECT_EQ(modem_api_get_stats_parameter(id, 0, 1, 11, ids, out), 5);
    EXPECT_EQ(modem_api_get_stats_parameter(id, 0, 1, 1, nullptr, out), 5);
    EXPECT_EQ(modem_api_get_stats_parameter(id, 0, 1, 1, ids, nullptr), 5);
    EXPECT_EQ(logged({"modem_api_get_stats_parameter: Unexpected condition, return error 5!"}), 2);
    EXPECT_EQ(logged({"modem_api_get_stats_parameter: Unexpected NULL pointer, return error 5!"}),
              2);
}

TEST_F(ModemApiTest, SecondClientOfAKind) {
    int32_t id = -1;
    ASSERT_EQ(new_client(CLIENT_KIND_NAS_1, &id), 0);
    int32_t second = -1;
    EXPECT_EQ(new_client(CLIENT_KIND_NAS_1, &second), 0);
    kept_ = 1;
    EXPECT_EQ(second, -1);
    EXPECT_EQ(logged({"Already another client init nas client successfully"}), 1);

    put("restart_ms", "100000");
    simphone::restart_modem();
    ASSERT_TRUE(ClientStatuses::instance().wait_for(2));
    const auto status = [] {
        const std::lock_guard guard(g_modem_api_clients.slots_mutex);
        return g_modem_api_clients.slots[0]->operational_status;
    };
    ASSERT_TRUE(eventually([&] { return status() == CLIENT_SUSPENDED; })) << "not suspended";
    EXPECT_EQ(new_client(CLIENT_KIND_NAS_1, &second), 9);
    EXPECT_EQ(logged({"Another client init nas 0 client with operational status 5"}), 1);
}

TEST_F(ModemApiTest, ServiceThatDoesNotConnectLeavesTheSlotEmpty) {
    put("services", "vendor");
    int32_t id = -1;
    EXPECT_EQ(new_client(CLIENT_KIND_VS, &id), 1);
    EXPECT_EQ(id, -1);
    EXPECT_EQ(g_modem_api_clients.slots[0], nullptr);
}

TEST_F(ModemApiTest, NoMemoryForAClient) {
    int32_t id = -1;
    g_orvik_system_malloc = [](size_t) -> void* { return nullptr; };
    EXPECT_EQ(new_client(CLIENT_KIND_VS, &id), 3);
    g_orvik_system_malloc = std::malloc;
    EXPECT_EQ(logged({"modem_api_init_client: could not allocate memory"}), 1);
}

TEST_F(ModemApiTest, FullTable) {
    for (modem_api_client*& slot : g_modem_api_clients.slots)
        slot = record_of(99, 0);
    int32_t id = -1;
    EXPECT_EQ(new_client(CLIENT_KIND_VS, &id), 3);
    EXPECT_EQ(logged({"modem_api_init_client: no more client can be added"}), 1);
    EXPECT_EQ(modem_api_free_client(9), 0);
    EXPECT_EQ(new_client(CLIENT_KIND_VS, &id), 0);
    EXPECT_EQ(id, 9);
}

TEST_F(ModemApiTest, InitAndReleaseInAnyNumber) {
    int32_t id = -1;
    ASSERT_EQ(new_client(CLIENT_KIND_VS, &id), 0);
    EXPECT_EQ(modem_api_release(), 0);
    EXPECT_EQ(modem_api_release(), 0);
    EXPECT_EQ(modem_api_set_ravex_feature_status(id, 2, 1, 1, 1), 0);
    EXPECT_EQ(modem_api_init(), 0);
    EXPECT_EQ(modem_api_init(), 0);
    /* The service clients are back at their beginning, the record does not know. */
    EXPECT_EQ(modem_api_set_ravex_feature_status(id, 2, 1, 1, 1), 1);
}

TEST_F(ModemApiTest, ErrorMapping) {
    struct {
        int32_t transport;
        uint32_t result, error;
        int expected;
    } const rows[] = {
        {-6, 0, 0, 1},    {-21, 0, 0, 1}, {1, 0, 0, 1},  {-5, 0, 0, 12}, {-1, 0, 0, 12},
        {-3, 0, 0, 11},   {-4, 0, 0, 1},  {0, 0, 0, 0},  {-2, 0, 0, 0},  {0, 0, 17, 0},
        {0, 2, 0, 1},     {-2, 2, 4, 1},  {0, 1, 0, 0},  {0, 1, 26, 0},  {-2, 1, 4, 10},
        {0, 1, 17, 5},    {0, 1, 19, 5},  {0, 1, 48, 5}, {0, 1, 49, 5},  {0, 1, 24, 4},
        {0, 1, 42, 4},    {0, 1, 77, 4},  {0, 1, 94, 4}, {0, 1, 52, 8},  {0, 1, 3, 1},
        {0, 1, 65535, 1},
    };
    for (const auto& row : rows) {
        const qmi_response_type_v01 resp{row.result, row.error};
        EXPECT_EQ(modem_api_map_qmi_error_to_modem_api(row.transport, &resp), row.expected)
            << row.transport << " " << row.result << " " << row.error;
    }
}

TEST_F(ModemApiTest, FailuresOnTheWayAreMapped) {
    int32_t id = -1;
    ASSERT_EQ(new_client(CLIENT_KIND_VS, &id), 0);
    put("faults", "qmi_client_send_msg_sync:vs.0x03 1 timeout\n"
                  "qmi_client_send_msg_sync:vs.0x03 2 gone\n"
                  "qmi_client_send_msg_sync:vs.0x03 3 error -1\n"
                  "qmi_client_send_msg_sync:vs.0x03 4 reply 02 0400 0100 3400\n"
                  "qmi_client_send_msg_sync:vs.0x03 5 garbage\n"
                  "qmi_client_send_msg_sync:vs.0x207 1 gone\n"
                  "qmi_client_send_msg_sync:vs.0x207 2 reply 02 0400 0000 0000\n");
    /* Gone: the cleared response is judged as it stands. */
    for (const int expected : {11, 0, 12, 8, 1})
        EXPECT_EQ(modem_api_set_ravex_feature_status(id, 2, 1, 1, 1), expected);
    EXPECT_EQ(logged({"modem_api_set_ravex_feature_status: result 8"}), 1);
    uint32_t out[1781] = {};
    const uint32_t ids[] = {94};
    EXPECT_EQ(modem_api_get_stats_parameter(id, 0, 1, 1, ids, out), 1);
    EXPECT_EQ(modem_api_get_stats_parameter(id, 0, 1, 1, ids, out), 1);
}

TEST_F(ModemApiTest, StatisticsOfSeveralIdsAndCountsAboveTheirArrays) {
    put("stats/1.200", "ab");
    int32_t id = -1;
    ASSERT_EQ(new_client(CLIENT_KIND_VS, &id), 0);
    modem_api_stats stats{};
    uint32_t out[1781] = {};
    const uint32_t ids[] = {200, 999, 100};
    ASSERT_EQ(modem_api_get_stats_parameter(id, 1, 0x1234, 3, ids, out), 0);
    std::memcpy(&stats, out, sizeof stats);
    EXPECT_EQ(stats.count, 2u); /* nobody knows 999 */
    EXPECT_EQ(stats.entries[0].sub, 1u);
    EXPECT_EQ(stats.entries[0].data_len, 2u);
    EXPECT_EQ(stats.entries[0].data[1], 'b');
    EXPECT_EQ(stats.entries[1].id, 100u);
    EXPECT_EQ(logged({"qmi vs req 0001000702"
                      "1a00"
                      "0102000100"
                      "0202003412"
                      "030d0003c8000000e703000064000000"}),
              1);

    auto resp = std::make_unique<vs_get_stats_resp_v01>();
    resp->entries_len = 12;
    for (vs_stats_entry_v01& entry : resp->entries) {
        entry.data_len = 701;
        entry.data[699] = 7;
    }
    modem_api_fill_stats(*resp, stats);
    EXPECT_EQ(stats.count, 10u);
    EXPECT_EQ(stats.entries[9].data_len, 700u);
    EXPECT_EQ(stats.entries[9].data[699], 7);
}

TEST_F(ModemApiTest, IndicationBlocksAreTracedUnderTheirInstance) {
    static std::atomic<bool> traced;
    traced = false;
    put("ind/vs.0x0601", std::string("\x01\x01\x00\x07", 4));
    int32_t id = -1;
    const auto look = [](uint32_t, void*, uint32_t) {
        traced = std::string_view(ravex_mem_trace_list().tail->caller) == "vs_client_unsol_ind_cb";
    };
    ASSERT_EQ(modem_api_init_client(CLIENT_KIND_VS, look, nullptr, &id), 0);
    EXPECT_EQ(modem_api_set_ravex_feature_status(id, 2, 1, 1, 1), 0);
    EXPECT_EQ(modem_api_free_client(id), 0); /* the handler has returned */
    EXPECT_TRUE(traced);
}

/* Requests, restarts, and clients that come and go, all at once. */
TEST_F(ModemApiTest, OperationsWhileClientsComeAndGo) {
    put("restart_ms", "3");
    std::atomic<bool> done{false};
    std::vector<std::thread> others;
    for (int i = 0; i < 2; ++i)
        others.emplace_back([&done] {
            uint32_t out[1781];
            const uint32_t ids[] = {94};
            while (!done) {
                modem_api_get_stats_parameter(0, 0, 1, 1, ids, out);
                modem_api_util_enable_networking_indications(1, 0);
            }
        });
    for (int i = 0; i < 40; ++i) {
        int32_t vs = -1, nas = -1;
        EXPECT_EQ(new_client(CLIENT_KIND_VS, &vs), 0);
        EXPECT_EQ(new_client(CLIENT_KIND_NAS_0, &nas), 0);
        simphone::restart_modem();
        std::this_thread::sleep_for(std::chrono::microseconds(i * 700));
        std::thread freeing([vs] { modem_api_free_client(vs); });
        EXPECT_EQ(modem_api_free_client(nas), 0);
        EXPECT_EQ(modem_api_free_client(vs), 0);
        freeing.join();
        EXPECT_EQ(modem_api_release(), 0);
        EXPECT_EQ(modem_api_init(), 0);
    }
    done = true;
    for (std::thread& other : others)
        other.join();
    const int made = logged({"qmi_client_init_instance returned (0)"}) +
                     logged({"qmi_client_notifier_init return 0"});
    EXPECT_GE(made, 80);
    EXPECT_EQ(logged({"call qmi_client_release:"}), made);
    EXPECT_EQ(logged({"call qmi_client_release:none"}), 0);
}

/* ---- asynchronous responses ---- */

struct Told {
    std::string data;
    bool null;
    uint32_t error;
};

std::vector<Told> g_told;

void tell(void* data, uint32_t len, void* user_data, uint32_t error) {
    EXPECT_EQ(user_data, &g_told);
    g_told.push_back({std::string(static_cast<const char*>(data), len), data == nullptr, error});
    ravex_free_adv(data, "test", __LINE__);
}

/* Gives a response of these bytes to the service client's command callback. */
std::vector<Told> answer(uint32_t msg_id, const std::string& bytes, int32_t transport = 0,
                         bool with_callback = true) {
    g_told.clear();
    void* resp = nullptr;
    if (!bytes.empty()) {
        resp = ravex_malloc_adv(bytes.size(), "test", __LINE__);
        std::memcpy(resp, bytes.data(), bytes.size());
    }
    auto* const done = static_cast<modem_api_completion*>(
        ravex_malloc_adv(sizeof(modem_api_completion), "test", __LINE__));
    *done = {with_callback ? tell : nullptr, &g_told};
    vs_client_command_cb(nullptr, msg_id, resp, static_cast<unsigned>(bytes.size()), done,
                         transport);
    return g_told;
}

const std::string success(8, '\0');

TEST_F(ModemApiTest, ResponsePaths) {
    const auto one_error = [](uint32_t error) {
        return testing::ElementsAre(
            testing::AllOf(testing::Field(&Told::null, true), testing::Field(&Told::error, error)));
    };
    EXPECT_THAT(answer(0, ""), one_error(3));
    EXPECT_THAT(answer(0, success, -3), one_error(11));
    EXPECT_THAT(answer(0, std::string("\1\0\0\0\x34\0\0\0", 8)), one_error(8));
    EXPECT_THAT(answer(5, success), one_error(2));
    EXPECT_THAT(answer(5, std::string(7, '\0')), one_error(3)); /* too short for a result */
    EXPECT_TRUE(answer(0, success, 0, false).empty());
    vs_client_command_cb(nullptr, 0, ravex_malloc_adv(8, "test", 0), 8, nullptr, 0);
    /* The destructor sees that all of that was freed. */
}

TEST_F(ModemApiTest, ResponsesWithPayload) {
    const auto told = answer(0, success + std::string("\3\0\0\0abcd", 8));
    ASSERT_EQ(told.size(), 2u);
    EXPECT_EQ(told[0].data, "abc");
    EXPECT_EQ(told[0].error, 0u);
    EXPECT_TRUE(told[1].null);
    EXPECT_EQ(told[1].error, 2u);

    /* Lengths that the response does not hold. */
    EXPECT_EQ(answer(0, success + std::string("\xff\xff\xff\xff"
                                              "ab",
                                              6))[0]
                  .data,
              "ab");
    EXPECT_EQ(answer(0, success + "\3")[0].data, "");
    EXPECT_EQ(answer(0, success)[0].error, 0u);
}

TEST_F(ModemApiTest, ResponseWithoutMemoryForItsPayload) {

    g_orvik_system_malloc = [](size_t) -> void* { return nullptr; };
    auto* const resp = static_cast<uint8_t*>(std::calloc(1, 12));
    auto* const done =
        static_cast<modem_api_completion*>(std::calloc(1, sizeof(modem_api_completion)));
    *done = {tell, &g_told};
    g_told.clear();
    modem_api_process_response(0, resp, 12, done, 0);
    g_orvik_system_malloc = std::malloc;
    ASSERT_EQ(g_told.size(), 2u);
    EXPECT_EQ(g_told[0].error, 3u);
    EXPECT_EQ(g_told[1].error, 2u);
}

} // namespace
