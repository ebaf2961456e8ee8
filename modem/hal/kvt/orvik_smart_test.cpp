// SPDX-License-Identifier: Apache-2.0
/* Group 11: restart, full dump and NV sync of the modem, and the print switches. */
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include <unistd.h>

#include "bytes.h"
#include "common_records.h"
#include "cutils_properties.h"
#include "handlers.h"
#include "help.h"
#include "log_lines.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_nvefs.h"
#include "phone_names.h"
#include "usage.h"

namespace {

/* The size that the tool gives every property buffer; a value itself is shorter. */
constexpr size_t property_size = 256;

constexpr std::string_view update_count_file = "/nv/item_files/modem/orvik/ssr_update_count";

/* Typed common messages. */
constexpr uint32_t msg_ssr = 31;
constexpr uint32_t msg_nv_sync = 35;
constexpr uint32_t msg_full_dump = 99;
constexpr uint32_t ssr_payload = 4096;
constexpr uint32_t full_dump_payload = 8192;

int send_word(uint32_t type, uint32_t payload) {
    uint8_t reply[ORVIK_COMMON_REPLY_SIZE];
    return orvik_send_common_qmi_msg(type, sizeof payload, &payload, reply);
}

/* The first size bytes of a number. */
int efs_write(std::string_view path, uint32_t number, uint32_t size) {
    return orvik_efs_write(0, path.data(), path.size(), bytes_of(number), size);
}

int orvik_smart_test_modem_ssr() {
    ORVIK_DBG("Will trigger SSR of modem\n");
    return send_word(msg_ssr, ssr_payload);
}

int orvik_smart_test_nv_sync() {
    ORVIK_DBG("Will trigger NV SYNC\n");
    uint8_t reply[ORVIK_COMMON_REPLY_SIZE];
    return orvik_send_common_qmi_msg(msg_nv_sync, 0, nullptr, reply);
}

uint32_t orvik_smart_test_read_ssr_update_flag() {
    uint8_t bytes[sizeof(uint32_t)] = {};
    uint32_t size = sizeof bytes;
    const int result =
        orvik_efs_read(0, update_count_file.data(), update_count_file.size(), bytes, &size);
    const auto count = static_cast<uint32_t>(get_le(bytes, sizeof bytes));
    ORVIK_DBG("PROP_MODEM_SSR_UPDATE_COUNT read ret: %d, old update_cnt: %d, len: %d", result,
              count, size);
    if (result != 0) {
        ORVIK_ERR("orvik_efs_read failed, maybe empty");
        return 0;
    }
    return count;
}

void orvik_smart_test_save_ssr_update_flag() {
    const uint32_t count = orvik_smart_test_read_ssr_update_flag() + 1;
    const int result = efs_write(update_count_file, count, sizeof count);
    ORVIK_DBG("PROP_MODEM_SSR_UPDATE_COUNT write ret: %d, new update_cnt: %d", result, count);
}

int orvik_smart_test_ssr_wait_s() {
    char value[property_size] = {};
    property_get(PHONE_PROPERTY_RESTART_WAIT, value, "3");
    const int wait_s = std::atoi(value);
    ORVIK_DBG("ssr wait_s = %d\n", wait_s);
    if (wait_s == 0)
        return ORVIK_FAILED(0, "modem ssr will not wait\n");
    if (wait_s < 0) /* sleep would take it for decades; the caller stops */
        return wait_s;
    ORVIK_DBG("modem ssr start to wait %ds to init\n", wait_s);
    sleep(static_cast<unsigned>(wait_s));
    ORVIK_DBG("modem ssr end to wait %ds to init\n", wait_s);
    return wait_s;
}

int orvik_smart_test_full_dump() {
    char current[property_size] = {};
    char saved[property_size] = {};
    property_get(PHONE_PROPERTY_RESTART_LEVEL, current, "ALL_ENABLE");
    property_get(PHONE_PROPERTY_RESTART_LEVEL_BACKUP, saved, "");
    if (saved[0] == '\0') { /* saved once; later runs keep it */
        ORVIK_DBG("need to save ssr state\n");
        property_set(PHONE_PROPERTY_RESTART_LEVEL_BACKUP, current);
    }
    ORVIK_DBG("Will trigger Full Dump, the current state: %s, the default state: %s\n", current,
              saved);
    if (std::strcmp(current, "ALL_DISABLE") != 0) {
        ORVIK_DBG("need to close ssr\n");
        property_set(PHONE_PROPERTY_RESTART_LEVEL, "ALL_DISABLE");
        orvik_smart_test_save_ssr_update_flag();
        const int wait_s = orvik_smart_test_ssr_wait_s();
        if (wait_s < 0)
            return ORVIK_FAILED(wait_s, "wait_s < 0, ssr is stoped\n");
    }
    return send_word(msg_full_dump, full_dump_payload);
}

int orvik_smart_test_ap_ravex_switch(int opt) {
    std::printf("ap_ravex_print, opt = %d\n", opt);
    property_set(PHONE_PROPERTY_PRINT_STATS, opt == 1 ? "1" : "2");
    std::puts("success, need to reboot");
    return 0;
}

/* A print switch of the modem is a file that exists while the switch is on. The modem reads it at
 * start-up, so it is synced and restarted. */
struct print_switch {
    const char* name;
    std::string_view path;
    uint32_t value;
    uint32_t width; /* bytes */
};

int set_print_switch(const print_switch& target, int opt) {
    std::printf("%s, opt = %d\n", target.name, opt);
    if (opt == 1) {
        if (const int result = efs_write(target.path, target.value, target.width)) {
            std::puts("orvik_efs_write failed");
            return result;
        }
    } else if (const int result = orvik_efs_delete(0, target.path.data(), target.path.size())) {
        std::puts("orvik_efs_delete failed");
        return result;
    }
    orvik_smart_test_nv_sync();
    orvik_smart_test_modem_ssr();
    std::puts("success, pls wait 10 seconds ");
    return 0;
}

int orvik_smart_test_bp_ravex_print_switch(int opt) {
    return set_print_switch({"bp_ravex_print", "/ravex/ravex_print_mask", 31, 4}, opt);
}

int orvik_smart_test_bp_qmi_print_switch(int opt) {
    return set_print_switch({"bp_qmi_print", "/nv/item_files/modem/orvik/qmi_print_flag", 1, 1},
                            opt);
}

int orvik_smart_test_bp_rf_print_switch(int opt) {
    return set_print_switch({"bp_rf_print", "/nv/item_files/modem/orvik/rf_print_mask", 15, 4},
                            opt);
}

struct smart_row {
    bool takes_opt;
    int (*function)(int opt);
};

/* By sub-command, from 0. */
constexpr smart_row commands[] = {
    {false, [](int) { return orvik_smart_test_modem_ssr(); }},
    {false, [](int) { return orvik_smart_test_full_dump(); }},
    {false, [](int) { return orvik_smart_test_nv_sync(); }},
    {true, orvik_smart_test_ap_ravex_switch},
    {true, orvik_smart_test_bp_ravex_print_switch},
    {true, orvik_smart_test_bp_qmi_print_switch},
    {true, orvik_smart_test_bp_rf_print_switch},
};

} // namespace

int orvik_smart_test_do(int argc, char** argv) {
    if (!usage_good(GROUP_SMART, argc, argv, 3))
        return show_help(GROUP_SMART);
    const int sub = std::atoi(argv[2]);
    if (sub < 0 || sub >= static_cast<int>(std::size(commands))) {
        std::printf("invalid par_i = %d\n", sub);
        return show_help(GROUP_SMART);
    }
    const smart_row& command = commands[sub];
    int opt = 0;
    if (command.takes_opt) {
        if (argc < 4)
            return usage_error(GROUP_SMART, NOTE_TOO_FEW_PARAMETERS);
        opt = std::atoi(argv[3]);
        if (opt != 0 && opt != 1)
            return usage_error(GROUP_SMART, NOTE_OPT_INVALID, opt);
    }
    return command.function(opt);
}
