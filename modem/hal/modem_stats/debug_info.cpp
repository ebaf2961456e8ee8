// SPDX-License-Identifier: Apache-2.0
#include "debug_info.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <span>

#include "bytes.h"
#include "common_records.h"
#include "orvik_extend_cmn.h"

namespace {

constexpr uint32_t request_debug_info = 20;
constexpr uint32_t request_not_supported_logs = 27;

/* ==== layouts ==== */

/* One field, little-endian and not aligned. Later layout versions only append fields: since is the
 * first version that has it. */
struct info_row {
    int since;
    int size;
    const char* name;
};

// clang-format off
constexpr info_row version_rows[] = {
    {0, 1, "version"},
};

constexpr info_row main_rows[] = {
    {0, 1, "g_modem_stats_feature_enable_status"},
    {0, 8, "g_pk_version_not_support_num"},
    {0, 8, "g_modem_stats_cmd_ok_count"},
    {0, 8, "g_modem_stats_cmd_fail_count"},
    {2, 8, "ravex_system_heapi_mem_max_num"},
    {2, 8, "ravex_system_heapi_mem_cur_num"},
    {2, 4, "modem_statsi_cmd_q_count"},
    {2, 4, "modem_statsi_cmd_free_q_count"},
    {4, 4, "g_ravex_log_mask"},
    {4, 4, "g_ravex_log_stats_mask"},
};

constexpr info_row diag_rows[] = {
    {0, 1, "init_state"},
    {0, 4, "listener_event_num"},
    {0, 1, "listener_event_state"},
    {0, 4, "listener_event_call_num"},
    {0, 4, "listener_event_parse_num"},
    {0, 4, "listener_log_num"},
    {0, 1, "listener_log_state"},
    {0, 8, "listener_log_call_num"},
    {0, 8, "listener_log_parse_num"},
    {0, 4, "poll_update_call_num"},
    {0, 4, "poll_update_parse_num"},
    {1, 8, "listener_event_callback_num"},
    {1, 8, "listener_log_callback_num"},
    {1, 4, "lte_cell_id_invalid_num"},
    {1, 4, "nr5g_cell_id_invalid_num"},
    {2, 4, "event_duration_ms_max"},
    {2, 4, "log_duration_ms_max"},
    {2, 4, "do_duration_ms_max"},
    {2, 4, "debug_call_num"},
    {2, 4, "debug_parse_num"},
    {3, 4, "cust_event_call_num"},
    {3, 4, "cust_event_parse_num"},
};

constexpr info_row cm_rows[] = {
    {0, 1, "init_state"},
    {0, 1, "listener_state"},
    {0, 4, "listener_call_event_call_num"},
    {0, 4, "listener_call_event_parse_num"},
    {0, 4, "listener_subs_event_call_num"},
    {0, 4, "listener_subs_event_parse_num"},
    {0, 4, "listener_ss_event_call_num"},
    {0, 4, "listener_ss_event_parse_num"},
    {0, 4, "listener_stats_event_call_num"},
    {0, 4, "listener_stats_event_parse_num"},
    {0, 4, "poll_update_rf_call_num"},
    {0, 4, "poll_update_rf_parse_num"},
    {0, 4, "poll_update_lte_call_num"},
    {0, 4, "poll_update_lte_parse_num"},
    {0, 4, "poll_update_nr5g_call_num"},
    {0, 4, "poll_update_nr5g_parse_num"},
};

constexpr info_row uim_rows[] = {
    {0, 1, "init_state"},
    {0, 1, "listener_state"},
    {0, 4, "listener_event_call_num"},
    {0, 4, "listener_event_parse_num"},
};

/* The begin of the same data, as the status check reads it. */
constexpr info_row status_rows[] = {
    {0, 1, "version"},
    {0, 1, "modem_stats_feature_enable_status"},
    {0, 8, "version_not_support_num"},
    {0, 8, "modem_stats_cmd_ok_count"},
    {0, 8, "modem_stats_cmd_fail_count"},
};
enum { status_enabled = 1, status_not_supported = 2 };
// clang-format on

constexpr int info_length(std::span<const info_row> rows, int version) {
    int length = 0;
    for (const info_row& row : rows)
        length += version >= row.since ? row.size : 0;
    return length;
}
static_assert(info_length(main_rows, 0) == 25 && info_length(main_rows, 1) == 25);
static_assert(info_length(main_rows, 2) == 49 && info_length(main_rows, 3) == 49);
static_assert(info_length(main_rows, 4) == 57);
static_assert(info_length(diag_rows, 0) == 43 && info_length(diag_rows, 1) == 67);
static_assert(info_length(diag_rows, 2) == 87 && info_length(diag_rows, 3) == 95);
static_assert(info_length(cm_rows, 0) == 58 && info_length(uim_rows, 0) == 10);

constexpr int version_max = 0xFF;
static_assert(offsetof(orvik_common_reply, data) + info_length(version_rows, 0) +
                  info_length(main_rows, version_max) + info_length(diag_rows, version_max) +
                  info_length(cm_rows, version_max) + info_length(uim_rows, version_max) <=
              ORVIK_COMMON_REPLY_SIZE);

/* ==== reading ==== */

void print_value(int size, const char* name, uint64_t value) {
    std::printf("UNPK[size:%d], %s = %lu\n", size, name, value);
}

/* Prints the rows of a version, at least 0, and returns their length. values, unless null, gets
 * their values. */
int print_rows(const uint8_t* data, int version, std::span<const info_row> rows,
               uint64_t* values = nullptr) {
    int length = 0;
    for (const info_row& row : rows) {
        if (row.since > 0 && version < row.since)
            continue;
        const uint64_t value = get_le(data + length, static_cast<size_t>(row.size));
        print_value(row.size, row.name, value);
        if (values != nullptr)
            *values++ = value;
        length += row.size;
    }
    return length;
}

int print_block(const uint8_t* data, int version, std::span<const info_row> rows) {
    if (data != nullptr)
        return print_rows(data, version, rows);
    std::puts("ptr is null");
    return 0;
}

} // namespace

int orvik_modem_stats_main_info_unpk(unsigned char* data, int version) {
    return print_block(data, version, main_rows);
}

int orvik_modem_stats_diag_info_unpk(unsigned char* data, int version) {
    return print_block(data, version, diag_rows);
}

int orvik_modem_stats_cm_info_unpk(unsigned char* data, int) {
    return print_block(data, 0, cm_rows);
}

int orvik_modem_stats_uim_info_unpk(unsigned char* data, int) {
    return print_block(data, 0, uim_rows);
}

/* ==== status check ==== */

constexpr const char* separator = "===========================================";

static void print_not_supported_logs() {
    orvik_common_reply reply{};
    const int32_t result = orvik_common_qmi_req(request_not_supported_logs, 0, nullptr, &reply);
    if (result != 0) {
        std::printf("orvik_common_qmi_req fail, result = %d, rsp_not_support.result = %d\n", result,
                    reply.result);
        return;
    }
    if (reply.result != 0) {
        std::printf("qmi response fail, result = %d, rsp_not_support.result = %d\n", reply.result,
                    reply.result);
        return;
    }
    const uint8_t* const data = reply.data;
    const int log_num = static_cast<int>(get_le(data, 2));
    print_value(2, "log_num", static_cast<uint64_t>(log_num));
    std::puts(separator);
    std::puts("================= FAIL ====================");
    std::puts(separator);
    std::printf("Diag logs to be upgraded[num:%d]:\n", log_num);
    for (int i = 0; i < log_num; ++i) {
        /* Published: the offset has 8 bits, so code 127 is read from the count, and the next from
         * the first codes. */
        const auto offset = static_cast<uint8_t>(2 * i + 2);
        std::printf("log_id[%d]: 0x%04X\n", i, static_cast<unsigned>(get_le(data + offset, 2)));
    }
}

void orvik_modem_stats_support_status_check(unsigned char* data) {
    if (data == nullptr) {
        std::puts("orvik_modem_stats_support_status_check, ptr is null");
        return;
    }
    uint64_t values[std::size(status_rows)] = {};
    print_rows(data, 0, status_rows, values);
    if (values[status_enabled] == 0) {
        std::puts(separator);
        std::puts("================ CLOSED ===================");
    } else if (values[status_not_supported] == 0) {
        std::puts(separator);
        std::puts("================ SUCCES ===================");
    } else {
        print_not_supported_logs();
    }
}

/* ==== dump ==== */

namespace {

struct block_type {
    const char* name;
    int (*unpk)(unsigned char* data, int version);
};

constexpr block_type blocks[] = {
    {"main", orvik_modem_stats_main_info_unpk},
    {"diag", orvik_modem_stats_diag_info_unpk},
    {"cm", orvik_modem_stats_cm_info_unpk},
    {"uim", orvik_modem_stats_uim_info_unpk},
};

void dump(unsigned char* data) {
    const int version = data[0];
    auto cnt = static_cast<uint8_t>(print_rows(data, version, version_rows));
    for (const block_type& block : blocks) {
        std::printf("-------- stats %s info start --------\n", block.name);
        cnt = static_cast<uint8_t>(cnt + block.unpk(data + cnt, version));
        std::printf("-------- stats %s info end, cnt(%d) --------\n", block.name, cnt);
    }
}

} // namespace

void orvik_test_modem_stats_get_debug_info_do(int mask) {
    std::printf("Get the debug info of modem_stats, mask = 0x%x\n", mask);
    orvik_common_reply reply{};
    const int32_t result = orvik_common_qmi_req(request_debug_info, 0, nullptr, &reply);
    if (result != 0) {
        std::printf("orvik_common_qmi_req fail, REQUEST_ID_COMMON, result = %d, rsp.result = %d\n",
                    result, reply.result);
        return;
    }
    if (reply.result != 0) {
        std::printf("qmi response fail, result = %d, rsp.result = %d\n", reply.result,
                    reply.result);
        return;
    }
    if (mask == 0)
        orvik_modem_stats_support_status_check(reply.data);
    else
        dump(reply.data);
}
