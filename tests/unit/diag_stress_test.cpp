// SPDX-License-Identifier: Apache-2.0
/* Many exchanges whose answers come around the time limit, for the sanitizers: races, leaks, hangs.
 * KVT_DIAG_EXCHANGES sets how many. */
#include <cstdlib>
#include <random>
#include <thread>

#include "diag_test.h"
#include "log_lines.h"

namespace {

int exchanges() {
    const char* const text = std::getenv("KVT_DIAG_EXCHANGES");
    return text != nullptr ? std::atoi(text) : 300;
}

class DiagStressTest : public DiagTest {
  protected:
    DiagStressTest() {
        g_orvik_diag_pauses.tick = 1000;
        g_orvik_diag_pauses.callback_worker = 3000;
        g_orvik_diag_pauses.dci_worker = 3000;
        put("prop/persist.vendor.radio.adb_log_ov", "0");
        g_orvik_stdout_print_flag = 0;
    }
    ~DiagStressTest() override {
        orvik_diag_wait_for_workers(10'000);
        g_orvik_stdout_print_flag = 1;
    }

    int pick(int from, int to) { return std::uniform_int_distribution(from, to)(random_); }

    /* A packet like no other, and an answer to it of its own that begins with it. */
    std::string new_packet() {
        const int number = ++packets_;
        return {'\x7B', static_cast<char>(number), static_cast<char>(number >> 8)};
    }

    /* The library's delay hits a limit of one to four ticks early, late and at the same time. */
    uint32_t new_limit() {
        const int ticks = pick(0, 4);
        put("diag/delay_ms", std::to_string(std::max(0, ticks + pick(-2, 2))));
        return static_cast<uint32_t>(ticks * 100 + 50);
    }

    std::mt19937 random_{20240601};
    int packets_ = 0;
};

TEST_F(DiagStressTest, AnAnswerIsOfItsOwnCommandOrTheCommandFails) {
    int answered = 0, timed_out = 0;
    for (int i = 0; i < exchanges(); ++i) {
        const Mode mode = pick(0, 1) == 0 ? callback : dci;
        const std::string packet = new_packet();
        const Sent sent = send_unseen(mode, packet, new_limit(), 10'240);
        ++(sent.result == 0 ? answered : timed_out);
        if (sent.result != 0)
            continue;
        /* DCI appends to what an answer that came too late left. */
        ASSERT_GE(sent.reply.size(), packet.size());
        ASSERT_EQ(sent.reply.substr(sent.reply.size() - packet.size()), packet);
        if (mode == callback) {
            ASSERT_EQ(sent.reply, packet);
        }
    }
    RecordProperty("answered", answered);
    RecordProperty("timed_out", timed_out);
    std::fprintf(stderr, "%d answered, %d timed out\n", answered, timed_out);
    EXPECT_GT(answered, 0);
    EXPECT_GT(timed_out, 0);
}

/* One in each mode: a command is alone from its check to its answer. */
TEST_F(DiagStressTest, TwoSendersAtOnceGetTheirOwnAnswers) {
    g_orvik_diag_pauses.tick = 10'000;
    put("diag/delay_ms", "1");
    std::vector<std::thread> senders;
    for (const Mode mode : {callback, dci, callback, dci})
        senders.emplace_back([mode, number = senders.size()] {
            for (int i = 0; i < exchanges() / 4; ++i) {
                const std::string packet = {'\x7B', static_cast<char>(number),
                                            static_cast<char>(i)};
                const Sent sent = send_unseen(mode, packet, 60'000, 10'240);
                EXPECT_EQ(sent.result, 0);
                EXPECT_THAT(sent.reply, testing::EndsWith(packet));
            }
        });
    for (std::thread& sender : senders)
        sender.join();
}

/* Callbacks still run when the library is down, answers come twice and in full chunks, and workers
 * take the library away: nothing to say about results, but everything must end. */
TEST_F(DiagStressTest, NothingHangsOrBreaksBesideWorkers) {
    put("diag/loose", "1");
    put("diag/repeat", "2");
    put("diag/gap_ms", "1");
    put("diag/log_stream", "log");
    put("diag/event_stream", "event");
    put("diag/remote_mask", "3");
    put("diag/7B", pattern(4096));
    put("diag/7C", pattern(9000));
    std::thread workers([this] {
        const uint8_t packet[] = {0x7C};
        for (int i = 0; i < exchanges() / 2; ++i) {
            orvik_diag_cmd_send_without_result_start_thread(packet, 1,
                                                            static_cast<uint32_t>(i) & 1);
            if (i % 3 == 0)
                orvik_diag_wait_for_workers(10'000);
        }
    });
    for (int i = 0; i < exchanges(); ++i) {
        const Mode mode = pick(0, 1) == 0 ? callback : dci;
        send_unseen(mode, pick(0, 1) == 0 ? "\x7B" : "\x7C", new_limit(), 10'240);
    }
    workers.join();
    EXPECT_TRUE(orvik_diag_wait_for_workers(60'000));
}

} // namespace
