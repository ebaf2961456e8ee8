/* What each command needs of the phone. Written by kvt-doctor-needs from lab/catalogue.toml. */
#pragma once

enum Need : unsigned {
    need_vendor = 1 << 0,
    need_uim = 1 << 1,
    need_sar = 1 << 2,
    need_nas = 1 << 3,
    need_vs = 1 << 4,
    need_diag = 1 << 5,
    need_at = 1 << 6,
};

struct CommandNeeds {
    const char* words; /* group, and its sub-command where it has one */
    const char* title;
    unsigned needs; /* Need bits */
};

// clang-format off
inline constexpr CommandNeeds command_needs[] = {
    {"3 0", "GPIO setting", need_vendor},
    {"3 1", "GPIO state", need_vendor},
    {"4 1", "NV read", need_vendor},
    {"5 0", "DIAG packet", need_diag},
    {"5 1", "card status", need_vendor},
    {"5 5", "SAR state", need_sar},
    {"5 10", "eSIM switch", need_vendor | need_uim},
    {"6", "raw QMI", need_vendor},
    {"7 0", "statistics sample", 0},
    {"7 1", "statistics debug information", need_vendor},
    {"8", "AT command", need_at},
    {"9 0", "4G PCC rssi", need_vs},
    {"10", "MBN test", 0},
    {"11 0", "modem restart", need_vendor},
};
// clang-format on
