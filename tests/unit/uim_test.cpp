#include "orvik_extend_cmn.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "log_lines.h"
#include "modem/modem.h"
#include "phone_test.h"
#include "qmi_uim.h"
#include "service_objects.h"
#include "traced_alloc.h"

namespace {

constexpr const char* eid_hex = "89001000000000000000000001234502";

class UimTest : public PhoneTest {
  protected:
    UimTest() { put("restart_ms", "30"); }
    ~UimTest() override { uim_qmi_client_recovery(); } /* no client outlives its phone */

    void fault(const std::string& rules) { put("faults", rules); }

    static int32_t power(uint32_t up, uint32_t slot, uint32_t ignore) {
        const uint32_t words[] = {up, slot, ignore};
        char args[sizeof words];
        std::memcpy(args, words, sizeof args);
        return orvik_uim_request_uicc_power_ex(args);
    }

    int32_t eid() {
        char slot = 2;
        eid_.fill(0);
        return orvik_uim_request_eid(&slot, eid_.data());
    }

    int32_t card_status() {
        char told[2] = {9, 9};
        const int32_t result = orvik_uim_get_card_status(told);
        states_ = {static_cast<uint8_t>(told[0]), static_cast<uint8_t>(told[1])};
        return result;
    }

    int32_t open() {
        uint8_t args[] = {2, 1};
        channel_ = 255;
        return orvik_uim_open_channel(args, &channel_);
    }

    static int32_t close(uint8_t channel) {
        uint8_t args[] = {2, channel};
        return orvik_uim_close_channel(args);
    }

    int32_t apdu(const std::vector<uint8_t>& bytes, uint8_t channel = 1) {
        std::vector<char> args(3 + bytes.size());
        args[0] = 2;
        args[1] = static_cast<char>(channel);
        args[2] = static_cast<char>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), args.begin() + 3);
        reply_.assign(256, 0xEE); /* as large as callers have it: ASan guards its end */
        return orvik_uim_send_apdu(args.data(), reply_.data());
    }

    /* Restarts the modem and waits until the error callback has told. */
    void restart_and_hear() {
        simphone::restart_modem();
        for (int i = 0; i < 500 && logged({"set SSR_Detected 1"}) == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_EQ(logged({"set SSR_Detected 1"}), 1);
    }

    int clients_made() const { return logged({"call qmi_client_init_instance:uim"}); }

    std::array<uint8_t, 16> eid_{};
    std::array<uint8_t, 2> states_{};
    uint8_t channel_ = 0;
    std::vector<uint8_t> reply_;
};

testing::AssertionResult in_order(const std::string& text,
                                  std::initializer_list<const char*> parts) {
    size_t at = 0;
    for (const char* const part : parts) {
        at = text.find(part, at);
        if (at == std::string::npos)
            return testing::AssertionFailure() << "no \"" << part << "\" in its place in\n" << text;
        at += std::strlen(part);
    }
    return testing::AssertionSuccess();
}

std::vector<uint8_t> bytes_of(std::string_view hex) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(
            static_cast<uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    return bytes;
}

std::string hex_of(const uint8_t* bytes, size_t size) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < size; ++i)
        (text += digits[bytes[i] >> 4]) += digits[bytes[i] & 15];
    return text;
}

/* ---- what crosses ---- */

TEST_F(UimTest, EveryMessageCrossesAsItsPublicTlvs) {
    power(0, 2, 1);
    power(1, 2, 7);
    eid();
    card_status();
    open();
    apdu(bytes_of("80e2910007bf3404820205e000"));
    close(1);
    /* Message id, length of the TLVs, TLVs; in front are the control flag and the transaction. */
    // clang-format off
    for (const char* const request : {
             "30000400" "01010002",
             "31000c00" "01010002" "10010001" "11010000",
             "65000400" "01010002",
             "2f000400" "10010001",
             "42001c00" "01010002" "10110010a0000005591010ffffffff8900000100" "11010001",
             "3b001e00" "01010002" "020f000d0080e2910007bf3404820205e000" "10010001" "11010001",
             "3f000c00" "01010002" "11010001" "13010000",
         })
        EXPECT_EQ(logged({"qmi uim req", request}), 1) << request;
    const std::string eid_response =
        std::string("65001b00" "02040000000000" "10110010") + eid_hex;
    for (const std::string& response : {
             eid_response,
             std::string("2f001500" "02040000000000" "150b00ffffffffffffffff020101"),
             std::string("42002c00" "02040000000000" "10010001" "1102009000"
                         "12190018621682027821" "8410a0000005591010ffffffff8900000100"),
             std::string("3b001400" "02040000000000" "100a000800bf34038001009000"),
             std::string("3f000700" "02040000000000"),
         })
        EXPECT_EQ(logged({"qmi uim rsp", response}), 1) << response;
    // clang-format on
}

TEST_F(UimTest, ServiceObjectsOnlyForTheirOwnVersion) {
    EXPECT_EQ(uim_get_service_object_internal_v01(1, 102, 6), &uim_qmi_idl_service_object_v01);
    EXPECT_EQ(sar_get_service_object_internal_v01(1, 14, 6), &sar_qmi_idl_service_object_v01);
    EXPECT_EQ(nas_get_service_object_internal_v01(1, 378, 6), &nas_qmi_idl_service_object_v01);
    EXPECT_EQ(vs_get_service_object_internal_v01(1, 2, 6), &vs_qmi_idl_service_object_v01);
    EXPECT_EQ(uim_get_service_object_internal_v01(1, 101, 6), nullptr);
    EXPECT_EQ(sar_get_service_object_internal_v01(2, 14, 6), nullptr);
    EXPECT_EQ(nas_get_service_object_internal_v01(1, 378, 5), nullptr);
}

/* ---- answers ---- */

TEST_F(UimTest, EidOnlyWhenTheCardTellsOne) {
    EXPECT_EQ(eid(), 0);
    EXPECT_EQ(hex_of(eid_.data(), eid_.size()), eid_hex);
    for (const char* const answer : {
             "02040000000000", /* no EID */
             "020400010003001011001089"
             "001000000000000000000001234502", /* refused */
         }) {
        fault(std::string("qmi_client_send_msg_sync:uim.0x65 * reply ") + answer);
        EXPECT_EQ(eid(), 0);
        EXPECT_EQ(eid_, (std::array<uint8_t, 16>{}));
    }
}

TEST_F(UimTest, OnlyTheFirstTwoCardsReachTheOutput) {
    const auto states_of = [this](const std::string& answer) {
        fault("qmi_client_send_msg_sync:uim.0x2f * reply " + answer);
        return printed([this] { EXPECT_EQ(card_status(), 0); });
    };
    const std::string five = states_of("02040000000000"
                                       "150e00ffffffffffffffff05"
                                       "0201000102");
    EXPECT_EQ(states_, (std::array<uint8_t, 2>{2, 1}));
    EXPECT_TRUE(in_order(
        five, {"check response", "SIM[0] State = 2", "SIM[1] State = 1", "SIM[4] State = 2"}));
    states_of("02040000000000"
              "150a00ffffffffffffffff0101"); /* one card */
    EXPECT_EQ(states_, (std::array<uint8_t, 2>{1, 3}));
    for (const char* const nothing : {
             "02040000000000"
             "150900ffffffffffffffff00", /* none listed */
             "02040000000000",           /* no extended status */
             "02040001000300"
             "150b00ffffffffffffffff020101", /* refused */
         }) {
        states_of(nothing);
        EXPECT_EQ(states_, (std::array<uint8_t, 2>{3, 3})) << nothing;
    }
}

TEST_F(UimTest, ChannelIsTakenOnlyFromAnAnswerThatHoldsOne) {
    fault("qmi_client_send_msg_sync:uim.0x42 * reply 02040000000000");
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(channel_, 255);
    fault("qmi_client_send_msg_sync:uim.0x42 * reply 0204000100300010010005");
    const std::string text = printed([this] { EXPECT_EQ(open(), -1); });
    EXPECT_EQ(channel_, 255);
    EXPECT_TRUE(in_order(text, {"orvik_uim_open_channel failed\n"}));
}

TEST_F(UimTest, RefusedCloseSucceedsSilently) {
    const std::string text = printed([] { EXPECT_EQ(close(2), 0); });
    EXPECT_EQ(logged({"qmi uim rsp", "3f000700"
                                     "02040001003000"}),
              1);
    EXPECT_FALSE(in_order(text, {"orvik_uim_close_channel successfully"}));
    EXPECT_EQ(printed([] { close(2); }).find("error"), std::string::npos);
}

TEST_F(UimTest, ApduReplyKeepsTheLowByteOfItsLength) {
    for (const size_t size : {0u, 1u, 255u, 256u, 257u, 1024u}) {
        std::vector<uint8_t> value = {static_cast<uint8_t>(size), static_cast<uint8_t>(size >> 8)};
        for (size_t i = 0; i < size; ++i)
            value.push_back(static_cast<uint8_t>(i + 1));
        const auto length = static_cast<uint8_t>(value.size());
        const auto length_high = static_cast<uint8_t>(value.size() >> 8);
        const std::vector<uint8_t> head = {2, 4, 0, 0, 0, 0, 0, 0x10, length, length_high};
        fault("qmi_client_send_msg_sync:uim.0x3b * reply " + hex_of(head.data(), head.size()) +
              hex_of(value.data(), value.size()));
        ASSERT_EQ(apdu({0x80}), 0) << size;
        const size_t kept = size & 0xFF;
        EXPECT_EQ(reply_[0], kept);
        for (size_t i = 0; i < 255; ++i)
            EXPECT_EQ(reply_[i + 1], i < kept ? static_cast<uint8_t>(i + 1) : 0xEE) << size;
    }
    fault("qmi_client_send_msg_sync:uim.0x3b * reply 02040000000000"); /* no reply at all */
    EXPECT_EQ(apdu({0x80}), 0);
    EXPECT_EQ(reply_[0], 0);
    fault("qmi_client_send_msg_sync:uim.0x3b * reply 0204000100030010040002009000");
    EXPECT_EQ(apdu({0x80}), -1);
    EXPECT_EQ(reply_[0], 0xEE);
}

TEST_F(UimTest, AnswersThatLieAboutTheirLengthsAreTransportErrors) {
    for (const char* const kind : {"empty", "short", "long", "garbage"}) {
        fault(std::string("qmi_client_send_msg_sync:uim.* * ") + kind);
        EXPECT_NE(eid(), 0) << kind;
        EXPECT_NE(card_status(), 0) << kind;
        EXPECT_EQ(states_, (std::array<uint8_t, 2>{3, 3}));
        EXPECT_NE(open(), 0) << kind;
        EXPECT_NE(apdu({0x80}), 0) << kind;
        EXPECT_NE(power(0, 2, 0), 0) << kind;
    }
}

/* ---- the client's life ---- */

TEST_F(UimTest, OneClientServesAllOperations) {
    const std::string first = printed([this] { eid(); });
    EXPECT_TRUE(in_order(first, {"RIL[orvik_uim_request_eid:",
                                 "orvik_uim_request_eid try init_uim_qmi_client (nil)\n",
                                 "RIL[init_uim_qmi_client:", "RIL[orvik_uim_request_eid:",
                                 "orvik_uim_request_eid uim_qmi_client 0x"}));
    const std::string second = printed([this] { apdu({0x80}); });
    EXPECT_TRUE(in_order(
        second, {"RIL[orvik_uim_send_apdu:", "]: orvik_uim_close_channel uim_qmi_client 0x"}));
    EXPECT_EQ(clients_made(), 1);
}

TEST_F(UimTest, RestartBetweenOperationsMakesAFreshClientBeforeTheSend) {
    eid();
    restart_and_hear();
    const std::string text = printed([this] { EXPECT_EQ(eid(), 0); });
    EXPECT_TRUE(in_order(text, {"SSR_Detected, try recovery\n",
                                "uim_qmi_client_recovery qmi_client_release 0x",
                                "try init_uim_qmi_client (nil)", "init_uim_qmi_client 0x"}));
    EXPECT_EQ(hex_of(eid_.data(), eid_.size()), eid_hex);
    EXPECT_FALSE(in_order(printed([this] { eid(); }), {"recovery"}));
    EXPECT_EQ(clients_made(), 2);
}

TEST_F(UimTest, CardStatusDoesNotLookForARestart) {
    eid();
    restart_and_hear();
    const std::string text = printed([this] { EXPECT_EQ(card_status(), QMI_SERVICE_ERR); });
    EXPECT_FALSE(in_order(text, {"SSR_Detected, try recovery"}));
    EXPECT_TRUE(in_order(text, {"send msg sync client error = -2\n", "QMI error, try recovery\n",
                                "qmi_client_release 0x"}));
    EXPECT_EQ(card_status(), 0);
    EXPECT_EQ(clients_made(), 2);
}

TEST_F(UimTest, ThirdFailureOfAClientReleasesItWhateverSucceededBetween) {
    fault("qmi_client_send_msg_sync:uim.0x65 * timeout");
    EXPECT_EQ(eid(), QMI_TIMEOUT_ERR);
    EXPECT_EQ(power(1, 2, 0), 0);
    EXPECT_EQ(eid(), QMI_TIMEOUT_ERR);
    fault("qmi_client_send_msg_sync:uim.0x30 * error -16");
    const std::string third = printed([] { EXPECT_EQ(power(0, 2, 0), -16); });
    EXPECT_TRUE(
        in_order(third, {"power down sim\n", "send msg sync client error = -16, failed_cnt = 2\n",
                         "uicc_power_ex res = -16, failed_cnt = 3\n", "QMI error, try recovery\n",
                         "qmi_client_release 0x"}));
    fault("");
    EXPECT_TRUE(in_order(printed([] { EXPECT_EQ(power(0, 2, 0), 0); }),
                         {"try init_uim_qmi_client (nil)", "res = 0, failed_cnt = 0\n"}));
    EXPECT_EQ(clients_made(), 2);
}

TEST_F(UimTest, FailuresAroundTheClientAreToldAndSurvived) {
    fault("qmi_client_init_instance:uim * error -1");
    std::string text = printed([this] { EXPECT_EQ(eid(), -1); });
    EXPECT_TRUE(in_order(text, {"qmi_client_init UIM instance failed, qmi_client_error = -1\n",
                                "RIL[orvik_uim_request_eid:", "]: init_uim_qmi_client failed\n"}));
    EXPECT_EQ(logged({"qmi_client_send_msg_sync:uim"}), 0);

    fault("qmi_client_register_error_cb:uim * error -1\nqmi_client_release:uim * error -1");
    text = printed([this] { EXPECT_EQ(eid(), 0); });
    EXPECT_TRUE(in_order(text, {"init_uim_qmi_client 0x", "qmi_client_register_error_cb failed\n",
                                "uim_qmi_client 0x"}));
    text = printed([] { uim_qmi_client_recovery(); });
    EXPECT_TRUE(in_order(text, {"qmi_client_release 0x", "qmi_client_release failed\n"}));
    EXPECT_EQ(printed([] { uim_qmi_client_recovery(); }), "");
    EXPECT_EQ(eid(), 0);
}

TEST_F(UimTest, ErrorCallbackAndOperationsDoNotRace) {
    std::atomic<bool> stop{false};
    std::thread framework([&] {
        while (!stop) {
            error_cb(nullptr, QMI_SERVICE_ERR, nullptr);
            error_cb(nullptr, QMI_TIMEOUT_ERR, nullptr);
        }
    });
    printed([this] {
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(eid(), 0);
    });
    stop = true;
    framework.join();
}

/* ---- no memory ---- */

std::atomic<int> g_allocations_left;

void* limited_malloc(size_t size) { return g_allocations_left-- > 0 ? std::malloc(size) : nullptr; }

TEST_F(UimTest, WithoutMemoryNothingIsSentAndNothingLeaks) {
    struct Row {
        std::function<int32_t()> operation;
        const char* text;
    };
    const Row rows[] = {
        {[] { return power(0, 2, 0); }, "]: uim_power_down malloc failed\n"},
        {[] { return power(1, 2, 0); }, "]: uim_power_up malloc failed\n"},
        {[this] { return eid(); }, "]: orvik_uim_request_eid malloc failed\n"},
        {[this] { return card_status(); }, "]: orvik_uim_get_card_status malloc failed\n"},
        {[this] { return open(); }, "]: orvik_uim_open_channel malloc failed\n"},
        {[] { return close(1); }, "]: orvik_uim_close_channel malloc failed\n"},
        {[this] { return apdu({0x80}); }, "]: orvik_uim_send_apdu malloc failed\n"},
    };
    for (const Row& row : rows)
        for (const int granted : {0, 1}) {
            g_allocations_left = granted;
            g_orvik_system_malloc = limited_malloc;
            const std::string text = printed([&] { EXPECT_EQ(row.operation(), -1); });
            g_orvik_system_malloc = std::malloc;
            EXPECT_TRUE(in_order(text, {"qcril_malloc_adv: Fail to allocate memory\n", row.text}));
        }
    EXPECT_EQ(logged({"qmi_client_send_msg_sync:uim"}), 0);
    EXPECT_TRUE(in_order(printed([] { power(0, 2, 0); }), {"res = 0, failed_cnt = 0"}));
}

/* ---- SAR ---- */

TEST_F(UimTest, SarStateIsToldWithOrWithoutItsFlag) {
    put("sar/dsi", "21");
    EXPECT_TRUE(in_order(printed([] { EXPECT_EQ(orvik_get_sar_dsi(), 21); }),
                         {"dsi vailid = 1 , dsi value = 21\n"}));
    EXPECT_EQ(logged({"qmi sar req", "02000000"}), 1);
    EXPECT_EQ(logged({"qmi sar rsp", "02000e00"
                                     "02040000000000"
                                     "10040015000000"}),
              1);
    put("sar/dsi", "none");
    EXPECT_TRUE(in_order(printed([] { EXPECT_EQ(orvik_get_sar_dsi(), 0); }),
                         {"dsi vailid = 0 , dsi value = 0\n"}));
}

TEST_F(UimTest, WithoutSarServiceTheAnswerIsQuick) {
    put("services", "vendor uim");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(in_order(printed([] { EXPECT_EQ(orvik_get_sar_dsi(), -1); }),
                         {"qmi_client_init_instance failed, qmi_client_error = -3\n"}));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    put("services", "sar");
    fault("qmi_client_send_msg_sync:sar.0x02 * timeout");
    EXPECT_TRUE(in_order(printed([] { EXPECT_EQ(orvik_get_sar_dsi(), -1); }),
                         {"qmi_client_send_msg_sync failed, qmi_client_error = -3\n"}));
}

/* ---- the phone's cards ---- */

TEST_F(UimTest, ChannelsAreFewAndOutliveTheirClient) {
    for (const uint8_t expected : {1, 2, 3}) {
        EXPECT_EQ(open(), 0);
        EXPECT_EQ(channel_, expected);
        uim_qmi_client_recovery();
    }
    EXPECT_EQ(open(), -1);
    EXPECT_EQ(logged({"qmi uim rsp", "42000700"
                                     "02040001004400"}),
              1);
    close(2);
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(channel_, 2);
    power(0, 2, 0);
    power(1, 2, 1);
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(channel_, 1);
    restart_and_hear();
    EXPECT_EQ(apdu(bytes_of("80e2910006bf3e035c015a00")), -1);
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(channel_, 1);
}

TEST_F(UimTest, EuiccAnswersEachRequestWithItsStatusWord) {
    open();
    const std::string told = std::string("bf3e125a10") + eid_hex + "9000";
    // clang-format off
    const std::pair<const char*, std::string> rows[] = {
        {"80e2910006bf3e035c015a00", told},
        {"81e2910006bf3e035c015a", told},           /* another channel's class, no Le */
        {"80e2910006bf3e035c015b00", "6a80"},       /* another tag list */
        {"80e2910003bf2d0000", "6a88"},             /* unknown request */
        {"80e2910007bf3404820205400000", "6700"},   /* longer than Lc says */
        {"80e2910007bf34048202054000", "bf34038001019000"}, /* test profiles: there is none */
        {"80e2910007bf3405820205e000", "6a80"},     /* inner length */
        {"80e2110006bf3e035c015a00", "6a86"},       /* more blocks to come */
        {"80ca00ff00", "6d00"},
        {"00e2910006bf3e035c015a00", "6e00"},
        {"80e291", "6700"},
        {"80e2910007bf3404820205e000", "bf34038001009000"},
        {"80e2910007bf3404820205e000", "bf34038001019000"}, /* nothing left to delete */
    };
    // clang-format on
    for (const auto& [request, expected] : rows) {
        EXPECT_EQ(apdu(bytes_of(request)), 0);
        EXPECT_EQ(hex_of(reply_.data() + 1, reply_[0]), expected) << request;
    }
    EXPECT_EQ(apdu(bytes_of("80ca00ff00"), 2), -1); /* a channel that is not open */
}

TEST_F(UimTest, CardStatesFollowTheFilesPowerAndTheDetectLine) {
    const auto states = [this] {
        EXPECT_EQ(card_status(), 0);
        return states_;
    };
    using Pair = std::array<uint8_t, 2>;
    EXPECT_EQ(states(), (Pair{1, 1}));
    put("sim/1", "absent\n");
    put("sim/2", "error\n");
    EXPECT_EQ(states(), (Pair{0, 2}));
    put("sim/1", "present");
    put("sim/2", "present");
    power(0, 2, 0);
    EXPECT_EQ(states(), (Pair{1, 2})); /* no power */
    simphone::restart_modem();         /* the next start gives it power */
    uim_qmi_client_recovery();
    EXPECT_EQ(states(), (Pair{1, 1}));
    put("sim/1.detect", "low sim");
    put("sim/2.detect", "low sim");
    EXPECT_EQ(states(), (Pair{0, 1})); /* the eUICC has no detect line */
    put("sim/2.kind", "psim");
    EXPECT_EQ(states(), (Pair{0, 0}));
    power(0, 2, 0);
    power(1, 2, 0);
    EXPECT_EQ(get("sim/2.power").substr(0, 3), "off");
    power(1, 2, 1);
    EXPECT_EQ(get("sim/2.power").substr(0, 3), "on ");
    put("sim/1.detect", "low general");
    EXPECT_EQ(states(), (Pair{1, 0}));
    put("sim/hotswap", "1000 1000 1 " + std::to_string(std::time(nullptr)) + "000");
    EXPECT_EQ(states(), (Pair{0, 0})); /* the test has pulled the tray */
}

} // namespace
