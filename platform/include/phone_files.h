// SPDX-License-Identifier: Apache-2.0
/* The simulated phone's files that people write: the settings with what may stand in them, and the
 * words of the rules in "faults". docs/phone.md tells what they do. */
#pragma once

#include <cstdint>

namespace phone_files {

struct Range {
    int64_t least;
    int64_t most;
};

constexpr Range no_number = {1, 0};
constexpr Range flag = {0, 1};
constexpr Range u8 = {0, UINT8_MAX};
constexpr Range u16 = {0, UINT16_MAX};
constexpr Range u32 = {0, UINT32_MAX};
constexpr int64_t hour_ms = INT64_C(60) * 60 * 1000;
constexpr int64_t day_ms = 24 * hour_ms; /* the longest that anything may be made to take */

/* One value a file: a number within the range, or one of the words. */
struct Setting {
    const char* file;
    const char* fallback; /* what counts when there is no file */
    Range range;
    const char* words; /* what may stand there besides a number */
    const char* unit;
    const char* meaning;
};

// clang-format off
inline constexpr Setting settings[] = {
    {"restart_ms", "500", {0, day_ms}, "", "ms", "how long a restart keeps the services down"},
    {"efs_read_only", "0", flag, "", "", "1: no EFS file can be written or deleted"},
    {"nv_syncs", "0", u32, "", "", "NV syncs so far"},
    {"sim/1", "present", no_number, "present absent error", "", "what is in slot 1"},
    {"sim/2", "present", no_number, "present absent error", "", "what is in slot 2"},
    {"sim/2.kind", "euicc", no_number, "euicc psim", "", "what slot 2 is connected to"},
    {"sim/type", "2", u32, "", "", "card type: 0 error, 1 single SIM, 2 several"},
    {"euicc/boot_ms", "0", {0, day_ms}, "", "ms", "from power up until the eUICC answers"},
    {"euicc/max_channels", "3", {0, 19}, "", "", "logical channels that may be open at once"}, /* what a card can number */
    {"sar/dsi", "0", {INT32_MIN, UINT32_MAX}, "none", "", "DSI in force"},
    {"stats_debug/version", "4", u8, "", "", "layout version of the debug information"},
    {"stats_debug/enabled", "1", flag, "", "", "whether the statistics feature is on"},
    {"stats_debug/queries", "0", u32, "", "", "requests for the debug information so far"},
    {"diag/silent", "0", flag, "", "", "1: no DIAG packet is answered"},
    {"diag/delay_ms", "5", {0, hour_ms}, "", "ms", "from a DIAG packet to its first answer"},
    {"diag/gap_ms", "0", {0, hour_ms}, "", "ms", "between further answers and chunks"},
    {"diag/repeat", "1", {0, 1000}, "", "", "how many times every DIAG answer comes"},
    {"diag/callback_chunk", "0", u32, "", "bytes", "handed over at once in callback mode; 0: all"},
    {"diag/dci_chunk", "4096", u32, "", "bytes", "handed over at once in DCI mode; 0: all"},
    {"diag/from", "0", {0, 16}, "none", "", "processor that answers in callback mode"},
    {"diag/remote_mask", "0", u16, "", "", "remote processors, bit 0 is processor 1"},
    {"diag/peripherals", "2", u16, "", "", "DCI support list; bit 1 is MPSS"},
    {"diag/loose", "0", flag, "", "", "1: a callback may run when the library is down"},
};
// clang-format on

/* ---- "faults": CALL[:OBJECT] WHEN ACTION [ARGUMENT] ---- */

enum class Takes { nothing, result, milliseconds, answer };

struct Action {
    const char* name;
    Takes takes;
};

/* In the order of the phone's kinds of fault. */
inline constexpr Action actions[] = {
    {"error", Takes::result},      {"timeout", Takes::nothing}, {"gone", Takes::nothing},
    {"late", Takes::milliseconds}, {"empty", Takes::nothing},   {"short", Takes::nothing},
    {"long", Takes::nothing},      {"garbage", Takes::nothing}, {"restart", Takes::nothing},
    {"reply", Takes::answer},
};

/* Every call that a rule can name. */
inline constexpr const char* calls[] = {
    "qmi_client_notifier_init",
    "qmi_client_get_service_list",
    "qmi_client_init",
    "qmi_client_init_instance",
    "qmi_client_send_msg_sync",
    "qmi_client_message_decode",
    "qmi_client_register_error_cb",
    "qmi_client_register_notify_cb",
    "qmi_client_release",
    "qmi_cci_os_signal_wait",
    "Diag_LSM_Init",
    "Diag_LSM_DeInit",
    "diag_switch_logging",
    "diag_register_callback",
    "diag_register_remote_callback",
    "diag_has_remote_device",
    "diag_callback_send_data",
    "diag_register_dci_client",
    "diag_register_dci_signal_data",
    "diag_get_dci_support_list_proc",
    "diag_register_dci_stream_proc",
    "diag_send_dci_async_req",
    "diag_release_dci_client",
    "property_get",
    "property_set",
    "at_open",
    "at_command",
};

} // namespace phone_files
