// SPDX-License-Identifier: Apache-2.0
/* What each command needs of the phone; made from the lab's catalogue. */
#pragma once

enum Need : unsigned {
    need_vendor = 1U << 0,
    need_uim = 1U << 1,
    need_sar = 1U << 2,
    need_nas = 1U << 3,
    need_vs = 1U << 4,
    need_diag = 1U << 5,
    need_at = 1U << 6,
};

struct GroupTitle {
    int number;
    const char* title;
};

struct CommandNeeds {
    const char* words; /* the fixed words that choose it: "5 10 1", "8" */
    const char* title;
    unsigned needs; /* Need bits */
};

// clang-format off
inline constexpr GroupTitle group_titles[] = {
    {3, "RF tests"},
    {4, "NV items and EFS files"},
    {5, "Common commands"},
    {6, "Raw vendor QMI request"},
    {7, "Statistics test"},
    {8, "AT command"},
    {9, "Statistics queries"},
    {10, "MBN"},
    {11, "Smart test"},
};

inline constexpr CommandNeeds command_needs[] = {
    {"3 0", "set GPIO values for the antenna test", need_vendor},
    {"3 1", "show the GPIO values", need_vendor},
    {"3 2", "end the GPIO test", need_vendor},
    {"3 3", "fix the transmit antenna", need_vendor},
    {"3 4", "show the fixed transmit antenna", need_vendor},
    {"3 5", "end the fixed transmit antenna", need_vendor},
    {"4 1", "read an NV item", need_vendor},
    {"4 2", "write an NV item", need_vendor},
    {"4 3", "delete an NV item", need_vendor},
    {"4 4", "read an EFS file", need_vendor},
    {"4 5", "write an EFS file", need_vendor},
    {"4 6", "delete an EFS file", need_vendor},
    {"5 0", "send a DIAG packet", need_diag},
    {"5 1", "show whether cards are in", need_vendor},
    {"5 2", "show the card-detect state of a slot", need_vendor},
    {"5 3", "force the card-detect state of a slot", need_vendor},
    {"5 4", "show the card type", need_vendor},
    {"5 5", "show the SAR state", need_sar},
    {"5 6 0", "stop the hot-swap test", need_vendor},
    {"5 6 1", "start the hot-swap test", need_vendor},
    {"5 10 1", "switch slot 2 to the eSIM", need_vendor | need_uim},
    {"5 10 2", "switch slot 2 to the second physical SIM", need_vendor | need_uim},
    {"5 10 3", "show the EID", need_uim},
    {"5 10 4", "show the state of both cards", need_uim},
    {"5 10 5", "reset the eUICC's memory", need_uim},
    {"6", "send a raw vendor QMI request", need_vendor},
    {"7 0", "parse the built-in sample", 0},
    {"7 1 0", "check the statistics feature", need_vendor},
    {"7 1 1", "show the statistics' debug information", need_vendor},
    {"8", "send an AT command", need_at},
    {"9 0", "4G PCC levels", need_vs},
    {"9 1", "4G SCC1 levels", need_vs},
    {"9 2", "4G SCC2 levels", need_vs},
    {"9 3", "4G SCC3 levels", need_vs},
    {"9 4", "4G SCC4 levels", need_vs},
    {"9 5", "4G SCC5 levels", need_vs},
    {"9 6", "4G SCC6 levels", need_vs},
    {"9 7", "5G PCC rssi", need_vs},
    {"9 8", "5G PCC snr", need_vs},
    {"9 9", "5G antenna diversity", need_vs},
    {"9 10", "5G PCC rsrp", need_vs},
    {"9 11", "5G SCC1 rsrp", need_vs},
    {"9 12", "5G SCC2 rsrp", need_vs},
    {"9 20", "WCDMA rssi", need_vs},
    {"9 21", "GSM rssi", need_vs},
    {"9 30", "antenna configuration", need_vs},
    {"10", "configuration packages (nothing is done)", 0},
    {"11 0", "restart the modem", need_vendor},
    {"11 1", "dump the modem's memory", need_vendor},
    {"11 2", "sync NV items", need_vendor},
    {"11 3", "switch statistics printing of the application side", 0},
    {"11 4", "switch statistics printing of the modem", need_vendor},
    {"11 5", "switch QMI printing of the modem", need_vendor},
    {"11 6", "switch RF printing of the modem", need_vendor},
};
// clang-format on
