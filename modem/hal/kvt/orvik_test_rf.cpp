// SPDX-License-Identifier: Apache-2.0
/* Group 3: RF tests that the modem carries out itself after a reboot. */
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bytes.h"
#include "common_records.h"
#include "dispatch.h"
#include "handlers.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_idl.h"
#include "orvik_extend_nvefs.h"
#include "print_data.h"
#include "usage.h"

namespace {

/* Where the modem keeps the tests' state. */
constexpr std::string_view gpio_test_file = "/nv/item_files/modem/orvik/rf_ant_port_config";
constexpr std::string_view rf_tx_test_file = "/nv/item_files/modem/antenna/ant_tx_config";

int send_record(const uint8_t* record) {
    orvik_common_reply reply{}; /* not read */
    uint32_t capacity = ORVIK_COMMON_REPLY_SIZE;
    const int result = orvik_extend_qmi_send_sync(REQUEST_ID_COMMON, record, ORVIK_EXTEND_DATA_SIZE,
                                                  &reply, &capacity);
    if (result != 0)
        std::puts("orvik_extend_qmi_send_sync fail, REQUEST_ID_COMMON");
    return result;
}

/* Name and argument count of a test's get and close. */
bool file_command_good(const char* name, int argc, int sub) {
    std::puts(name);
    if (argc == 3)
        return true;
    usage_note(GROUP_RF, NOTE_CMD_ERROR, GROUP_RF, sub);
    return false;
}

int file_result(int result) {
    if (result != 0)
        std::puts("orvik_extend_qmi_send_sync fail, REQUEST_ID_EFS");
    return result;
}

int show_file(const char* name, int argc, int sub, std::string_view path) {
    if (!file_command_good(name, argc, sub))
        return ORVIK_USAGE_ERROR;
    std::array<uint8_t, 365> buffer{};
    uint32_t length = buffer.size();
    const int result = orvik_efs_read(0, path.data(), path.size(), buffer.data(), &length);
    if (result == 0)
        print_read_data({buffer.data(), length});
    return file_result(result);
}

int delete_file(const char* name, int argc, int sub, std::string_view path) {
    if (!file_command_good(name, argc, sub))
        return ORVIK_USAGE_ERROR;
    return file_result(orvik_efs_delete(0, path.data(), path.size()));
}

int orvik_gpio_test_set(int argc, char** argv) {
    std::puts("orvik_gpio_test_set");
    if (argc <= 2) {
        usage_note(GROUP_RF, NOTE_TOO_FEW_INPUTS);
        return ORVIK_USAGE_ERROR;
    }
    orvik_gpio_test_record record{};
    record.code = COMMON_CODE_GPIO_TEST;
    record.count = static_cast<uint32_t>(argc - 3);
    for (int i = 0; i < std::min<int>(argc - 3, ORVIK_GPIO_VALUES_MAX); ++i) {
        const int value = std::atoi(argv[3 + i]);
        record.values[i] = static_cast<uint32_t>(value);
        std::printf("orvik_gpio_test_set, gpio_v[%d]: %d\n", i, value);
    }
    return send_record(bytes_of(record));
}

int orvik_gpio_test_get(int argc, char**) {
    return show_file("orvik_gpio_test_get", argc, 1, gpio_test_file);
}

int orvik_gpio_test_closed(int argc, char**) {
    return delete_file("orvik_gpio_test_closed", argc, 2, gpio_test_file);
}

int orvik_rf_tx_test_set(int argc, char** argv) {
    std::printf("orvik_rf_tx_test_set, argc(%d)\n", argc);
    if (argc != 6) {
        usage_note(GROUP_RF, NOTE_NEED_INPUTS, 5); /* Published: 6 are needed. */
        return ORVIK_USAGE_ERROR;
    }
    orvik_rf_tx_test_record record{};
    record.code = COMMON_CODE_RF_TX_TEST;
    record.v_ant = static_cast<uint32_t>(std::atoi(argv[3]));
    record.v_sys = static_cast<uint32_t>(std::atoi(argv[4]));
    record.v_band_list = std::strtoul(argv[5], nullptr, 0);
    std::printf(" v_ant(%d)\n", record.v_ant);
    std::printf(" v_sys(%d)\n", record.v_sys);
    std::printf(" v_band_list(%lu)\n", static_cast<unsigned long>(record.v_band_list));
    return send_record(bytes_of(record));
}

int orvik_rf_tx_test_get(int argc, char**) {
    return show_file("orvik_rf_tx_test_get", argc, 4, rf_tx_test_file);
}

int orvik_rf_tx_test_closed(int argc, char**) {
    return delete_file("orvik_rf_tx_test_closed", argc, 5, rf_tx_test_file);
}

constexpr command_row commands[] = {
    {0, orvik_gpio_test_set},  {1, orvik_gpio_test_get},  {2, orvik_gpio_test_closed},
    {3, orvik_rf_tx_test_set}, {4, orvik_rf_tx_test_get}, {5, orvik_rf_tx_test_closed},
};

} // namespace

int orvik_test_rf_do(int argc, char** argv) {
    dispatch_command(GROUP_RF, commands, argc, argv);
    return 0;
}
