/* The serving-cell record of the modem's statistics. */
#pragma once

#include <cstddef>
#include <cstdint>

#include "record_table.h"

/* A statistics data id; see the modem API. */
enum modem_stats_data_id_e_type : uint32_t;

/* The record as it is read, in the order of reading. */
struct serving_cell {
    uint32_t version;
    uint16_t mcc;
    uint8_t mnc_num; /* digits of mnc; printed only */
    uint16_t mnc;
    uint32_t tac;
    uint64_t cgi;
    uint16_t pci;
    uint16_t freq_band_ind;
    uint32_t dl_earfcn;
    uint16_t dl_bw;
    uint32_t ul_earfcn;
    uint16_t ul_bw;
    uint8_t allow_access;
};

/* Versions 0x30001 and 0x30002 are 0x30000 moved by 10 and 24 bits, so that no field of 0x30001
 * begins at a byte; version 4 lacks the 64 bits between pci and dl_earfcn. */
// clang-format off
inline constexpr unpk_table serving_cell_table{
    "modem_stats_parse_xxxx_diag_xxxx",
    /*                                                   */ {0x30000, 0x30001, 0x30002,   4},
    std::tuple{
    unpk_field{"mcc",           &serving_cell::mcc,           16, {240,     250,     264, 176}},
    unpk_field{"mnc_num",       &serving_cell::mnc_num,        8, {256,     266,     280, 192}},
    unpk_field{"mnc",           &serving_cell::mnc,           16, {264,     274,     288, 200}},
    unpk_field{"tac",           &serving_cell::tac,           32, {288,     298,     312, 224}},
    unpk_field{"cgi",           &serving_cell::cgi,           64, {176,     186,     200, 112}},
    unpk_field{"pci",           &serving_cell::pci,           16, {  0,      10,      24,   0}},
    unpk_field{"freq_band_ind", &serving_cell::freq_band_ind, 16, {320,     330,     344, 256}},
    unpk_field{"dl_earfcn",     &serving_cell::dl_earfcn,     32, { 80,      90,     104,  16}},
    unpk_field{"dl_bw",         &serving_cell::dl_bw,         16, {144,     154,     168,  80}},
    unpk_field{"ul_earfcn",     &serving_cell::ul_earfcn,     32, {112,     122,     136,  48}},
    unpk_field{"ul_bw",         &serving_cell::ul_bw,         16, {160,     170,     184,  96}},
    unpk_field{"allow_access",  &serving_cell::allow_access,   8, {280,     290,     304, 216}},
    },
};
// clang-format on

/* The record as it is handed on: packed, little-endian. */
struct [[gnu::packed]] modem_stats_single_data_common_type {
    uint32_t version;
    uint16_t mcc;
    uint16_t mnc;
    uint32_t tac;
    uint64_t cgi;
    uint16_t pci;
    uint16_t freq_band_ind;
    uint32_t dl_earfcn;
    uint16_t dl_bw;
    uint32_t ul_earfcn;
    uint16_t ul_bw;
    uint8_t allow_access;
    uint8_t scs;
};
static_assert(sizeof(modem_stats_single_data_common_type) == 38);
static_assert(offsetof(modem_stats_single_data_common_type, mcc) == 4);
static_assert(offsetof(modem_stats_single_data_common_type, mnc) == 6);
static_assert(offsetof(modem_stats_single_data_common_type, tac) == 8);
static_assert(offsetof(modem_stats_single_data_common_type, cgi) == 12);
static_assert(offsetof(modem_stats_single_data_common_type, pci) == 20);
static_assert(offsetof(modem_stats_single_data_common_type, freq_band_ind) == 22);
static_assert(offsetof(modem_stats_single_data_common_type, dl_earfcn) == 24);
static_assert(offsetof(modem_stats_single_data_common_type, dl_bw) == 28);
static_assert(offsetof(modem_stats_single_data_common_type, ul_earfcn) == 30);
static_assert(offsetof(modem_stats_single_data_common_type, ul_bw) == 34);
static_assert(offsetof(modem_stats_single_data_common_type, allow_access) == 36);
static_assert(offsetof(modem_stats_single_data_common_type, scs) == 37);

/* Reads the record from the armed cursor. When false, a line told why and cell is not to be used.
 */
bool serving_cell_unpack(serving_cell& cell);

/* Reads the record from the armed cursor, prints it, stores it at the start of the output area that
 * single-data records share, and points the cursor at it: g_pk_data_ptr at the record,
 * g_pk_data_cnt its length. A record that can't be read leaves a line, the area as it was, and the
 * cursor where the failing step left it. As in all parsers of its family the arguments name a data
 * id and where the record goes; this one uses neither. */
void modem_stats_parse_xxxx_diag_xxxx(int, modem_stats_data_id_e_type*,
                                      modem_stats_single_data_common_type**);
