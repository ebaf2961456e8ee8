// SPDX-License-Identifier: Apache-2.0
/* Groups 5 and 6. Log lines show this source's name, so commands that log stay here together,
 * however long it grows. */
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include <unistd.h>

#include "bytes.h"
#include "common_records.h"
#include "converters.h"
#include "dispatch.h"
#include "esim.h"
#include "handlers.h"
#include "help.h"
#include "log_lines.h"
#include "orvik_diag_send.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_idl.h"
#include "orvik_extend_nvefs.h"
#include "print_data.h"
#include "usage.h"

/* ==== group 6: raw vendor QMI send ==== */

namespace {

constexpr unsigned raw_kinds = 6;
constexpr int raw_first_data = 3;
constexpr size_t raw_max = 500;

} // namespace

int orvik_test_qmi_send_data_do(int argc, char** argv) {
    if (!usage_good(GROUP_QMI_SEND_DATA, argc, argv, raw_first_data + 1)) {
        show_help(GROUP_QMI_SEND_DATA);
        return 0;
    }
    const auto qmi_id = static_cast<unsigned>(std::atoi(argv[2]));
    if (qmi_id >= raw_kinds) {
        usage_error(GROUP_QMI_SEND_DATA, NOTE_QMI_ID, 0, static_cast<int>(raw_kinds));
        return 0;
    }

    const int typed = argc - raw_first_data;
    orvik_print("ov_qmi req data(qmi_id: %d, len: %d[max: %d]):\n", qmi_id, typed,
                static_cast<int>(raw_max));
    std::array<uint8_t, raw_max> request{};
    const size_t count = std::min<size_t>(static_cast<size_t>(typed), raw_max);
    for (size_t i = 0; i < count; ++i) {
        request[i] = static_cast<uint8_t>(orvik_string_to_int(argv[raw_first_data + i]));
        orvik_print("0x%02X ", request[i]);
    }

    std::array<uint8_t, ORVIK_EXTEND_DATA_SIZE> response{};
    /* Published: no capacity is stated, so no bytes of the response are shown. */
    uint32_t response_length = 0;
    const int result = orvik_extend_qmi_send_sync(qmi_id, request.data(), static_cast<int>(count),
                                                  response.data(), &response_length);
    orvik_print("qmi_id = %d, result = %d\n", qmi_id, result);
    if (result != 0) {
        orvik_print("orvik_extend_qmi_send_sync fail\n");
        show_help(GROUP_QMI_SEND_DATA);
        return 0;
    }
    if (orvik_stdout_print_on()) {
        std::printf("ov_qmi rsp data(qmi_id: %d, len: %d[max: %d]):\n", qmi_id, response_length,
                    static_cast<int>(raw_max));
        print_bytes_line({response.data(), response_length});
    }
    return 0;
}

/* ==== typed commands ==== */

int orvik_cmn_cmd_send(int type, unsigned int len, const char* data) {
    orvik_print("orvik_cmn_cmd_send, t: %d, l: %d\n", type, len);
    orvik_typed_record record{};
    record.code = COMMON_CODE_TYPED;
    record.type = static_cast<uint32_t>(type);
    if (data != nullptr && len <= ORVIK_TYPED_DATA_MAX) {
        record.len = len;
        std::memcpy(record.data, data, len);
    }
    orvik_common_reply reply{};
    uint32_t capacity = ORVIK_COMMON_REPLY_SIZE;
    const int result = orvik_extend_qmi_send_sync(REQUEST_ID_COMMON, bytes_of(record),
                                                  sizeof record, &reply, &capacity);
    orvik_print("result = %d, rsp.result = %d\n", result, reply.result);
    if (result != 0) {
        orvik_print("orvik_extend_qmi_send_sync fail\n");
        return result;
    }
    if (reply.result != 0) {
        orvik_print("rsp.result fail\n");
        return 0;
    }
    /* The bytes shown begin with the type. The length is printed as the modem states it; the bytes
     * end with the buffer. */
    const auto stated = static_cast<uint32_t>(get_le(reply.data + 4, 4) + 8);
    if (orvik_stdout_print_on()) {
        std::printf("\ndata len(%d)\ndata:", static_cast<int>(stated));
        print_bytes_line({reply.data, std::min<size_t>(stated, sizeof reply.data)});
    }
    return 0;
}

/* ==== group 5: DIAG command ==== */

namespace {

constexpr int diag_first_byte = 6;
constexpr size_t diag_command_size = 4096;
constexpr uint32_t diag_response_size = 10240;

/* Far longer than a worker needs; only a library that hangs comes near it. */
constexpr uint32_t diag_worker_time_ms = 10000;

int orvik_cmn_diag_cmd_send(int argc, char** argv) {
    ORVIK_FUNCTION_SCOPE();
    if (argc <= diag_first_byte) {
        usage_note(GROUP_CMN, NOTE_TOO_FEW_INPUTS);
        return 0;
    }
    const bool dci = std::atoi(argv[3]) != 0;
    const bool with_result = std::atoi(argv[4]) == 0;
    const auto time_out = static_cast<uint32_t>(std::atoi(argv[5]));

    orvik_print("diag cmd:\n");
    /* Published: the count typed is passed on even if it is too large; the engine then refuses it.
     */
    const auto typed = static_cast<uint32_t>(argc - diag_first_byte);
    std::array<uint8_t, diag_command_size> command{};
    const size_t count = std::min<size_t>(typed, command.size());
    for (size_t i = 0; i < count; ++i) {
        command[i] = static_cast<uint8_t>(orvik_string_to_int(argv[diag_first_byte + i]));
        orvik_print("0x%02X ", command[i]);
    }
    orvik_print("\n");

    std::array<uint8_t, diag_response_size> response{};
    uint32_t response_len = diag_response_size;
    int result;
    if (dci && !with_result) {
        orvik_print("dci mode without result\n");
        result = orvik_diag_cmd_send_without_result_by_dci_mode(command.data(), typed);
    } else if (dci) {
        orvik_print("dci mode with result\n");
        result = orvik_diag_cmd_send_with_result_by_dci_mode(command.data(), typed, time_out,
                                                             response.data(), &response_len);
    } else if (!with_result) {
        orvik_print("callback mode without result\n");
        result = orvik_diag_cmd_send_without_result_by_callback_mode(command.data(), typed);
    } else {
        orvik_print("callback mode with result\n");
        result = orvik_diag_cmd_send_with_result_by_callback_mode(command.data(), typed, time_out,
                                                                  response.data(), &response_len);
    }
    if (result != 0) {
        orvik_print("orvik_diag_cmd_send fail\n");
        return result;
    }
    if (with_result) {
        if (orvik_stdout_print_on()) {
            /* The wait's thread may still print its last line; not into this one. */
            flockfile(stdout);
            std::printf("\nrsp data len(%d)\nrsp data:", response_len);
            for (uint32_t i = 0; i < response_len; ++i)
                std::printf(" 0x%02X", response[i]);
            std::putchar('\n');
            funlockfile(stdout);
        }
    } else {
        orvik_print("\ndone without rsp data\n");
        /* The process must not end before the worker has. */
        orvik_diag_wait_for_workers(diag_worker_time_ms);
    }
    return 0;
}

/* ==== group 5: card, SAR ==== */

/* Typed commands of the modem. */
enum {
    CMD_CARD_STATUS_QUERY = 39,
    CMD_CARD_STATUS_GET = 55,
    CMD_CARD_TYPE_QUERY = 56,
    CMD_CARD_STATUS_SET = 57,
    CMD_CARD_HOTSWAP_TEST = 80,
    CMD_ESIM_SWITCH = 84,
};

constexpr int cmn_first_value = 3;
constexpr size_t cmn_max_values = 100;

/* Sends a typed command with count numbers, the arguments from the third on; flags: each as 0 or 1,
 * else as typed. */
int send_numbers(int type, int count, bool flags, int argc, char** argv) {
    if (argc != count + cmn_first_value) {
        usage_note(GROUP_CMN, NOTE_NEED_INPUTS, count + cmn_first_value);
        return ORVIK_USAGE_ERROR;
    }
    orvik_print("param(cnt: %d):\n", count);
    std::array<int32_t, cmn_max_values> values{};
    for (int i = 0; i < count; ++i) {
        int32_t& value = values[static_cast<size_t>(i)];
        value = std::atoi(argv[cmn_first_value + i]);
        if (flags)
            value = value != 0 ? 1 : 0;
        orvik_print(" %d", value);
    }
    orvik_print("\n");
    return orvik_cmn_cmd_send(type, static_cast<unsigned>(count) * sizeof values[0],
                              reinterpret_cast<const char*>(values.data()));
}

int orvik_cmn_card_status_cmd(int type, int count, int argc, char** argv) {
    return send_numbers(type, count, true, argc, argv);
}

int orvik_cmn_card_status_cmd_ex(int type, int count, int argc, char** argv) {
    return send_numbers(type, count, false, argc, argv);
}

int orvik_cmn_card_status_query(int argc, char** argv) {
    orvik_print("orvik_cmn_card_status_query\n");
    return orvik_cmn_card_status_cmd(CMD_CARD_STATUS_QUERY, 0, argc, argv);
}

int orvik_cmn_card_status_get(int argc, char** argv) {
    ORVIK_DBG("orvik_cmn_card_status_get\n");
    return orvik_cmn_card_status_cmd(CMD_CARD_STATUS_GET, 1, argc, argv);
}

int orvik_cmn_card_status_set(int argc, char** argv) {
    ORVIK_DBG("orvik_cmn_card_status_set\n");
    return orvik_cmn_card_status_cmd(CMD_CARD_STATUS_SET, 3, argc, argv);
}

int orvik_cmn_card_type_query(int argc, char** argv) {
    orvik_print("orvik_cmn_card_type_query\n");
    return orvik_cmn_card_status_cmd(CMD_CARD_TYPE_QUERY, 0, argc, argv);
}

int orvik_cmn_test_get_sar_dsi(int, char**) {
    /* With the flag off the value would not be seen, so the modem is not asked. */
    if (orvik_stdout_print_on())
        std::printf("SAR DSI: %d\n", orvik_get_sar_dsi());
    return 0;
}

int orvik_cmn_card_hotswap_test(int argc, char** argv) {
    orvik_print("orvik_cmn_card_hotswap_test\n");
    if (argc <= cmn_first_value) {
        usage_note(GROUP_CMN, NOTE_NEED_INPUTS_AT_LEAST, cmn_first_value + 1);
        return ORVIK_USAGE_ERROR;
    }
    const int opt = std::atoi(argv[cmn_first_value]);
    orvik_print("opt: %d\n", opt);
    if (opt != 0)
        return orvik_cmn_card_status_cmd_ex(CMD_CARD_HOTSWAP_TEST, 4, argc, argv);
    constexpr char stop[sizeof(uint32_t)] = {};
    return orvik_cmn_cmd_send(CMD_CARD_HOTSWAP_TEST, sizeof stop, stop);
}

/* ==== group 5: eSIM ==== */

constexpr uint8_t esim_slot = 2;
constexpr useconds_t eid_wait_us = 100000;
constexpr int eid_tries_after_switch = 30;
constexpr int eid_tries = 2;

constexpr size_t eid_size = 16;
constexpr size_t eid_digits = 2 * eid_size;
constexpr std::string_view eid_path = "/nv/item_files/modem/uim/uimdrv/esim_eid";
constexpr uint32_t eid_sub = 1;

uint8_t IS_EID_SAVE; /* 1: the EID file holds an EID. Used by the main thread only. */

/* The steps of the command log under its name. */
#define ESIM_DBG(text, ...) ORVIK_DBG_IN("orvik_cmn_esim_test", text __VA_OPT__(, ) __VA_ARGS__)

void esim_failed() { std::puts("value=FAILED"); }

int32_t uim_power(uint32_t up, uint32_t ignore_hotswap) {
    uint32_t words[] = {up, esim_slot, ignore_hotswap};
    return orvik_uim_request_uicc_power_ex(reinterpret_cast<char*>(words));
}

/* Powers slot 2 down, switches it and powers it up. */
bool esim_switch(uint32_t physical_sim, uint32_t ignore_hotswap) {
    const int32_t down = uim_power(0, 0);
    ESIM_DBG("POWER_DOWN_UIM2 res = %d", down);
    if (down != 0)
        return false;
    const uint32_t payload[] = {physical_sim, 0};
    uint8_t reply[ORVIK_COMMON_REPLY_SIZE]; /* not read */
    orvik_send_common_qmi_msg(CMD_ESIM_SWITCH, sizeof payload, payload, reply);
    const int32_t up = uim_power(1, ignore_hotswap);
    ESIM_DBG("POWER_UP_UIM2 res = %d", up);
    return up == 0;
}

struct eid_text_type {
    char digits[eid_digits + 1];
};

/* One try, after a short wait. True when the eUICC returns an EID; one that begins with 0 is none.
 */
bool try_get_eid(int loop, uint8_t (&eid)[eid_size], eid_text_type& text) {
    ::usleep(eid_wait_us);
    ESIM_DBG("try get eid loop = %d", loop);
    char slot = esim_slot;
    std::memset(eid, 0, sizeof eid);
    orvik_uim_request_eid(&slot, eid);
    text = {};
    orvik_byte_to_hex(eid, eid_size, text.digits);
    return eid[0] != 0;
}

void switch_to_esim() {
    ESIM_DBG("switch to eSIM");
    if (!esim_switch(0, 1))
        return esim_failed();
    uint8_t eid[eid_size];
    eid_text_type text;
    for (int i = 0; i < eid_tries_after_switch; ++i) {
        if (!try_get_eid(i, eid, text))
            continue;
        if (!is_eid_valid(text.digits)) {
            std::printf("value=FAILED - %s\n", text.digits);
            return;
        }
        save_eid_to_efs(eid);
        std::printf("eID=%s\n", text.digits);
        return;
    }
    ESIM_DBG("get eid timeout");
    esim_failed();
}

void switch_to_psim() {
    ESIM_DBG("switch to SIM2");
    if (!esim_switch(1, 0))
        return esim_failed();
    ESIM_DBG("SIM2 Power Up successfully");
    std::puts("value=SUCCEED");
}

void show_eid() {
    ESIM_DBG("orvik get eid");
    uint8_t eid[eid_size];
    eid_text_type text;
    for (int i = 0; i < eid_tries; ++i) {
        if (try_get_eid(i, eid, text)) {
            std::printf("eID=%s\n", text.digits);
            return;
        }
    }
    esim_failed();
}

void show_card_states() {
    ESIM_DBG("try get simcard status");
    uint8_t states[2] = {};
    if (orvik_uim_get_card_status(reinterpret_cast<char*>(states)) != 0)
        return esim_failed();
    ESIM_DBG("card_status, [%d, %d]", states[0], states[1]);
    map_sim_state(states);
}

/* STORE DATA with the eUICC memory reset: delete operational profiles and field-loaded test
 * profiles, reset the default SM-DP+ address. */
constexpr uint8_t reset_apdu[] = {0x80, 0xE2, 0x91, 0x00, 0x07, 0xBF, 0x34,
                                  0x04, 0x82, 0x02, 0x05, 0xE0, 0x00};

/* Replies: length, result 0 (done) or 1 (nothing to delete), status word 9000. */
constexpr int reset_reply_size = 9;
constexpr const char* reset_done = "08bf34038001009000";
constexpr const char* reset_nothing = "08bf34038001019000";

void reset_euicc() {
    ESIM_DBG("Start eUICC Reset");
    uint8_t open_args[] = {esim_slot, 1}; /* file control information 1 */
    uint8_t channel_id = 255;
    const int32_t opened = orvik_uim_open_channel(open_args, &channel_id);
    ESIM_DBG("orvik_uim_open_channel res = %d, channel_id = %d", opened, channel_id);
    if (opened != 0)
        return esim_failed();

    const uint8_t head[] = {esim_slot, channel_id, sizeof reset_apdu};
    char apdu_args[sizeof head + sizeof reset_apdu];
    std::memcpy(apdu_args, head, sizeof head);
    std::memcpy(apdu_args + sizeof head, reset_apdu, sizeof reset_apdu);
    uint8_t reply[256] = {};
    const int32_t sent = orvik_uim_send_apdu(apdu_args, reply);
    ESIM_DBG("orvik_uim_send_apdu res = %d", sent);
    if (sent != 0)
        return esim_failed();

    char text[2 * reset_reply_size + 1] = {};
    orvik_byte_to_hex(reply, reset_reply_size, text);
    ESIM_DBG("apdu=%s", text);
    if (std::strcmp(text, reset_done) == 0) {
        ESIM_DBG("orvik_uim_send_apdu, delete profile successfully.");
    } else if (std::strcmp(text, reset_nothing) == 0) {
        ESIM_DBG("orvik_uim_send_apdu, nothing to delete.");
    } else {
        /* Published: the channel stays open. */
        ESIM_DBG("orvik_uim_send_apdu, apdu rsp check failed.");
        return esim_failed();
    }

    uint8_t close_args[] = {esim_slot, channel_id};
    const int32_t closed = orvik_uim_close_channel(close_args);
    ESIM_DBG("orvik_uim_close_channel res = %d", closed);
    std::puts("value=SUCCEED");
}

/* By esim_on, from 1; only the first two are in the help. */
constexpr void (*esim_modes[])() = {
    switch_to_esim, switch_to_psim, show_eid, show_card_states, reset_euicc,
};

} // namespace

int32_t orvik_cmn_esim_test(int argc, char** argv) {
    if (argc <= 4)
        return ORVIK_FAILED(-1, "invalid input\n");
    const int esim_on = std::atoi(argv[3]);
    if (std::atoi(argv[4]) == 0)
        g_orvik_stdout_print_flag = 0;
    if (esim_on < 1 || esim_on > static_cast<int>(std::size(esim_modes))) {
        ORVIK_DBG("invalid input skip");
        esim_failed();
        return 0;
    }
    esim_modes[esim_on - 1]();
    return 0;
}

bool is_eid_valid(const char* eid_text) {
    ORVIK_DBG("check whether eid valid\n");
    int r = 0;
    for (size_t i = 0; i < eid_digits; ++i)
        r = (r * 10 + (static_cast<unsigned char>(eid_text[i]) - '0')) % 97;
    if (r != 1)
        return ORVIK_FAILED(false, "eid validate failed, result = %d\n", r);
    ORVIK_DBG("eid validate pass\n");
    return true;
}

void save_eid_to_efs(const uint8_t* eid16) {
    if (IS_EID_SAVE == 1) {
        ORVIK_DBG("EID already saved, skip\n");
        return;
    }
    uint8_t kept[eid_size];
    uint32_t length = sizeof kept;
    int32_t result = orvik_efs_read(eid_sub, eid_path.data(), eid_path.size(), kept, &length);
    if (result == 0) {
        /* Published: whatever it holds counts as an EID. */
        ORVIK_DBG("EID already exists, set IS_EID_SAVE TRUE\n");
        IS_EID_SAVE = 1;
        return;
    }
    ORVIK_DBG("efs read failed and try save it. error_code : %d\n", result);
    result = orvik_efs_write(eid_sub, eid_path.data(), eid_path.size(), eid16, eid_size);
    orvik_print("save eid efs result = %d\n", result);
    if (result != 0)
        return;
    ORVIK_DBG("save eid successfully, set IS_EID_SAVE TRUE\n");
    IS_EID_SAVE = 1;
}

void map_sim_state(const uint8_t* states2) {
    static constexpr const char* names[] = {"ABSENT", "PRESENT", "ERROR"};
    const auto name = [](uint8_t state) {
        return state < std::size(names) ? names[state] : "UNKNOWN";
    };
    ORVIK_DBG("map_sim_state ...\n");
    std::printf("%s,%s", name(states2[0]), name(states2[1]));
}

/* ==== group 5 ==== */

constexpr command_row cmn_commands[] = {
    {0, orvik_cmn_diag_cmd_send},     {1, orvik_cmn_card_status_query},
    {2, orvik_cmn_card_status_get},   {3, orvik_cmn_card_status_set},
    {4, orvik_cmn_card_type_query},   {5, orvik_cmn_test_get_sar_dsi},
    {6, orvik_cmn_card_hotswap_test}, {10, orvik_cmn_esim_test},
};

int orvik_test_cmn_do(int argc, char** argv) {
    dispatch_command(GROUP_CMN, cmn_commands, argc, argv);
    return 0;
}
