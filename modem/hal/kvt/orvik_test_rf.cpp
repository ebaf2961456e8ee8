/* Group 3: RF tests that the modem carries out itself after a reboot. */
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "dispatch.h"
#include "handlers.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_idl.h"
#include "orvik_extend_nvefs.h"
#include "print_data.h"

namespace {

/* Records of request kind 4, little-endian as on both processors. */
constexpr int gpio_max = 50;

struct gpio_test_record {
    uint32_t kind; /* 0 */
    uint32_t zero;
    uint32_t count; /* of values typed, not capped */
    uint32_t values[gpio_max];
    uint8_t rest[300];
};
static_assert(sizeof(gpio_test_record) == ORVIK_EXTEND_DATA_SIZE);

struct rf_tx_test_record {
    uint32_t kind; /* 1 */
    uint32_t zero;
    uint32_t v_ant; /* 0 lower antenna, 1 upper antenna */
    uint32_t v_sys; /* 0 gsm, 1 wcdma, 2 cdma, 3 tds, 4 lte */
    uint64_t v_band_list;
    uint8_t rest[488];
};
static_assert(sizeof(rf_tx_test_record) == ORVIK_EXTEND_DATA_SIZE);
static_assert(offsetof(rf_tx_test_record, v_band_list) == 16);

constexpr uint32_t gpio_test_kind = 0;
constexpr uint32_t rf_tx_test_kind = 1;

/* Where the modem keeps the tests' state. */
constexpr std::string_view gpio_test_file = "/nv/item_files/modem/orvik/rf_ant_port_config";
constexpr std::string_view rf_tx_test_file = "/nv/item_files/modem/antenna/ant_tx_config";

template <typename Record> int send_record(const Record& record) {
    uint8_t request[sizeof record];
    std::memcpy(request, &record, sizeof request);
    std::array<uint8_t, ORVIK_EXTEND_DATA_SIZE> response{}; /* not read */
    uint32_t capacity = ORVIK_COMMON_REPLY_SIZE;
    const int result = orvik_extend_qmi_send_sync(REQUEST_ID_COMMON, request, sizeof request,
                                                  response.data(), &capacity);
    if (result != 0)
        std::puts("orvik_extend_qmi_send_sync fail, REQUEST_ID_COMMON");
    return result;
}

/* What get and close of both tests share: the name, the argument count and the failure line. */
template <typename Action> int on_file(const char* name, int argc, int sub, Action action) {
    std::puts(name);
    if (argc != 3) {
        usage_note(GROUP_RF, NOTE_CMD_ERROR, GROUP_RF, sub);
        return ORVIK_USAGE_ERROR;
    }
    const int result = action();
    if (result != 0)
        std::puts("orvik_extend_qmi_send_sync fail, REQUEST_ID_EFS");
    return result;
}

int show_file(std::string_view path) {
    std::array<uint8_t, 365> buffer{};
    auto length = static_cast<uint32_t>(buffer.size());
    const int result =
        orvik_efs_read(0, path.data(), static_cast<uint32_t>(path.size()), buffer.data(), &length);
    if (result == 0)
        print_read_data({buffer.data(), length});
    return result;
}

int delete_file(std::string_view path) {
    return orvik_efs_delete(0, path.data(), static_cast<uint32_t>(path.size()));
}

int orvik_gpio_test_set(int argc, char** argv) {
    std::puts("orvik_gpio_test_set");
    if (argc <= 2) {
        usage_note(GROUP_RF, NOTE_TOO_FEW_INPUTS);
        return ORVIK_USAGE_ERROR;
    }
    gpio_test_record record{};
    record.kind = gpio_test_kind;
    record.count = static_cast<uint32_t>(argc - 3);
    for (int i = 0; i < std::min(argc - 3, gpio_max); ++i) {
        const int value = std::atoi(argv[3 + i]);
        record.values[i] = static_cast<uint32_t>(value);
        std::printf("orvik_gpio_test_set, gpio_v[%d]: %d\n", i, value);
    }
    return send_record(record);
}

int orvik_gpio_test_get(int argc) {
    return on_file("orvik_gpio_test_get", argc, 1, [] { return show_file(gpio_test_file); });
}

int orvik_gpio_test_closed(int argc) {
    return on_file("orvik_gpio_test_closed", argc, 2, [] { return delete_file(gpio_test_file); });
}

int orvik_rf_tx_test_set(int argc, char** argv) {
    std::printf("orvik_rf_tx_test_set, argc(%d)\n", argc);
    if (argc != 6) {
        usage_note(GROUP_RF, NOTE_NEED_INPUTS, 5); /* the published number, although 6 are needed */
        return ORVIK_USAGE_ERROR;
    }
    rf_tx_test_record record{};
    record.kind = rf_tx_test_kind;
    record.v_ant = static_cast<uint32_t>(std::atoi(argv[3]));
    record.v_sys = static_cast<uint32_t>(std::atoi(argv[4]));
    record.v_band_list = std::strtoul(argv[5], nullptr, 0);
    std::printf(" v_ant(%d)\n", record.v_ant);
    std::printf(" v_sys(%d)\n", record.v_sys);
    std::printf(" v_band_list(%lu)\n", static_cast<unsigned long>(record.v_band_list));
    return send_record(record);
}

int orvik_rf_tx_test_get(int argc) {
    return on_file("orvik_rf_tx_test_get", argc, 4, [] { return show_file(rf_tx_test_file); });
}

int orvik_rf_tx_test_closed(int argc) {
    return on_file("orvik_rf_tx_test_closed", argc, 5, [] { return delete_file(rf_tx_test_file); });
}

constexpr command_row commands[] = {
    {0, orvik_gpio_test_set},
    {1, [](int argc, char**) { return orvik_gpio_test_get(argc); }},
    {2, [](int argc, char**) { return orvik_gpio_test_closed(argc); }},
    {3, orvik_rf_tx_test_set},
    {4, [](int argc, char**) { return orvik_rf_tx_test_get(argc); }},
    {5, [](int argc, char**) { return orvik_rf_tx_test_closed(argc); }},
};

} // namespace

int orvik_test_rf_do(int argc, char** argv) {
    dispatch_command(GROUP_RF, commands, argc, argv);
    return 0;
}
