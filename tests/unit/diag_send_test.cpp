// SPDX-License-Identifier: Apache-2.0
/* The DIAG engine against the phone's library: what it returns, copies and prints. */
#include <cstring>
#include <thread>

#include <gmock/gmock.h>

#include "diag_test.h"
#include "orvik_diag_send.h"

using testing::HasSubstr;
using testing::Not;

namespace {

TEST_F(DiagTest, LengthsAtTheEdgesAreCheckedBeforeAnythingIsSent) {
    const std::string packet(5000, '\x7B');
    EXPECT_EQ(send(callback, packet.substr(0, 4096)).result, 0);
    for (const size_t size : {size_t{0}, size_t{4097}}) {
        Sent sent = send(dci, packet.substr(0, size));
        EXPECT_EQ(sent.result, 1);
        EXPECT_THAT(sent.text,
                    HasSubstr("Invalid input parameter, data_len = " + std::to_string(size)));
        EXPECT_THAT(sent.text, HasSubstr("orvik_diag_comand_param_check fail"));
    }
    EXPECT_THAT(send(callback, packet.substr(0, 1), 1000, 0).text,
                HasSubstr("Invalid output parameter, reply_len = 0"));
    EXPECT_EQ(logged({"diag tx"}), 1);

    uint8_t byte = 0;
    uint32_t len = 1;
    EXPECT_EQ(orvik_diag_cmd_send_with_result_by_callback_mode(nullptr, 1, 0, &byte, &len), 1);
    EXPECT_EQ(orvik_diag_cmd_send_with_result_by_dci_mode(&byte, 1, 0, nullptr, &len), 1);
    EXPECT_EQ(orvik_diag_cmd_send_with_result_by_dci_mode(&byte, 1, 0, &byte, nullptr), 1);
}

TEST_F(DiagTest, WaitThreadOfACallersOwnWatchesTheCurrentWait) {
    int not_a_wait = 5;
    void* result = &not_a_wait;
    EXPECT_THAT(
        printed([&] { result = orvik_diag_cmd_send_with_result_wait_thread_proc(&not_a_wait); }),
        HasSubstr("cnt_of_100ms = 1"));
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(not_a_wait, 5);
}

TEST_F(DiagTest, AnswerLongerThanTheCallersRoomIsCut) {
    put("diag/10", pattern(100));
    EXPECT_EQ(send(callback, "\x10", 1000, 10).reply, pattern(10));
    put("diag/10", pattern(200));
    const Sent sent = send(dci, "\x10", 1000, 150); /* behind the bytes that callback mode left */
    EXPECT_EQ(sent.reply, pattern(100) + pattern(50));
    EXPECT_THAT(sent.text,
                HasSubstr("data_size = 150, g_qcril_diag_rsp_buf.length = 300, reply_len = 150"));
}

TEST_F(DiagTest, TimeOutReturnsWhatAnEarlierCommandLeft) {
    EXPECT_EQ(send(callback, "\x7B left").result, 0);
    put("diag/silent", "1");
    Sent sent = send(callback, "\x7B new", 200);
    EXPECT_EQ(sent.result, 1);
    EXPECT_EQ(sent.reply, "\x7B left");

    /* DCI mode frees the bytes but not the length: nothing may be copied from what is gone. */
    EXPECT_EQ(send(dci, "\x7B new", 200).reply, "\x7B left");
    sent = send(dci, "\x7B new", 200);
    EXPECT_EQ(sent.result, 1);
    EXPECT_EQ(sent.reply, "");
    EXPECT_THAT(sent.text, HasSubstr("data_size = 6, g_qcril_diag_rsp_buf.length = 6"));
}

TEST_F(DiagTest, APostOfAnEarlierWaitEndsNoLaterOne) {
    g_orvik_diag_pauses.tick = 30'000;
    put("diag/10", pattern(4096)); /* makes the wait thread post too, at its first tick */
    EXPECT_EQ(send(callback, "\x10").reply, pattern(4096));
    put("diag/delay_ms", "90");
    EXPECT_EQ(send(callback, "\x7B second").reply, "\x7B second");

    /* A callback that comes when everything is taken down. */
    std::string late = "late";
    std::thread([&] {
        orvik_diag_cmd_response_by_callback(reinterpret_cast<uint8_t*>(late.data()), 4, nullptr);
    }).join();
    EXPECT_EQ(send(callback, "\x7B third").reply, "\x7B third");
    put("diag/silent", "1");
    EXPECT_EQ(send(callback, "\x7B fourth", 100).result, 1);
}

TEST_F(DiagTest, SeveralAnswersToOneCommand) {
    put("diag/repeat", "2");
    put("diag/gap_ms", "3600000"); /* the first ends the command, the others never come */
    put("diag/10", "one");
    put("diag/10.2", "two");
    EXPECT_EQ(send(callback, "\x10").reply, "one");
    EXPECT_EQ(send(dci, "\x10").result, 0);
    put("diag/gap_ms", "0");
    put("diag/10AA", "longer");
    EXPECT_EQ(send(callback, "\x10\xAA\x01").result, 0);
    EXPECT_GE(logged({"diag rx " + hex("longer")}), 1);
}

TEST_F(DiagTest, LibraryThatDoesNotComeUp) {
    /* Somebody else in the process has it up: the command then waits, and needs its semaphore. */
    Diag_LSM_Init(nullptr);
    put("faults", "Diag_LSM_Init * error\n");
    Sent sent = send(callback, "\x7B up");
    EXPECT_THAT(sent.text, HasSubstr("LSM init failed"));
    EXPECT_EQ(sent.reply, "\x7B up");

    put("faults", "");
    orvik_diag_init_with_result();
    sent = send(dci, "\x7B");
    EXPECT_EQ(sent.result, 0);
    EXPECT_THAT(sent.text, HasSubstr("diag init done, g_diag_init_status = 1"));
    EXPECT_THAT(send(dci, "\x7B").text, Not(HasSubstr("diag init done")));
}

TEST_F(DiagTest, WorkersRunOneAfterTheOtherAndTellTheirEnd) {
    const std::string text = printed([&] {
        const uint8_t packet[] = {0x7B, 1};
        EXPECT_EQ(orvik_diag_cmd_send_without_result_by_callback_mode(packet, sizeof packet), 0);
        EXPECT_EQ(orvik_diag_cmd_send_without_result_by_dci_mode(packet, sizeof packet), 0);
        EXPECT_FALSE(orvik_diag_wait_for_workers(1));
        EXPECT_TRUE(orvik_diag_wait_for_workers(10'000));
    });
    /* Whichever began first had taken the library down before the other brought it up. */
    std::string calls;
    const std::string log = get("log");
    for (size_t at = 0; (at = log.find("call Diag_LSM_", at)) != std::string::npos; ++at)
        calls += log[at + std::strlen("call Diag_LSM_")];
    EXPECT_EQ(calls, "IDID");
    for (const char* const mode : {"callback", "dci"}) {
        const std::string worker = std::string("by_") + mode + "_mode_thread_proc";
        EXPECT_THAT(text, testing::ContainsRegex(worker + ":[0-9]+\\]: function exit"));
    }
    EXPECT_EQ(logged({"diag rx 7b01"}), 2);
    EXPECT_EQ(logged({"by_dci_no_handle: len = 2"}), 1);
    EXPECT_EQ(logged({"by_callback_no_handle: len = 2"}), 1);
}

TEST_F(DiagTest, WorkerThatCannotWork) {
    const std::string packet(4097, 'x');
    EXPECT_EQ(send_without_result(callback, packet).result, 1);
    EXPECT_EQ(logged({"call Diag_LSM_Init"}), 0);

    put("faults", "Diag_LSM_Init * error\n");
    const Sent sent = send_without_result(callback, "x");
    EXPECT_EQ(sent.result, 0);
    EXPECT_THAT(sent.text, HasSubstr("LSM init failed"));
    EXPECT_EQ(logged({"call diag_register_callback"}), 0);

    EXPECT_THAT(
        printed([] { orvik_diag_cmd_send_without_result_by_dci_mode_thread_proc(nullptr); }),
        HasSubstr("param is null"));
}

} // namespace
