// SPDX-License-Identifier: Apache-2.0
/* A phone for DIAG commands, with short pauses in the engine. */
#pragma once

#include <chrono>
#include <thread>

#include "orvik_diag_send.h"
#include "phone_test.h"

class DiagTest : public PhoneTest {
  protected:
    enum Mode { callback, dci };

    struct Sent {
        int result;
        std::string reply;
        std::string text; /* what was printed */
    };

    DiagTest() {
        g_orvik_diag_pauses.tick = 10'000;
        g_orvik_diag_pauses.callback_worker = 150'000;
        g_orvik_diag_pauses.dci_worker = 150'000;
        forget_responses();
    }

    /* Wait threads that are still at their last tick write to the phone's log. */
    ~DiagTest() override {
        std::this_thread::sleep_for(std::chrono::microseconds(3 * g_orvik_diag_pauses.tick));
    }

    static Sent send(Mode mode, const std::string& packet, uint32_t time_out_ms = 10'000,
                     uint32_t room = 10'240) {
        Sent sent{};
        sent.text = printed([&] { sent = send_unseen(mode, packet, time_out_ms, room); });
        return sent;
    }

    static Sent send_unseen(Mode mode, const std::string& packet, uint32_t time_out_ms,
                            uint32_t room) {
        const auto call = mode == dci ? orvik_diag_cmd_send_with_result_by_dci_mode
                                      : orvik_diag_cmd_send_with_result_by_callback_mode;
        /* Allocated to size, so that a sanitizer sees what reaches behind it. */
        std::string reply(room, '\0');
        uint32_t len = room;
        const int result = call(reinterpret_cast<const uint8_t*>(packet.data()),
                                static_cast<uint32_t>(packet.size()), time_out_ms,
                                reinterpret_cast<uint8_t*>(reply.data()), &len);
        reply.resize(len <= room ? len : 0);
        return {result, reply, ""};
    }

    static Sent send_without_result(Mode mode, const std::string& packet) {
        const auto call = mode == dci ? orvik_diag_cmd_send_without_result_by_dci_mode
                                      : orvik_diag_cmd_send_without_result_by_callback_mode;
        Sent sent{};
        sent.text = printed([&] {
            sent.result = call(reinterpret_cast<const uint8_t*>(packet.data()),
                               static_cast<uint32_t>(packet.size()));
            EXPECT_TRUE(orvik_diag_wait_for_workers(10'000));
        });
        return sent;
    }

    /* The engine keeps the last response for as long as the process lives; DCI mode frees it. */
    void forget_responses() {
        send(callback, "\x7B");
        put("diag/silent", "1");
        send(dci, "\x7B", 0);
        put("diag/silent", "0");
        put("log", "");
    }

    /* Bytes that differ from their neighbours, 4096 apart too. */
    static std::string pattern(size_t size) {
        std::string bytes;
        for (size_t i = 0; i < size; ++i)
            bytes += static_cast<char>(i * 7 + i / 4096);
        return bytes;
    }

    static std::string hex(const std::string& bytes) {
        static constexpr char digits[] = "0123456789abcdef";
        std::string text;
        for (const char byte : bytes) {
            text += digits[static_cast<unsigned char>(byte) >> 4];
            text += digits[static_cast<unsigned char>(byte) & 15];
        }
        return text;
    }
};
