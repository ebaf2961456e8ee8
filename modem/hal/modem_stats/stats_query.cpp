// SPDX-License-Identifier: Apache-2.0
#include "stats_query.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <span>

#include "bytes.h"
#include "help.h"
#include "stats_commands.h"
#include "usage.h"

namespace {

constexpr uint32_t no_client = 0xFFFFFFFF;
constexpr unsigned subscriptions = 2;

} // namespace

uint32_t g_ravex_client_id = no_client;
int32_t g_ravex_data_len;
uint8_t g_ravex_data[QMI_VS_MAX_DATA];
int32_t g_ravex_data_left;
int32_t g_pK_DATA_CNT;
uint32_t g_ravex_data_id;
uint32_t g_ravex_req_number;

/* ==== records ==== */

namespace {

/* Fields follow one another, little-endian; widths in bytes. Numbers of 4 bytes are signed. */
enum class field_kind : uint8_t { u8, u16, i32, f32 };

constexpr int width_of(field_kind kind) {
    return kind == field_kind::u8 ? 1 : kind == field_kind::u16 ? 2 : 4;
}

struct field_row {
    field_kind kind;
    const char* name;  /* in the line for a record that ends too early */
    const char* label; /* in the record's line; null: read, not printed */
};

constexpr size_t max_fields = 22;

using enum field_kind;

/* A field whose label is its name. */
constexpr field_row shown(field_kind kind, const char* name) { return {kind, name, name}; }

constexpr field_row carrier_4g_fields[] = {
    {u8, "version", nullptr}, {u8, "version_ssmr", nullptr}, shown(i32, "earfcn"),
    shown(u16, "pci"),        {u8, "is_srv_cell", nullptr},  shown(u16, "rx_valid"),
    shown(f32, "rsrp_rx0"),   shown(f32, "rsrq_rx0"),        shown(f32, "rssi_rx0"),
    shown(f32, "snr_rx0"),    shown(f32, "rsrp_rx1"),        shown(f32, "rsrq_rx1"),
    shown(f32, "rssi_rx1"),   shown(f32, "snr_rx1"),         shown(f32, "rsrp_rx2"),
    shown(f32, "rsrq_rx2"),   shown(f32, "rssi_rx2"),        shown(f32, "snr_rx2"),
    shown(f32, "rsrp_rx3"),   shown(f32, "rsrq_rx3"),        shown(f32, "rssi_rx3"),
    shown(f32, "snr_rx3"),
};

constexpr field_row rssi_fields[] = {
    {i32, "version", nullptr},  {f32, "rssi0", "rssi_rx0"}, {f32, "rssi1", "rssi_rx1"},
    {f32, "rssi2", "rssi_rx2"}, {f32, "rssi3", "rssi_rx3"},
};

constexpr field_row snr_fields[] = {
    {i32, "version", nullptr}, {f32, "snr0", "snr_rx0"}, {f32, "snr1", "snr_rx1"},
    {f32, "snr2", "snr_rx2"},  {f32, "snr3", "snr_rx3"},
};

constexpr field_row rsrp_fields[] = {
    {i32, "version", nullptr}, shown(f32, "rsrp_rx0"), shown(f32, "rsrp_rx1"),
    shown(f32, "rsrp_rx2"),    shown(f32, "rsrp_rx3"), shown(f32, "rsrq"),
};

constexpr field_row ant_switch_fields[] = {
    {i32, "version", nullptr}, shown(u8, "ant_rx_0_old"), shown(u8, "ant_rx_0_new"),
    shown(u8, "ant_rx_1_old"), shown(u8, "ant_rx_1_new"), shown(u8, "ant_rx_2_old"),
    shown(u8, "ant_rx_2_new"), shown(u8, "ant_rx_3_old"), shown(u8, "ant_rx_3_new"),
    shown(u8, "ant_tx_0_old"), shown(u8, "ant_tx_0_new"), shown(u8, "ant_tx_1_old"),
    shown(u8, "ant_tx_1_new"),
};

constexpr field_row wcdma_fields[] = {
    {u8, "version", nullptr},
    shown(f32, "rx_agc_0"),
    shown(f32, "rx_agc_1"),
};

constexpr field_row gsm_fields[] = {
    {u8, "version", nullptr},
    shown(f32, "rx_prx"),
    shown(f32, "rx_drx"),
};

constexpr field_row ant_info_fields[] = {
    {u8, "version", nullptr}, {u8, "ant_number", "ant_num"}, {u16, "ant_switch_path", "ant_path"},
    shown(u16, "sig_path"),   shown(u8, "old_config"),       shown(u8, "new_config"),
};

constexpr int size_of(std::span<const field_row> fields) {
    int size = 0;
    for (const field_row& field : fields)
        size += width_of(field.kind);
    return size;
}
static_assert(size_of(carrier_4g_fields) == 75 && size_of(rssi_fields) == 20 &&
              size_of(snr_fields) == 20 && size_of(rsrp_fields) == 24 &&
              size_of(ant_switch_fields) == 16 && size_of(wcdma_fields) == 9 &&
              size_of(gsm_fields) == 9 && size_of(ant_info_fields) == 8);
static_assert(std::size(carrier_4g_fields) == max_fields);

/* Takes the next bytes of the reply as a number; false, after a line, when there are not enough. */
bool read_field(const field_row& field, uint32_t& value) {
    const int size = width_of(field.kind);
    if (g_ravex_data_left < size) {
        std::printf("g_ravex_data_left(%d) is not enough for %s, id(0x%x)\n", g_ravex_data_left,
                    field.name, g_ravex_data_id);
        return false;
    }
    if (g_pK_DATA_CNT < 0) {
        std::printf("g_pK_DATA_CNT(%d) is can not < 0 for %s, id(0x%x)\n", g_ravex_data_left,
                    field.name, g_ravex_data_id);
        return false;
    }
    value = static_cast<uint32_t>(get_le(g_ravex_data + g_pK_DATA_CNT, static_cast<size_t>(size)));
    g_pK_DATA_CNT += size;
    g_ravex_data_left -= size;
    return true;
}

/* sign: between label and value; title: begins the line. */
int show_item(unsigned sub, modem_stats_data_id_e_type id, std::span<const field_row> fields,
              const char* sign = ": ", const char* title = "ASDIV DATA") {
    if (const int failed = orvik_test_qmi_modem_stats_get(sub, id); failed != 0)
        return failed;
    std::array<uint32_t, max_fields> values{};
    for (size_t i = 0; i < fields.size(); ++i)
        if (!read_field(fields[i], values[i]))
            return 1;

    std::printf("%s: ", title);
    const char* separator = "";
    for (size_t i = 0; i < fields.size(); ++i) {
        const field_row& field = fields[i];
        if (field.label == nullptr)
            continue;
        std::printf("%s%s%s", separator, field.label, sign);
        if (field.kind == f32)
            std::printf("%.2f", static_cast<double>(std::bit_cast<float>(values[i])));
        else
            std::printf("%d", static_cast<int32_t>(values[i]));
        separator = ", ";
    }
    std::putchar('\n');
    return 0;
}

} // namespace

int orvik_test_qmi_modem_stats_4g_rssi(unsigned sub, modem_stats_data_id_e_type id) {
    return show_item(sub, id, carrier_4g_fields);
}

int orvik_test_qmi_modem_stats_5g_rssi(unsigned sub) {
    return show_item(sub, MODEM_STATS_5G_PCC_RSSI, rssi_fields);
}

int orvik_test_qmi_modem_stats_5g_snr(unsigned sub) {
    return show_item(sub, MODEM_STATS_5G_PCC_SNR, snr_fields);
}

int orvik_test_qmi_modem_stats_5g_ant_diversity(unsigned sub) {
    return show_item(sub, MODEM_STATS_5G_ANT_DIVERSITY, ant_switch_fields, " = ");
}

int orvik_test_qmi_modem_stats_5g_rsrp(unsigned sub, modem_stats_data_id_e_type id) {
    return show_item(sub, id, rsrp_fields);
}

int orvik_test_qmi_modem_stats_wcdma_rssi(unsigned sub) {
    return show_item(sub, MODEM_STATS_WCDMA_RSSI, wcdma_fields);
}

int orvik_test_qmi_modem_stats_gsm_rssi(unsigned sub) {
    return show_item(sub, MODEM_STATS_GSM_RSSI, gsm_fields);
}

int orvik_test_qmi_modem_stats_ant_info() {
    return show_item(0, MODEM_STATS_ANT_INFO, ant_info_fields, ": ", "ANT INFO");
}

/* ==== options ==== */

void orvik_test_qmi_modem_stats_hdl(int opt, unsigned sub) {
    // clang-format off
    switch (opt) {
    case 0:  orvik_test_qmi_modem_stats_4g_rssi(sub, MODEM_STATS_4G_PCC_RSSI); break;
    case 1:  orvik_test_qmi_modem_stats_4g_rssi(sub, MODEM_STATS_4G_SCC1_RSSI); break;
    case 2:  orvik_test_qmi_modem_stats_4g_rssi(sub, MODEM_STATS_4G_SCC2_RSSI); break;
    case 3:  orvik_test_qmi_modem_stats_4g_rssi(sub, MODEM_STATS_4G_SCC3_RSSI); break;
    case 4:  orvik_test_qmi_modem_stats_4g_rssi(sub, MODEM_STATS_4G_SCC4_RSSI); break;
    case 5:  orvik_test_qmi_modem_stats_4g_rssi(sub, MODEM_STATS_4G_SCC5_RSSI); break;
    case 6:  orvik_test_qmi_modem_stats_4g_rssi(sub, MODEM_STATS_4G_SCC6_RSSI); break;
    case 7:  orvik_test_qmi_modem_stats_5g_rssi(sub); break;
    case 8:  orvik_test_qmi_modem_stats_5g_snr(sub); break;
    case 9:  orvik_test_qmi_modem_stats_5g_ant_diversity(sub); break;
    case 10: orvik_test_qmi_modem_stats_5g_rsrp(sub, MODEM_STATS_5G_PCC_RSRP); break;
    case 11: orvik_test_qmi_modem_stats_5g_rsrp(sub, MODEM_STATS_5G_SCC1_RSRP); break;
    case 12: orvik_test_qmi_modem_stats_5g_rsrp(sub, MODEM_STATS_5G_SCC2_RSRP); break;
    case 20: orvik_test_qmi_modem_stats_wcdma_rssi(sub); break;
    case 21: orvik_test_qmi_modem_stats_gsm_rssi(sub); break;
    case 30: orvik_test_qmi_modem_stats_ant_info(); break;
    default:
        std::printf("orvik_test_qmi_modem_stats_hdl: Unknown opt(%d), sub(%d)\n", opt, sub);
    }
    // clang-format on
}

/* ==== one request ==== */

/* A reply that is no good, as "Fail to get data, WHAT, number = ...". */
[[gnu::format(printf, 4, 5)]] static int bad_reply(unsigned sub, unsigned data_id, uint32_t count,
                                                   const char* what, ...) {
    std::printf("Fail to get data, ");
    va_list args;
    va_start(args, what);
    std::vprintf(what, args);
    va_end(args);
    std::printf(", number = %d, sub = %d, ret id_num = %d, id = %d\n", g_ravex_req_number, sub,
                count, data_id);
    return 1;
}

int orvik_test_qmi_modem_stats_get(unsigned sub, unsigned data_id) {
    g_ravex_data_len = 0;
    std::fill(std::begin(g_ravex_data), std::end(g_ravex_data), uint8_t{0});
    if (g_ravex_client_id == no_client) {
        std::puts("ravex qmi is not yet inited");
        return 1;
    }
    if (sub >= subscriptions) {
        std::printf("modem_api_get_stats_parameter, sub(%d) is invalid\n", sub);
        return 1;
    }

    ++g_ravex_req_number;
    modem_api_stats reply{};
    const int result = modem_api_get_stats_parameter(static_cast<int32_t>(g_ravex_client_id),
                                                     static_cast<uint16_t>(sub),
                                                     static_cast<uint16_t>(g_ravex_req_number), 1,
                                                     &data_id, reinterpret_cast<uint32_t*>(&reply));
    if (result != 0) {
        std::printf("Fail to get data fail, number = %d, ret = %d, sub = %d, id = %d\n",
                    g_ravex_req_number, result, sub, data_id);
        return 1;
    }
    const uint32_t count = reply.count;
    const modem_api_stats_entry& entry = reply.entries[0];
    if (count == 0)
        return bad_reply(sub, data_id, count, "empty");
    if (count != 1)
        return bad_reply(sub, data_id, count, "id num error");
    if (entry.id != data_id)
        return bad_reply(sub, data_id, count, "ret_id(%d) is invalid", entry.id);
    if (entry.sub != sub)
        return bad_reply(sub, data_id, count, "ret_sub(%d) is invalid", entry.sub);
    if (entry.data_len == 0 || entry.data_len > sizeof g_ravex_data)
        return bad_reply(sub, data_id, count, "data_len(%d) is invalid, should be in (0, %d]",
                         entry.data_len, static_cast<int>(sizeof g_ravex_data));
    g_ravex_data_len = static_cast<int32_t>(entry.data_len);
    std::printf("Success to get data, number = %d, sub = %d, ret id_num = %d, id = %d, "
                "data_len = %d\n",
                g_ravex_req_number, sub, count, data_id, g_ravex_data_len);
    std::memcpy(g_ravex_data, entry.data, entry.data_len);
    g_ravex_data_left = g_ravex_data_len;
    g_pK_DATA_CNT = 0;
    g_ravex_data_id = data_id;
    return 0;
}

/* ==== the run ==== */

static void free_client() {
    if (g_ravex_client_id != no_client)
        modem_api_free_client(static_cast<int32_t>(g_ravex_client_id));
    g_ravex_client_id = no_client;
}

void orvik_test_qmi_modem_stats_callback_event_cb(uint32_t, void*, uint32_t) {}

void orvik_test_qmi_modem_stats_operational_status_cb(uint32_t, uint32_t) {}

void orvik_qmi_modem_stats_api_init() {
    free_client();
    modem_api_release();
    modem_api_init();
    int32_t client = -1;
    modem_api_init_client(CLIENT_KIND_VS, orvik_test_qmi_modem_stats_callback_event_cb,
                          orvik_test_qmi_modem_stats_operational_status_cb, &client);
    g_ravex_client_id = static_cast<uint32_t>(client);
}

void orvik_test_qmi_modem_stats_start() {
    const int result =
        modem_api_set_ravex_feature_status(static_cast<int32_t>(g_ravex_client_id), 2, 1, 1, 1);
    if (result != 0)
        std::printf("modem_api_set_ravex_feature_status, start fail, result = %d\n", result);
}

void orvik_qmi_modem_stats_api_deinit() {
    free_client();
    modem_api_release();
}

int orvik_test_qmi_modem_stats_do(int argc, char** argv) {
    if (!usage_good(GROUP_QMI_MODEM_STATS, argc, argv, 4)) {
        show_help(GROUP_QMI_MODEM_STATS);
        return 0;
    }
    const int opt = std::atoi(argv[2]);
    const int sub = std::atoi(argv[3]);
    orvik_qmi_modem_stats_api_init();
    orvik_test_qmi_modem_stats_start();
    std::printf("opt = %d, sub = %d, g_ravex_client_id = %d\n", opt, sub,
                static_cast<int>(g_ravex_client_id));
    orvik_test_qmi_modem_stats_hdl(opt, static_cast<unsigned>(sub));
    orvik_qmi_modem_stats_api_deinit();
    return 0;
}
