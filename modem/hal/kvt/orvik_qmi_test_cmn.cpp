/* Groups 5 and 6. Log lines show this source's name, so commands that log stay here together,
 * however long it grows. */
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include <unistd.h>

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
    if (orvik_stdout_print_on())
        std::printf("ov_qmi req data(qmi_id: %d, len: %d[max: %d]):\n", qmi_id, typed,
                    static_cast<int>(raw_max));
    std::array<uint8_t, raw_max> request{};
    const size_t count = std::min<size_t>(static_cast<size_t>(typed), raw_max);
    for (size_t i = 0; i < count; ++i) {
        request[i] = static_cast<uint8_t>(orvik_string_to_int(argv[raw_first_data + i]));
        if (orvik_stdout_print_on())
            std::printf("0x%02X ", request[i]);
    }

    std::array<uint8_t, ORVIK_EXTEND_DATA_SIZE> response{};
    uint32_t response_length = 0; /* no capacity: the response's bytes are not shown */
    const int result = orvik_extend_qmi_send_sync(qmi_id, request.data(), static_cast<int>(count),
                                                  response.data(), &response_length);
    if (orvik_stdout_print_on())
        std::printf("qmi_id = %d, result = %d\n", qmi_id, result);
    if (result != 0) {
        if (orvik_stdout_print_on())
            std::puts("orvik_extend_qmi_send_sync fail");
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

namespace {

/* The record of request kind 4; record kind and numbers are little-endian as on both processors. */
struct cmn_cmd_record {
    uint32_t kind;
    uint32_t zero;
    uint32_t type;
    uint32_t len;
    uint8_t payload[496];
};
static_assert(sizeof(cmn_cmd_record) == ORVIK_EXTEND_DATA_SIZE);

constexpr uint32_t cmn_cmd_kind = 2;
constexpr unsigned cmn_cmd_payload_max = 491;

/* Offsets in the response; type, length and payload are shown. */
constexpr size_t cmn_rsp_result = 4;
constexpr size_t cmn_rsp_shown = 8;
constexpr size_t cmn_rsp_len = 12;

template <typename T> T load(const uint8_t* from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

} // namespace

int orvik_cmn_cmd_send(int type, unsigned int len, const char* data) {
    const bool print = orvik_stdout_print_on();
    if (print)
        std::printf("orvik_cmn_cmd_send, t: %d, l: %d\n", type, len);
    cmn_cmd_record record{};
    record.kind = cmn_cmd_kind;
    record.type = static_cast<uint32_t>(type);
    if (data != nullptr && len <= cmn_cmd_payload_max) {
        record.len = len;
        std::memcpy(record.payload, data, len);
    }
    uint8_t request[sizeof record];
    std::memcpy(request, &record, sizeof request);
    std::array<uint8_t, ORVIK_EXTEND_DATA_SIZE> response{};
    uint32_t capacity = ORVIK_COMMON_REPLY_SIZE;
    const int result = orvik_extend_qmi_send_sync(REQUEST_ID_COMMON, request, sizeof request,
                                                  response.data(), &capacity);
    const auto rsp_result = load<int32_t>(response.data() + cmn_rsp_result);
    if (print)
        std::printf("result = %d, rsp.result = %d\n", result, rsp_result);
    if (result != 0) {
        if (print)
            std::puts("orvik_extend_qmi_send_sync fail");
        return result;
    }
    if (rsp_result != 0) {
        if (print)
            std::puts("rsp.result fail");
        return 0;
    }
    /* The length is shown as the modem states it; bytes there are as far as the buffer reaches. */
    const uint32_t stated = load<uint32_t>(response.data() + cmn_rsp_len) + cmn_rsp_shown;
    if (print) {
        std::printf("\ndata len(%d)\ndata:", static_cast<int>(stated));
        print_bytes_line({response.data() + cmn_rsp_shown,
                          std::min<size_t>(stated, response.size() - cmn_rsp_shown)});
    }
    return 0;
}

/* ==== group 5: DIAG command ==== */

namespace {

constexpr int diag_first_byte = 6;
constexpr size_t diag_command_size = 4096;
constexpr uint32_t diag_response_size = 10240;

/* Much longer than a worker needs; only a library that hangs comes near it. */
constexpr uint32_t diag_worker_time_ms = 10000;

int orvik_cmn_diag_cmd_send(int argc, char** argv) {
    ORVIK_FUNCTION_SCOPE();
    const bool print = orvik_stdout_print_on();
    const auto print_line = [print](const char* text) {
        if (print)
            std::puts(text);
    };
    if (argc <= diag_first_byte) {
        usage_note(GROUP_CMN, NOTE_TOO_FEW_INPUTS);
        return 0;
    }
    const bool dci = std::atoi(argv[3]) != 0;
    const bool with_result = std::atoi(argv[4]) == 0;
    const auto time_out = static_cast<uint32_t>(std::atoi(argv[5]));

    print_line("diag cmd:");
    /* The engine is told how many bytes were typed, kept or not; it refuses what is too long. */
    const auto typed = static_cast<uint32_t>(argc - diag_first_byte);
    std::array<uint8_t, diag_command_size> command{};
    const size_t count = std::min<size_t>(typed, command.size());
    for (size_t i = 0; i < count; ++i) {
        command[i] = static_cast<uint8_t>(orvik_string_to_int(argv[diag_first_byte + i]));
        if (print)
            std::printf("0x%02X ", command[i]);
    }
    print_line("");

    std::array<uint8_t, diag_response_size> response{};
    uint32_t response_len = diag_response_size;
    int result;
    if (dci && !with_result) {
        print_line("dci mode without result");
        result = orvik_diag_cmd_send_without_result_by_dci_mode(command.data(), typed);
    } else if (dci) {
        print_line("dci mode with result");
        result = orvik_diag_cmd_send_with_result_by_dci_mode(command.data(), typed, time_out,
                                                             response.data(), &response_len);
    } else if (!with_result) {
        print_line("callback mode without result");
        result = orvik_diag_cmd_send_without_result_by_callback_mode(command.data(), typed);
    } else {
        print_line("callback mode with result");
        result = orvik_diag_cmd_send_with_result_by_callback_mode(command.data(), typed, time_out,
                                                                  response.data(), &response_len);
    }
    if (result != 0) {
        print_line("orvik_diag_cmd_send fail");
        return result;
    }
    if (with_result) {
        if (print) {
            /* The thread that counted the wait may still have a line to write: not into this one.
             */
            flockfile(stdout);
            std::printf("\nrsp data len(%d)\nrsp data:", response_len);
            for (uint32_t i = 0; i < response_len; ++i)
                std::printf(" 0x%02X", response[i]);
            std::putchar('\n');
            funlockfile(stdout);
        }
    } else {
        print_line("\ndone without rsp data");
        /* The process must not end under the worker. */
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

void say(const char* line) {
    if (orvik_stdout_print_on())
        std::puts(line);
}

/* Sends a typed command with count numbers, the arguments from the third on, as kept(number). */
template <typename Kept> int send_numbers(int type, int count, int argc, char** argv, Kept kept) {
    const bool print = orvik_stdout_print_on();
    if (argc != count + cmn_first_value) {
        usage_note(GROUP_CMN, NOTE_NEED_INPUTS, count + cmn_first_value);
        return ORVIK_USAGE_ERROR;
    }
    if (print)
        std::printf("param(cnt: %d):\n", count);
    std::array<uint32_t, cmn_max_values> values{};
    for (int i = 0; i < count; ++i) {
        const int value = kept(std::atoi(argv[cmn_first_value + i]));
        values[static_cast<size_t>(i)] = static_cast<uint32_t>(value);
        if (print)
            std::printf(" %d", value);
    }
    if (print)
        std::putchar('\n');
    char payload[sizeof values];
    std::memcpy(payload, values.data(), sizeof payload);
    return orvik_cmn_cmd_send(type, static_cast<unsigned>(count) * sizeof(uint32_t), payload);
}

/* Each number as 0 or 1. */
int orvik_cmn_card_status_cmd(int type, int count, int argc, char** argv) {
    return send_numbers(type, count, argc, argv, [](int value) { return value != 0 ? 1 : 0; });
}

/* The numbers as typed. */
int orvik_cmn_card_status_cmd_ex(int type, int count, int argc, char** argv) {
    return send_numbers(type, count, argc, argv, [](int value) { return value; });
}

int orvik_cmn_card_status_query(int argc, char** argv) {
    say("orvik_cmn_card_status_query");
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
    say("orvik_cmn_card_type_query");
    return orvik_cmn_card_status_cmd(CMD_CARD_TYPE_QUERY, 0, argc, argv);
}

int orvik_cmn_test_get_sar_dsi(int, char**) {
    /* With the flag off nobody would see the value: the modem is not asked. */
    if (orvik_stdout_print_on())
        std::printf("SAR DSI: %d\n", orvik_get_sar_dsi());
    return 0;
}

int orvik_cmn_card_hotswap_test(int argc, char** argv) {
    const bool print = orvik_stdout_print_on();
    say("orvik_cmn_card_hotswap_test");
    if (argc <= cmn_first_value) {
        usage_note(GROUP_CMN, NOTE_NEED_INPUTS_AT_LEAST, cmn_first_value + 1);
        return ORVIK_USAGE_ERROR;
    }
    const int opt = std::atoi(argv[cmn_first_value]);
    if (print)
        std::printf("opt: %d\n", opt);
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
constexpr const char* eid_path = "/nv/item_files/modem/uim/uimdrv/esim_eid";
constexpr uint32_t eid_path_len = 40;
static_assert(std::char_traits<char>::length(eid_path) == eid_path_len);
constexpr uint32_t eid_sub = 1;

uint8_t IS_EID_SAVE; /* 1: the EID file is known to hold an EID */

void esim_failed() { std::puts("value=FAILED"); }

int32_t uim_power(uint32_t up, uint32_t ignore_hotswap) {
    const uint32_t words[] = {up, esim_slot, ignore_hotswap};
    char args[sizeof words];
    std::memcpy(args, words, sizeof args);
    return orvik_uim_request_uicc_power_ex(args);
}

/* Powers slot 2 down, switches it and powers it up. The lines appear under the command's name. */
bool esim_switch(const char* command, uint32_t physical_sim, uint32_t ignore_hotswap) {
    const int32_t down = uim_power(0, 0);
    ORVIK_DBG_IN(command, "POWER_DOWN_UIM2 res = %d", down);
    if (down != 0) {
        esim_failed();
        return false;
    }
    const uint32_t payload[] = {physical_sim, 0};
    uint8_t reply[ORVIK_COMMON_REPLY_SIZE]; /* tells nothing that matters here */
    orvik_send_common_qmi_msg(CMD_ESIM_SWITCH, sizeof payload, payload, reply);
    const int32_t up = uim_power(1, ignore_hotswap);
    ORVIK_DBG_IN(command, "POWER_UP_UIM2 res = %d", up);
    if (up != 0) {
        esim_failed();
        return false;
    }
    return true;
}

struct eid_text_type {
    char digits[eid_digits + 1];
};

/* One try, after a short wait. True when the eUICC tells an EID: one that begins with 0 is none. */
bool try_get_eid(const char* command, int loop, uint8_t (&eid)[eid_size], eid_text_type& text) {
    ::usleep(eid_wait_us);
    ORVIK_DBG_IN(command, "try get eid loop = %d", loop);
    char slot = esim_slot;
    std::memset(eid, 0, sizeof eid);
    orvik_uim_request_eid(&slot, eid);
    text = {};
    orvik_byte_to_hex(eid, eid_size, text.digits);
    return eid[0] != 0;
}

void switch_to_esim(const char* command) {
    ORVIK_DBG_IN(command, "switch to eSIM");
    if (!esim_switch(command, 0, 1))
        return;
    uint8_t eid[eid_size];
    eid_text_type text;
    for (int i = 0; i < eid_tries_after_switch; ++i) {
        if (!try_get_eid(command, i, eid, text))
            continue;
        if (!is_eid_valid(text.digits)) {
            std::printf("value=FAILED - %s\n", text.digits);
            return;
        }
        save_eid_to_efs(eid);
        std::printf("eID=%s\n", text.digits);
        return;
    }
    ORVIK_DBG_IN(command, "get eid timeout");
    esim_failed();
}

void switch_to_psim(const char* command) {
    ORVIK_DBG_IN(command, "switch to SIM2");
    if (!esim_switch(command, 1, 0))
        return;
    ORVIK_DBG_IN(command, "SIM2 Power Up successfully");
    std::puts("value=SUCCEED");
}

void show_eid(const char* command) {
    ORVIK_DBG_IN(command, "orvik get eid");
    uint8_t eid[eid_size];
    eid_text_type text;
    for (int i = 0; i < eid_tries; ++i) {
        if (try_get_eid(command, i, eid, text)) {
            std::printf("eID=%s\n", text.digits);
            return;
        }
    }
    esim_failed();
}

void show_card_states(const char* command) {
    ORVIK_DBG_IN(command, "try get simcard status");
    char told[2] = {};
    if (orvik_uim_get_card_status(told) != 0) {
        esim_failed();
        return;
    }
    const uint8_t states[] = {static_cast<uint8_t>(told[0]), static_cast<uint8_t>(told[1])};
    ORVIK_DBG_IN(command, "card_status, [%d, %d]", states[0], states[1]);
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

void reset_euicc(const char* command) {
    ORVIK_DBG_IN(command, "Start eUICC Reset");
    uint8_t open_args[] = {esim_slot, 1}; /* file control information 1 */
    uint8_t channel_id = 255;
    const int32_t opened = orvik_uim_open_channel(open_args, &channel_id);
    ORVIK_DBG_IN(command, "orvik_uim_open_channel res = %d, channel_id = %d", opened, channel_id);
    if (opened != 0) {
        esim_failed();
        return;
    }

    const uint8_t head[] = {esim_slot, channel_id, sizeof reset_apdu};
    char apdu_args[sizeof head + sizeof reset_apdu];
    std::memcpy(apdu_args, head, sizeof head);
    std::memcpy(apdu_args + sizeof head, reset_apdu, sizeof reset_apdu);
    uint8_t reply[256] = {};
    const int32_t sent = orvik_uim_send_apdu(apdu_args, reply);
    ORVIK_DBG_IN(command, "orvik_uim_send_apdu res = %d", sent);
    if (sent != 0) {
        esim_failed();
        return;
    }

    char text[2 * reset_reply_size + 1] = {};
    orvik_byte_to_hex(reply, reset_reply_size, text);
    ORVIK_DBG_IN(command, "apdu=%s", text);
    if (std::strcmp(text, reset_done) == 0) {
        ORVIK_DBG_IN(command, "orvik_uim_send_apdu, delete profile successfully.");
    } else if (std::strcmp(text, reset_nothing) == 0) {
        ORVIK_DBG_IN(command, "orvik_uim_send_apdu, nothing to delete.");
    } else {
        /* The channel stays open, on purpose. */
        ORVIK_DBG_IN(command, "orvik_uim_send_apdu, apdu rsp check failed.");
        esim_failed();
        return;
    }

    uint8_t close_args[] = {esim_slot, channel_id};
    const int32_t closed = orvik_uim_close_channel(close_args);
    ORVIK_DBG_IN(command, "orvik_uim_close_channel res = %d", closed);
    std::puts("value=SUCCEED");
}

/* By esim_on, from 1; only the first two are in the help. */
constexpr void (*esim_modes[])(const char* command) = {
    switch_to_esim, switch_to_psim, show_eid, show_card_states, reset_euicc,
};

} // namespace

int32_t orvik_cmn_esim_test(int argc, char** argv) {
    if (argc <= 4) {
        ORVIK_DBG("invalid input\n");
        return -1;
    }
    const int esim_on = std::atoi(argv[3]);
    if (std::atoi(argv[4]) == 0)
        g_orvik_stdout_print_flag = 0;
    if (esim_on < 1 || esim_on > static_cast<int>(std::size(esim_modes))) {
        ORVIK_DBG("invalid input skip");
        esim_failed();
        return 0;
    }
    esim_modes[esim_on - 1](__func__);
    return 0;
}

bool is_eid_valid(const char* eid_text) {
    ORVIK_DBG("check whether eid valid\n");
    int r = 0;
    for (size_t i = 0; i < eid_digits; ++i)
        r = (r * 10 + (static_cast<unsigned char>(eid_text[i]) - '0')) % 97;
    if (r != 1) {
        ORVIK_DBG("eid validate failed, result = %d\n", r);
        return false;
    }
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
    int32_t result = orvik_efs_read(eid_sub, eid_path, eid_path_len, kept, &length);
    if (result == 0) {
        /* What it holds is not compared. */
        ORVIK_DBG("EID already exists, set IS_EID_SAVE TRUE\n");
        IS_EID_SAVE = 1;
        return;
    }
    ORVIK_DBG("efs read failed and try save it. error_code : %d\n", result);
    result = orvik_efs_write(eid_sub, eid_path, eid_path_len, eid16, eid_size);
    if (orvik_stdout_print_on())
        std::printf("save eid efs result = %d\n", result);
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

namespace {

/* ==== group 5 ==== */

constexpr command_row cmn_commands[] = {
    {0, orvik_cmn_diag_cmd_send},     {1, orvik_cmn_card_status_query},
    {2, orvik_cmn_card_status_get},   {3, orvik_cmn_card_status_set},
    {4, orvik_cmn_card_type_query},   {5, orvik_cmn_test_get_sar_dsi},
    {6, orvik_cmn_card_hotswap_test}, {10, orvik_cmn_esim_test},
};

} // namespace

int orvik_test_cmn_do(int argc, char** argv) {
    dispatch_command(GROUP_CMN, cmn_commands, argc, argv);
    return 0;
}
