// SPDX-License-Identifier: Apache-2.0
#include "service_client.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

#include "client_statuses.h"
#include "eventually.h"
#include "modem/modem.h"
#include "phone_test.h"
#include "qmi_vs.h"

namespace {

using testing::Each;
using testing::ElementsAre;

class ServiceClientTest : public PhoneTest {
  protected:
    ServiceClientTest() {
        put("restart_ms", "20");
        g_client_retry_wait_ms = 5;
        statuses().clear();
    }
    ~ServiceClientTest() override {
        vs_client_release();
        sar_client_release();
        nas_0_client_release();
        nas_1_client_release();
        g_client_retry_wait_ms = 1000;
        g_client_thread_create = pthread_create;
    }

    static ClientStatuses& statuses() { return ClientStatuses::instance(); }

    static int start_vs(client_indication_handler handler = nullptr) {
        vs_init();
        vs_client_set_operational_status_callback(ClientStatuses::record);
        return vs_client_init(handler);
    }

    static int set_feature() {
        vs_set_feature_req_v01 req{2, 1, 1, 1, 0};
        vs_set_feature_resp_v01 resp{};
        return vs_client_send_msg_sync(QMI_VS_SET_FEATURE, &req, sizeof req, &resp, sizeof resp);
    }

    void wait_logged(const char* text) const {
        EXPECT_TRUE(eventually([&] { return logged({text}) != 0; })) << text << " is not logged";
    }

    /* Every client and notifier that was made was released, once, and nothing was sent by one that
     * was not there. */
    void expect_handles_balanced(const char* prefix) {
        const int made = logged({prefix, "qmi_client_init_instance returned (0)"}) +
                         logged({prefix, "qmi_client_notifier_init return 0"});
        EXPECT_EQ(logged({"call qmi_client_release:vs"}), made);
        EXPECT_EQ(logged({"call qmi_client_release:none"}), 0);
        EXPECT_EQ(logged({"call qmi_client_send_msg_sync:none"}), 0);
    }
};

TEST_F(ServiceClientTest, LifeWithARestartTellsEveryStatusInItsOrder) {
    EXPECT_EQ(start_vs(), 1);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3));
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(6));
    EXPECT_EQ(set_feature(), QMI_NO_ERR);
    EXPECT_EQ(vs_client_release(), 1);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 6, 3, 0));
    EXPECT_THAT(statuses().kinds(), Each(0));
    EXPECT_EQ(set_feature(), QMI_CLIENT_INVALID_CLIENT);
    expect_handles_balanced("vs_client");

    for (const char* line : {
             "android 3 RAVEX vs_client_init: Client connecting to QMI FW",
             "android 4 RAVEX vs_client_get_master_port: using port 65535",
             "android 4 RAVEX vs_client_init_client_handles: Trying qmi_client_init_instance() try "
             "# 0 port[65535]",
             "android 4 RAVEX vs_client_init_client_handles: qmi_client_init_instance returned (0)",
             "android 4 RAVEX vs_client_init_client_handles: function exit with ret 0",
             "android 4 RAVEX vs_client_init: function exit with ret 1",
             "android 4 RAVEX vs_client_service_down_event: service down with error -2",
             "android 4 RAVEX vs_client_release_qmi_client_thread: qmi_client_notifier_init return "
             "0",
             "android 4 RAVEX vs_client_release_qmi_client_thread: qmi_client_register_notify_cb 0",
         })
        EXPECT_GE(logged({line}), 1) << line;
}

TEST_F(ServiceClientTest, ServiceThatNeverAnswersIsTriedTenTimes) {
    put("services", "vendor");
    EXPECT_EQ(start_vs(), 0);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 2));
    EXPECT_EQ(logged({"call qmi_client_init_instance:vs"}), 10);
    EXPECT_EQ(logged({"vs_client_init_client_handles: Trying qmi_client_init_instance() try # 9 "
                      "port[65535]"}),
              1);
    EXPECT_EQ(logged({"android 4 RAVEX vs_client_init_client_handles: qmi_client_init_instance "
                      "returned failure(-3)"}),
              1);
    EXPECT_EQ(logged({"vs_client_init_client_handles: function exit with ret 1"}), 1);
    EXPECT_EQ(logged({"vs_client_init: function exit with ret 0"}), 1);
}

TEST_F(ServiceClientTest, LaterAttemptConnects) {
    put("faults", "qmi_client_init_instance:vs 1 error -5\n"
                  "qmi_client_init_instance:vs 2 timeout\n");
    EXPECT_EQ(start_vs(), 1);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3));
    EXPECT_EQ(logged({"Trying qmi_client_init_instance() try # 2"}), 1);
    EXPECT_EQ(logged({"Trying qmi_client_init_instance() try # 3"}), 0);
}

TEST_F(ServiceClientTest, ResumeThatFailsEndsWithSeven) {
    ASSERT_EQ(start_vs(), 1);
    put("faults", "qmi_client_init_instance:vs * error -1\n");
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(6));
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 6, 7));
}

TEST_F(ServiceClientTest, NotifierThatFailsLeavesTheClientSuspended) {
    ASSERT_EQ(start_vs(), 1);
    put("faults", "qmi_client_notifier_init:vs * error -15\n");
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(4));
    wait_logged("vs_client_release_qmi_client_thread: qmi_client_notifier_init return -15");
    vs_client_release();
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 0));
    EXPECT_EQ(logged({"qmi_client_register_notify_cb"}), 0);
    expect_handles_balanced("vs_client");
}

/* Fails from the Nth worker on. */
std::atomic<int> g_workers_left;
int create_some(pthread_t* thread, const pthread_attr_t* attr, void* (*body)(void*), void* arg) {
    int state = PTHREAD_CREATE_JOINABLE;
    pthread_attr_getdetachstate(attr, &state);
    EXPECT_EQ(state, PTHREAD_CREATE_DETACHED);
    return g_workers_left-- > 0 ? pthread_create(thread, attr, body, arg) : EAGAIN;
}

TEST_F(ServiceClientTest, WorkersThatCantBeStartedAreTold) {
    g_client_thread_create = create_some;
    g_workers_left = 0;
    ASSERT_EQ(start_vs(), 1);
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(4));
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 0));
    vs_client_release();

    statuses().clear();
    g_workers_left = 1;
    ASSERT_EQ(start_vs(), 1);
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(6));
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 6, 7));
    /* The notifier stands: the next restart brings the client back. */
    g_workers_left = 1;
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(8));
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 6, 7, 6, 3));
    EXPECT_EQ(set_feature(), QMI_NO_ERR);
    vs_client_release();
    expect_handles_balanced("vs_client");
}

TEST_F(ServiceClientTest, ReleaseWhileSuspendedReleasesTheNotifier) {
    put("restart_ms", "100000");
    ASSERT_EQ(start_vs(), 1);
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(4));
    vs_client_release();
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 0));
    expect_handles_balanced("vs_client");
}

TEST_F(ServiceClientTest, ReleaseThatEndsAConnectingLetsItFailFirst) {
    g_client_retry_wait_ms = 100000;
    put("services", "vendor");
    std::thread connecting([] { EXPECT_EQ(start_vs(), 0); });
    wait_logged("Trying qmi_client_init_instance() try # 0");
    EXPECT_EQ(vs_client_release(), 1);
    connecting.join();
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 2, 0));
}

TEST_F(ServiceClientTest, EventsThatAreNoneOfOursAreIgnored) {
    ASSERT_EQ(start_vs(), 1);
    vs_client_service_up_event(nullptr, nullptr, QMI_CLIENT_SERVICE_COUNT_INC, nullptr);
    vs_client_service_down_event(reinterpret_cast<qmi_client_type>(0x999), -2, nullptr);
    put("restart_ms", "100000");
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(4));
    vs_client_service_up_event(nullptr, nullptr, QMI_CLIENT_SERVICE_COUNT_DEC, nullptr);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5));
}

TEST_F(ServiceClientTest, RestartInTheMiddleOfARequestAndTwiceInARow) {
    ASSERT_EQ(start_vs(), 1);
    put("faults", "qmi_client_send_msg_sync:vs.0x03 1 restart\n");
    EXPECT_EQ(set_feature(), QMI_SERVICE_ERR);
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(6));
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 6, 3));
    EXPECT_EQ(set_feature(), QMI_NO_ERR);
}

TEST_F(ServiceClientTest, InitOfALiveClientLeavesNothingBehind) {
    ASSERT_EQ(start_vs(), 1);
    vs_init();
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3));
    EXPECT_EQ(vs_client_init_client_handles(), 1);
    EXPECT_EQ(vs_client_init_client_handles(), 1);
    vs_client_release();
    expect_handles_balanced("vs_client");
}

/* ---- who waits for whom ---- */

TEST_F(ServiceClientTest, ReleaseWaitsForACallbackUnderWay) {
    put("restart_ms", "100000");
    static std::atomic<int> stage;
    stage = 0;
    statuses().clear([](int32_t status) {
        if (status != CLIENT_SUSPENDED)
            return;
        stage = 1;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        stage = 2;
    });
    ASSERT_EQ(start_vs(), 1);
    simphone::restart_modem();
    ASSERT_TRUE(eventually([] { return stage != 0; })) << "no suspension";
    vs_client_release();
    EXPECT_EQ(stage, 2);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 0));
}

/* Starts workers that don't begin before they may. */
std::atomic<bool> g_worker_made, g_worker_may_begin, g_worker_ended;
int create_slow(pthread_t*, const pthread_attr_t*, void* (*body)(void*), void* arg) {
    std::thread([body, arg] {
        EXPECT_TRUE(eventually([] { return g_worker_may_begin.load(); }));
        body(arg);
        g_worker_ended = true;
    }).detach();
    g_worker_made = true;
    return 0;
}

class SlowWorkerTest : public ServiceClientTest {
  protected:
    SlowWorkerTest() {
        g_client_thread_create = create_slow;
        g_worker_made = g_worker_may_begin = g_worker_ended = false;
        put("restart_ms", "100000");
    }

    /* A client that was told 4, whose worker has not begun. */
    void begin_suspension() {
        ASSERT_EQ(start_vs(), 1);
        simphone::restart_modem();
        ASSERT_TRUE(eventually([] { return g_worker_made.load(); })) << "no worker";
    }

    static void let_worker_run() {
        g_worker_may_begin = true;
        EXPECT_TRUE(eventually([] { return g_worker_ended.load(); })) << "the worker hangs";
    }
};

TEST_F(SlowWorkerTest, SuspensionUnderWayIsFinishedBeforeARelease) {
    begin_suspension();
    vs_client_release();
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 0));
    EXPECT_EQ(logged({"qmi_client_notifier_init return 0"}), 1);
    EXPECT_EQ(logged({"qmi_client_register_notify_cb 0"}), 1);
    expect_handles_balanced("vs_client");

    /* The worker that comes now finds nothing due, also in a client that lives again. */
    put("restart_ms", "0");
    EXPECT_EQ(start_vs(), 1);
    let_worker_run();
    EXPECT_EQ(set_feature(), QMI_NO_ERR);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 0, 1, 3));
}

TEST_F(SlowWorkerTest, InitDuringASuspensionWaitsItsTurn) {
    static std::atomic<int> handled;
    handled = 0;
    begin_suspension();
    put("restart_ms", "0");
    EXPECT_EQ(vs_client_init([](uint32_t, void*, uint32_t) { ++handled; }), 1);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 1, 3));
    let_worker_run();
    put("ind/vs.0x0601", std::string("\x01\x01\x00\x07", 4));
    EXPECT_EQ(set_feature(), QMI_NO_ERR);
    EXPECT_EQ(handled, 1);
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 1, 3));
    vs_client_release();
    expect_handles_balanced("vs_client");
}

TEST_F(ServiceClientTest, InitDuringAnotherConnectionWaitsItsTurn) {
    static std::atomic<int> handled;
    handled = 0;
    put("faults", "qmi_client_init_instance:vs 1 timeout\n");
    g_client_retry_wait_ms = 100;
    std::thread first([] { EXPECT_EQ(start_vs(), 1); });
    wait_logged("Trying qmi_client_init_instance() try # 0");
    EXPECT_EQ(vs_client_init([](uint32_t, void*, uint32_t) { ++handled; }), 1);
    first.join();
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 1, 3));
    put("ind/vs.0x0601", std::string("\x01\x01\x00\x07", 4));
    EXPECT_EQ(set_feature(), QMI_NO_ERR);
    EXPECT_EQ(handled, 1);
    vs_client_release();
    expect_handles_balanced("vs_client");
}

TEST_F(ServiceClientTest, ServiceThatGoesDownBeforeConnectedIsTold) {
    statuses().clear([this](int32_t status) {
        if (status != CLIENT_CONNECTED || logged({"service down with error -2"}) != 0)
            return;
        simphone::restart_modem();
        wait_logged("service down with error -2");
    });
    ASSERT_EQ(start_vs(), 1);
    ASSERT_TRUE(statuses().wait_for(6));
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 6, 3));
}

/* The notifier tells at once that the service is up, while the suspension is not over. */
TEST_F(ServiceClientTest, ServiceThatComesUpBeforeTheSuspensionIsOver) {
    put("restart_ms", "0");
    put("faults", "qmi_client_register_notify_cb:vs 1 late 50\n");
    ASSERT_EQ(start_vs(), 1);
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(4));
    wait_logged("call qmi_client_register_notify_cb:vs");
    vs_client_service_up_event(nullptr, nullptr, QMI_CLIENT_SERVICE_COUNT_INC, nullptr);
    ASSERT_TRUE(statuses().wait_for(6));
    EXPECT_THAT(statuses().seen(), ElementsAre(1, 3, 4, 5, 6, 3));
}

TEST_F(ServiceClientTest, HandleIsNotReleasedUnderARequest) {
    ASSERT_EQ(start_vs(), 1);
    put("faults", "qmi_client_send_msg_sync:vs.0x03 1 late 100\n");
    std::thread request([] { EXPECT_EQ(set_feature(), QMI_NO_ERR); });
    wait_logged("qmi vs req");
    simphone::restart_modem();
    ASSERT_TRUE(statuses().wait_for(4));
    request.join();
    const std::string log = get("log");
    EXPECT_LT(log.find("qmi vs rsp"), log.find("call qmi_client_release:vs"));
}

/* ---- the instances ---- */

TEST_F(ServiceClientTest, NasClientsBindAfterEachAttemptAndAskForIndications) {
    put("faults", "qmi_client_init_instance:nas 1 timeout\n");
    nas_0_init();
    nas_1_init();
    nas_0_client_set_operational_status_callback(ClientStatuses::record);
    nas_1_client_set_operational_status_callback(ClientStatuses::record);
    EXPECT_EQ(nas_0_client_init(nullptr), 1);
    EXPECT_EQ(nas_1_client_init(nullptr), 1);
    EXPECT_THAT(statuses().kinds(), ElementsAre(2, 2, 3, 3));
    /* Only the first of three attempts fails, and its bind reaches nobody. */
    EXPECT_EQ(logged({"call qmi_client_send_msg_sync:none"}), 1);
    EXPECT_EQ(logged({"call qmi_client_send_msg_sync:nas.0x45"}), 2);
    EXPECT_EQ(logged({"qmi nas req 000100450007000104000000", "0000"}), 0); /* u8 on the wire */
    EXPECT_EQ(logged({"qmi nas req 00010045000400"
                      "01010000"}),
              1);
    EXPECT_EQ(logged({"qmi nas req 00010045000400"
                      "01010001"}),
              1);
    EXPECT_EQ(logged({"qmi nas req 00020003000400"
                      "13010000"}),
              2);
    EXPECT_EQ(
        logged({"RAVEX nas_0_client_set_networking_indications: enable_indication result: 0"}), 1);
    EXPECT_EQ(
        logged({"RAVEX nas_1_client_set_networking_indications: enable_indication result: 0"}), 1);
    EXPECT_EQ(logged({"RAVEX nas_0_client_init_client_handles: Trying"}), 2);
}

TEST_F(ServiceClientTest, SarConnectsAndNasNamesUnknownIndications) {
    sar_init();
    sar_client_set_operational_status_callback(ClientStatuses::record);
    EXPECT_EQ(sar_client_init([](uint32_t, void*, uint32_t) { ADD_FAILURE(); }), 1);
    EXPECT_THAT(statuses().kinds(), ElementsAre(1, 1));
    nas_1_init();
    put("ind/nas.0x0024", std::string("\x01\x01\x00\x01", 4));
    EXPECT_EQ(nas_1_client_init([](uint32_t, void*, uint32_t) { ADD_FAILURE(); }), 1);
    nas_1_client_set_networking_indications();
    EXPECT_EQ(logged({"RAVEX nas_1_client_ind_hdlr: Handling indication msg 0x24"}), 1);
    EXPECT_EQ(logged({"RAVEX nas_1_client_ind_hdlr: Unknown indication msg 24"}), 1);
}

/* ---- restarts at any moment ---- */

/* True when each status may follow the one before. */
bool lawful(const std::vector<int32_t>& seen) {
    const auto may_follow = [](int32_t before, int32_t after) {
        switch (after) {
        case 0: /* what was told to begin has come to its end */
            return before == 3 || before == 5 || before == 7;
        case 1:
            return before == 0;
        case 3:
            return before == 1 || before == 6;
        case 7:
            return before == 6;
        default: /* 4, 5, 6 */
            return before + 1 == after;
        }
    };
    int32_t before = 0;
    for (const int32_t status : seen) {
        if (!may_follow(before, status))
            return false;
        before = status;
    }
    return true;
}

TEST_F(ServiceClientTest, RandomRestarts) {
    const char* const wanted = std::getenv("KVT_RESTARTS");
    const int restarts = wanted != nullptr ? std::atoi(wanted) : 20;
    const char* const seed = std::getenv("KVT_SEED");
    std::mt19937 random(seed != nullptr ? static_cast<unsigned>(std::atoi(seed)) : 1U);
    put("restart_ms", "4");
    put("stats/0.94", "12345678");

    int released = 0;
    ASSERT_EQ(start_vs([](uint32_t, void*, uint32_t) { set_feature(); }), 1);
    std::atomic<bool> done{false};
    std::thread requests([&done] {
        while (!done) {
            set_feature();
            vs_client_set_operational_status_callback(ClientStatuses::record); /* the same */
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
    });
    for (int i = 0; i < restarts; ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 25000));
        if (random() % 4 == 0)
            put("ind/vs.0x0601", std::string("\x01\x01\x00\x07", 4));
        simphone::restart_modem();
        if (random() % 3 == 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 12000));
            vs_client_release();
            ++released;
            start_vs([](uint32_t, void*, uint32_t) { set_feature(); });
        }
    }
    EXPECT_TRUE(statuses().wait_for_last(CLIENT_CONNECTED, CLIENT_INIT_FAILED));
    done = true;
    requests.join();
    vs_client_release();
    const std::vector<int32_t> seen = statuses().seen();
    EXPECT_TRUE(lawful(seen)) << testing::PrintToString(seen);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 0), released + 1);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), CLIENT_INIT_FAILED), 0);
    /* Only a release cuts a resumption short. */
    for (auto failed = seen.begin();
         (failed = std::find(failed, seen.end(), CLIENT_RESUME_FAILED)) != seen.end(); ++failed)
        EXPECT_EQ(*(failed + 1), CLIENT_RELEASED) << testing::PrintToString(seen);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), CLIENT_SUSPENDING),
              std::count(seen.begin(), seen.end(), CLIENT_SUSPENDED));
    if (!has("log.1"))
        expect_handles_balanced("vs_client");
    RecordProperty("restarts", restarts);
    RecordProperty("suspensions",
                   static_cast<int>(std::count(seen.begin(), seen.end(), CLIENT_SUSPENDED)));
}

} // namespace
