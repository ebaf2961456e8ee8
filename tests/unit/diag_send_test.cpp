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

TEST_F(DiagTest, TimeLimitsCountInTicks) {
    const auto shown = [&](Mode mode, uint32_t ms) { return send(mode, "\x7B", ms).text; };
    EXPECT_THAT(shown(callback, 0), HasSubstr("Time out is invalid, set default"));
    EXPECT_THAT(shown(callback, 0), HasSubstr("Command time = 30 * 100ms"));
    EXPECT_THAT(shown(callback, 60001), HasSubstr("Command time = 30 * 100ms"));
    EXPECT_THAT(shown(callback, 60000), HasSubstr("Command time = 600 * 100ms"));
    EXPECT_THAT(shown(callback, 150), HasSubstr("Command time = 1 * 100ms"));
    EXPECT_THAT(shown(dci, 70000), HasSubstr("Dci Command time = 700"));

    put("diag/silent", "1");
    std::this_thread::sleep_for(
        std::chrono::milliseconds(100)); /* no earlier wait thread's ticks */
    const Sent sent = send(dci, "\x7B", 99);
    EXPECT_EQ(sent.result, 1);
    EXPECT_THAT(sent.text, HasSubstr("Dci Command time = 0"));
    EXPECT_THAT(sent.text, HasSubstr("cnt_of_100ms = 1"));
    EXPECT_THAT(sent.text, Not(HasSubstr("cnt_of_100ms = 2")));
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

/* Answers by size and chunk; a full DCI chunk of 4096 bytes announces more, so that such an answer
 * ends with the time and is a success. */
TEST_F(DiagTest, AnswersOfEverySizeAndChunking) {
    struct Case {
        Mode mode;
        size_t size, chunk;
        size_t length;
        bool timed; /* ends with the time limit */
    };
    /* DCI first: it appends to what callback mode left. */
    const Case cases[] = {
        {dci, 100, 4096, 100, false},       {dci, 4096, 4096, 4096, true},
        {dci, 4196, 4096, 4196, false},     {dci, 8192, 4096, 8192, true},
        {dci, 8192, 0, 8192, false},        {dci, 10240, 0, 10240, false},
        {dci, 10240, 4096, 10240, false},   {dci, 10241, 4096, 10240, false},
        {dci, 12288, 4096, 10240, true},    {callback, 1, 0, 1, false},
        {callback, 4096, 0, 4096, false},   {callback, 8192, 0, 8192, false},
        {callback, 10240, 0, 10240, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.mode) + ", " + std::to_string(c.size) + " by " +
                     std::to_string(c.chunk));
        const std::string answer = pattern(c.size);
        put("diag/10", answer);
        put("diag/dci_chunk", std::to_string(c.chunk));
        const Sent sent = send(c.mode, "\x10", 2000);
        EXPECT_EQ(sent.result, 0);
        EXPECT_EQ(sent.reply.size(), c.length);
        EXPECT_TRUE(sent.reply == answer.substr(0, c.length)) << "wrong bytes";
        if (c.timed) {
            EXPECT_THAT(sent.text, HasSubstr("length is times of 4096"));
        }
    }
}

TEST_F(DiagTest, AnUnusableAnswerIsDroppedAndTheTimeRunsOut) {
    for (const Mode mode : {callback, dci}) {
        put("diag/dci_chunk", "0");
        put("diag/11", "");
        put("diag/12", pattern(10241));
        for (const char* const packet : {"\x11", "\x12"}) {
            const Sent sent = send(mode, packet, 300);
            EXPECT_EQ(sent.result, 1);
            EXPECT_EQ(sent.reply, "");
            EXPECT_THAT(sent.text, HasSubstr("Invalid parameter, len = "));
            EXPECT_THAT(sent.text, HasSubstr("orvik_diag_cmd_response_check fail"));
            EXPECT_THAT(sent.text, HasSubstr("stop waiting"));
        }
    }
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
    put("diag/gap_ms", "300");
    put("diag/10", "one");
    put("diag/10.2", "two");
    EXPECT_EQ(send(callback, "\x10").reply, "one");
    EXPECT_EQ(send(dci, "\x10").result, 0);
    put("diag/gap_ms", "0");
    put("diag/10AA", "longer");
    EXPECT_EQ(send(callback, "\x10\xAA\x01").result, 0);
    EXPECT_GE(logged({"diag rx " + hex("longer")}), 1);
}

TEST_F(DiagTest, RemoteProcessorsAreRegisteredAndNamed) {
    put("diag/remote_mask", "5");
    Sent sent = send(callback, "\x7B");
    EXPECT_THAT(sent.text,
                HasSubstr("g_diag_channel = [0]MSM, data_primary = 0, remote_mask = [5] APSS\n"));
    EXPECT_THAT(sent.text, HasSubstr("data_remote = 1\n"));
    EXPECT_THAT(sent.text, Not(HasSubstr("data_remote = 2\n")));
    EXPECT_THAT(sent.text, HasSubstr("data_remote = 3\n"));
    EXPECT_THAT(sent.text, HasSubstr("response from 0[MSM], len = 1 ="));
    put("diag/from", "1");
    EXPECT_THAT(send(callback, "\x7B").text, HasSubstr("response from 1[MDM]"));
    put("diag/from", "3");
    EXPECT_THAT(send(callback, "\x7B").text, HasSubstr("response from 3[Unknown]"));
    put("diag/from", "none");
    sent = send(callback, "\x7B");
    EXPECT_EQ(sent.result, 0);
    EXPECT_THAT(sent.text, HasSubstr("context_data is null"));
    EXPECT_THAT(sent.text, HasSubstr("response from -1[Unknown]"));
    put("diag/remote_mask", "0xFFFF");
    EXPECT_THAT(send(callback, "\x7B").text, HasSubstr("data_remote = 16\n"));
}

TEST_F(DiagTest, EachFailingDciCallIsToldAndTheClientReleased) {
    struct Case {
        const char* call;
        const char* text;
        int released;
    };
    const Case cases[] = {
        {"diag_register_dci_client", "Could not register with DCI, err: 1004, errno: 5 ch:0", 0},
        {"diag_register_dci_signal_data",
         "Could not register signal for DCI Data for ch:0, err: 1004, errno: 5", 1},
        {"diag_get_dci_support_list_proc",
         "Could not get support list for ch 0, err: 1004, errno: 5", 1},
        {"diag_register_dci_stream_proc",
         "Unable to register DCI stream for ch:0, err: 1004, errno: 5", 1},
        {"diag_send_dci_async_req", "Error sending SEND_REQUEST_ASYNC to peripheral 1004 for ch:0",
         1},
    };
    for (const bool with_result : {true, false}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(c.call);
            put("faults", std::string(c.call) + " * error 1004\n");
            put("log", "");
            const Sent sent = with_result ? send(dci, "\x7B") : send_without_result(dci, "\x7B");
            EXPECT_EQ(sent.result, with_result ? 1 : 0);
            EXPECT_THAT(sent.text, HasSubstr(c.text));
            EXPECT_EQ(logged({"call diag_release_dci_client"}), c.released);
            EXPECT_EQ(logged({"call Diag_LSM_DeInit"}), 1);
        }
    }
    put("faults", "diag_release_dci_client * error 1004\n");
    const Sent sent = send(dci, "\x7B");
    EXPECT_EQ(sent.result, 0);
    EXPECT_THAT(sent.text, HasSubstr("Releasing DCI connection, err: 1004, errno: 5"));
}

TEST_F(DiagTest, EachFailingCallbackModeCall) {
    put("diag/remote_mask", "1");
    put("faults", "diag_has_remote_device * error\n");
    Sent sent = send(callback, "\x7B");
    EXPECT_EQ(sent.result, 0);
    EXPECT_THAT(sent.text, HasSubstr("remote_mask = [0]\n"));
    for (const char* const call : {"diag_register_callback", "diag_switch_logging"}) {
        put("faults", std::string(call) + " * error\n");
        EXPECT_EQ(send(callback, "\x7B", 200).result, 1) << call;
    }
    put("faults", "diag_callback_send_data:0x7b * error 7\n");
    put("log", "");
    sent = send(callback, "\x7B");
    EXPECT_EQ(sent.result, 1);
    EXPECT_THAT(sent.text, HasSubstr("ret_send = 7, will wait callback"));
    EXPECT_THAT(sent.text, HasSubstr("Fail to send diag cmd"));
    EXPECT_EQ(logged({"call diag_switch_logging"}), 2);
    EXPECT_EQ(logged({"call Diag_LSM_DeInit"}), 1);
    put("faults", "diag_register_remote_callback * error\nDiag_LSM_DeInit * error\n");
    EXPECT_EQ(send(callback, "\x7B").result, 0);
}

TEST_F(DiagTest, AModemThatIsDownStillGetsTheRequest) {
    put("diag/peripherals", "0");
    put("diag/log_stream", "log");
    put("diag/event_stream", "event");
    const Sent sent = send(dci, "\x7B\x01");
    EXPECT_EQ(sent.reply, "\x7B\x01");
    EXPECT_THAT(sent.text, HasSubstr("MPSS on ch:0: DOWN"));
    EXPECT_THAT(sent.text, HasSubstr("len(3), data: 6C 6F 67"));
    EXPECT_THAT(sent.text, HasSubstr("len(5), data: 65 76 65 6E 74"));
}

TEST_F(DiagTest, LibraryThatDoesNotComeUp) {
    put("faults", "Diag_LSM_Init * error\n");
    Sent sent = send(callback, "\x7B");
    EXPECT_EQ(sent.result, 1);
    EXPECT_THAT(sent.text, HasSubstr("LSM init failed"));
    EXPECT_THAT(sent.text, HasSubstr("ret_send = -1, will wait callback"));
    EXPECT_THAT(sent.text, HasSubstr("Fail to send diag cmd"));

    /* Somebody else in the process has it up: the command then waits, and needs its semaphore. */
    put("faults", "");
    Diag_LSM_Init(nullptr);
    put("faults", "Diag_LSM_Init * error\n");
    sent = send(callback, "\x7B up");
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
