#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "converters.h"
#include "dispatch.h"
#include "handlers.h"
#include "help.h"
#include "log_lines.h"
#include "notes.h"
#include "orvik_diag_send.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_idl.h"
#include "print_data.h"

/* ==== group 6: raw vendor QMI send ==== */

namespace {

constexpr int raw_group = 6;
constexpr unsigned raw_kinds = 6;
constexpr int raw_first_data = 3;
constexpr size_t raw_max = 500;

} // namespace

int orvik_test_qmi_send_data_do(int argc, char** argv) {
    if (argc <= raw_first_data) {
        if (orvik_stdout_print_on())
            std::puts(NOTE_TOO_FEW_PARAMETERS);
        show_help(raw_group);
        return 0;
    }
    if (std::atoi(argv[1]) != raw_group) {
        if (orvik_stdout_print_on())
            std::printf(NOTE_FIRST_PARAMETER, raw_group);
        show_help(raw_group);
        return 0;
    }
    const auto qmi_id = static_cast<unsigned>(std::atoi(argv[2]));
    if (qmi_id >= raw_kinds) {
        if (orvik_stdout_print_on())
            std::printf(NOTE_QMI_ID, 0, static_cast<int>(raw_kinds));
        show_help(raw_group);
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
        show_help(raw_group);
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
    /* The response's own length is believed as far as the buffer reaches. */
    const auto payload_len = load<uint32_t>(response.data() + cmn_rsp_len);
    const size_t shown =
        std::min<size_t>(size_t{payload_len} + cmn_rsp_shown, response.size() - cmn_rsp_shown);
    if (print) {
        std::printf("\ndata len(%d)\ndata:", static_cast<int>(shown));
        print_bytes_line({response.data() + cmn_rsp_shown, shown});
    }
    return 0;
}

/* ==== group 5: DIAG command ==== */

namespace {

int not_built_yet(const char* name) {
    std::printf("%s is not built yet\n", name);
    return 0;
}

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
        print_line(NOTE_TOO_FEW_INPUTS);
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
            std::printf("\nrsp data len(%d)\nrsp data:", response_len);
            for (uint32_t i = 0; i < response_len; ++i)
                std::printf(" 0x%02X", response[i]);
            std::putchar('\n');
        }
    } else {
        print_line("\ndone without rsp data");
        /* The process must not end under the worker. */
        orvik_diag_wait_for_workers(diag_worker_time_ms);
    }
    return 0;
}

/* ==== group 5: card, SAR ==== */

int orvik_cmn_card_status_query(int, char**) { return not_built_yet(__func__); }
int orvik_cmn_card_status_get(int, char**) { return not_built_yet(__func__); }
int orvik_cmn_card_status_set(int, char**) { return not_built_yet(__func__); }
int orvik_cmn_card_type_query(int, char**) { return not_built_yet(__func__); }
int orvik_cmn_test_get_sar_dsi(int, char**) { return not_built_yet(__func__); }
int orvik_cmn_card_hotswap_test(int, char**) { return not_built_yet(__func__); }

/* ==== group 5: eSIM ==== */

int orvik_cmn_esim_test(int, char**) { return not_built_yet(__func__); }

/* ==== group 5 ==== */

constexpr command_row cmn_commands[] = {
    {0, orvik_cmn_diag_cmd_send},     {1, orvik_cmn_card_status_query},
    {2, orvik_cmn_card_status_get},   {3, orvik_cmn_card_status_set},
    {4, orvik_cmn_card_type_query},   {5, orvik_cmn_test_get_sar_dsi},
    {6, orvik_cmn_card_hotswap_test}, {10, orvik_cmn_esim_test},
};

} // namespace

int orvik_test_cmn_do(int argc, char** argv) {
    dispatch_command(5, cmn_commands, true, argc, argv);
    return 0;
}
