// SPDX-License-Identifier: Apache-2.0
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
#include "orvik_extend_idl.h"
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
    EXPECT_NE(orvik_extend_get_service_object_internal_v01(1, 1, 6), nullptr);
    EXPECT_EQ(orvik_extend_get_service_object_internal_v01(1, 0, 6), nullptr);
}

/* ---- the client's life ---- */

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
    put("faults", "qmi_client_send_msg_sync:uim.0x65 * timeout");
    EXPECT_EQ(eid(), QMI_TIMEOUT_ERR);
    EXPECT_EQ(power(1, 2, 0), 0);
    EXPECT_EQ(eid(), QMI_TIMEOUT_ERR);
    put("faults", "qmi_client_send_msg_sync:uim.0x30 * error -16");
    const std::string third = printed([] { EXPECT_EQ(power(0, 2, 0), -16); });
    EXPECT_TRUE(
        in_order(third, {"power down sim\n", "send msg sync client error = -16, failed_cnt = 2\n",
                         "uicc_power_ex res = -16, failed_cnt = 3\n", "QMI error, try recovery\n",
                         "qmi_client_release 0x"}));
    put("faults", "");
    EXPECT_TRUE(in_order(printed([] { EXPECT_EQ(power(0, 2, 0), 0); }),
                         {"try init_uim_qmi_client (nil)", "res = 0, failed_cnt = 0\n"}));
    EXPECT_EQ(clients_made(), 2);
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

/* ---- the phone's cards ---- */

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

} // namespace
