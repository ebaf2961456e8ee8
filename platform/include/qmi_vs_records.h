// SPDX-License-Identifier: Apache-2.0
/* What the statistics service's items hold, and the blocks of the statistics' debug information: one
 * row per field, in the order in which the fields stand. Nothing is aligned, numbers are
 * little-endian. qmi_vs.h has the messages that carry the items. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vs_records {

enum class Kind : uint8_t { u8, u16, u32, u64, f32 };

constexpr size_t width(Kind kind) {
    switch (kind) {
    case Kind::u8:
        return 1;
    case Kind::u16:
        return 2;
    case Kind::u64:
        return 8;
    default:
        return 4;
    }
}

struct Field {
    const char* name;
    Kind kind;
    const char* unit = ""; /* none: a plain number */
    uint8_t since = 0;     /* layout version of the debug information that it came with */
};

struct Record {
    uint32_t id;      /* of a statistics item */
    const char* name; /* also of a block */
    std::span<const Field> fields;
};

/* Where a field stands in its record of that version, from the record's first byte; with
 * fields.size(), how long the record is. */
constexpr size_t offset_of(std::span<const Field> fields, size_t index, unsigned version = 255) {
    size_t offset = 0;
    for (size_t i = 0; i < index; ++i)
        if (fields[i].since <= version)
            offset += width(fields[i].kind);
    return offset;
}

constexpr size_t size_of(std::span<const Field> fields, unsigned version = 255) {
    return offset_of(fields, fields.size(), version);
}

// clang-format off
inline constexpr Field lte_carrier_fields[] = {
    {"version", Kind::u8}, {"version_ssmr", Kind::u8}, {"earfcn", Kind::u32}, {"pci", Kind::u16},
    {"is_srv_cell", Kind::u8}, {"rx_valid", Kind::u16},
    {"rsrp_rx0", Kind::f32, "dBm"}, {"rsrq_rx0", Kind::f32, "dB"}, {"rssi_rx0", Kind::f32, "dBm"}, {"snr_rx0", Kind::f32, "dB"},
    {"rsrp_rx1", Kind::f32, "dBm"}, {"rsrq_rx1", Kind::f32, "dB"}, {"rssi_rx1", Kind::f32, "dBm"}, {"snr_rx1", Kind::f32, "dB"},
    {"rsrp_rx2", Kind::f32, "dBm"}, {"rsrq_rx2", Kind::f32, "dB"}, {"rssi_rx2", Kind::f32, "dBm"}, {"snr_rx2", Kind::f32, "dB"},
    {"rsrp_rx3", Kind::f32, "dBm"}, {"rsrq_rx3", Kind::f32, "dB"}, {"rssi_rx3", Kind::f32, "dBm"}, {"snr_rx3", Kind::f32, "dB"},
};
inline constexpr Field nr_rssi_fields[] = {
    {"version", Kind::u32}, {"rssi_rx0", Kind::f32, "dBm"}, {"rssi_rx1", Kind::f32, "dBm"},
    {"rssi_rx2", Kind::f32, "dBm"}, {"rssi_rx3", Kind::f32, "dBm"},
};
inline constexpr Field nr_snr_fields[] = {
    {"version", Kind::u32}, {"snr_rx0", Kind::f32, "dB"}, {"snr_rx1", Kind::f32, "dB"},
    {"snr_rx2", Kind::f32, "dB"}, {"snr_rx3", Kind::f32, "dB"},
};
inline constexpr Field nr_carrier_fields[] = {
    {"version", Kind::u32}, {"rsrp_rx0", Kind::f32, "dBm"}, {"rsrp_rx1", Kind::f32, "dBm"},
    {"rsrp_rx2", Kind::f32, "dBm"}, {"rsrp_rx3", Kind::f32, "dBm"}, {"rsrq", Kind::f32, "dB"},
};
inline constexpr Field nr_antenna_fields[] = {
    {"version", Kind::u32},
    {"ant_rx_0_old", Kind::u8}, {"ant_rx_0_new", Kind::u8}, {"ant_rx_1_old", Kind::u8}, {"ant_rx_1_new", Kind::u8},
    {"ant_rx_2_old", Kind::u8}, {"ant_rx_2_new", Kind::u8}, {"ant_rx_3_old", Kind::u8}, {"ant_rx_3_new", Kind::u8},
    {"ant_tx_0_old", Kind::u8}, {"ant_tx_0_new", Kind::u8}, {"ant_tx_1_old", Kind::u8}, {"ant_tx_1_new", Kind::u8},
};
inline constexpr Field wcdma_fields[] = {
    {"version", Kind::u8}, {"rx_agc_0", Kind::f32, "dBm"}, {"rx_agc_1", Kind::f32, "dBm"},
};
inline constexpr Field gsm_fields[] = {
    {"version", Kind::u8}, {"rx_prx", Kind::f32, "dBm"}, {"rx_drx", Kind::f32, "dBm"},
};
inline constexpr Field antenna_fields[] = {
    {"version", Kind::u8}, {"ant_num", Kind::u8}, {"ant_path", Kind::u16}, {"sig_path", Kind::u16},
    {"old_config", Kind::u8}, {"new_config", Kind::u8},
};

inline constexpr Record items[] = {
    {82, "lte.pcc", lte_carrier_fields},   {103, "lte.scc1", lte_carrier_fields},
    {104, "lte.scc2", lte_carrier_fields}, {105, "lte.scc3", lte_carrier_fields},
    {106, "lte.scc4", lte_carrier_fields}, {107, "lte.scc5", lte_carrier_fields},
    {108, "lte.scc6", lte_carrier_fields},
    {94, "nr.rssi", nr_rssi_fields},       {112, "nr.snr", nr_snr_fields},
    {113, "nr.antennas", nr_antenna_fields},
    {135, "nr.pcc", nr_carrier_fields},    {6, "nr.scc1", nr_carrier_fields},
    {7, "nr.scc2", nr_carrier_fields},
    {110, "wcdma", wcdma_fields},          {111, "gsm", gsm_fields},
    {100, "antennas", antenna_fields},
};

/* The debug information: a version, u8, then the blocks one behind the other. */
inline constexpr Field debug_main_fields[] = {
    {"g_modem_stats_feature_enable_status", Kind::u8}, {"g_pk_version_not_support_num", Kind::u64},
    {"g_modem_stats_cmd_ok_count", Kind::u64}, {"g_modem_stats_cmd_fail_count", Kind::u64},
    {"ravex_system_heapi_mem_max_num", Kind::u64, "bytes", 2},
    {"ravex_system_heapi_mem_cur_num", Kind::u64, "bytes", 2},
    {"modem_statsi_cmd_q_count", Kind::u32, "", 2}, {"modem_statsi_cmd_free_q_count", Kind::u32, "", 2},
    {"g_ravex_log_mask", Kind::u32, "", 4}, {"g_ravex_log_stats_mask", Kind::u32, "", 4},
};
inline constexpr Field debug_diag_fields[] = {
    {"init_state", Kind::u8}, {"listener_event_num", Kind::u32}, {"listener_event_state", Kind::u8},
    {"listener_event_call_num", Kind::u32}, {"listener_event_parse_num", Kind::u32},
    {"listener_log_num", Kind::u32}, {"listener_log_state", Kind::u8},
    {"listener_log_call_num", Kind::u64}, {"listener_log_parse_num", Kind::u64},
    {"poll_update_call_num", Kind::u32}, {"poll_update_parse_num", Kind::u32},
    {"listener_event_callback_num", Kind::u64, "", 1}, {"listener_log_callback_num", Kind::u64, "", 1},
    {"lte_cell_id_invalid_num", Kind::u32, "", 1}, {"nr5g_cell_id_invalid_num", Kind::u32, "", 1},
    {"event_duration_ms_max", Kind::u32, "ms", 2}, {"log_duration_ms_max", Kind::u32, "ms", 2},
    {"do_duration_ms_max", Kind::u32, "ms", 2}, {"debug_call_num", Kind::u32, "", 2},
    {"debug_parse_num", Kind::u32, "", 2},
    {"cust_event_call_num", Kind::u32, "", 3}, {"cust_event_parse_num", Kind::u32, "", 3},
};
inline constexpr Field debug_cm_fields[] = {
    {"init_state", Kind::u8}, {"listener_state", Kind::u8},
    {"listener_call_event_call_num", Kind::u32}, {"listener_call_event_parse_num", Kind::u32},
    {"listener_subs_event_call_num", Kind::u32}, {"listener_subs_event_parse_num", Kind::u32},
    {"listener_ss_event_call_num", Kind::u32}, {"listener_ss_event_parse_num", Kind::u32},
    {"listener_stats_event_call_num", Kind::u32}, {"listener_stats_event_parse_num", Kind::u32},
    {"poll_update_rf_call_num", Kind::u32}, {"poll_update_rf_parse_num", Kind::u32},
    {"poll_update_lte_call_num", Kind::u32}, {"poll_update_lte_parse_num", Kind::u32},
    {"poll_update_nr5g_call_num", Kind::u32}, {"poll_update_nr5g_parse_num", Kind::u32},
};
inline constexpr Field debug_uim_fields[] = {
    {"init_state", Kind::u8}, {"listener_state", Kind::u8}, {"listener_event_call_num", Kind::u32},
    {"listener_event_parse_num", Kind::u32},
};

inline constexpr Record debug_blocks[] = {
    {0, "main", debug_main_fields},
    {1, "diag", debug_diag_fields},
    {2, "cm", debug_cm_fields},
    {3, "uim", debug_uim_fields},
};
// clang-format on

static_assert(size_of(lte_carrier_fields) == 75 && size_of(nr_rssi_fields) == 20);
static_assert(size_of(nr_carrier_fields) == 24 && size_of(nr_antenna_fields) == 16);
static_assert(size_of(gsm_fields) == 9 && size_of(antenna_fields) == 8);
static_assert(size_of(debug_main_fields, 0) == 25 && size_of(debug_diag_fields, 0) == 43);

} // namespace vs_records
