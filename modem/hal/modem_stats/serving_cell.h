// SPDX-License-Identifier: Apache-2.0
/* The serving-cell record of the modem's statistics. */
#pragma once

#include <cstddef>
#include <cstdint>

/* A statistics data id; see the modem API. */
enum modem_stats_data_id_e_type : uint32_t;

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
    uint8_t scs; /* 0 */
};
static_assert(sizeof(modem_stats_single_data_common_type) == 38);
static_assert(offsetof(modem_stats_single_data_common_type, tac) == 8 &&
              offsetof(modem_stats_single_data_common_type, pci) == 20 &&
              offsetof(modem_stats_single_data_common_type, dl_earfcn) == 24 &&
              offsetof(modem_stats_single_data_common_type, ul_earfcn) == 30 &&
              offsetof(modem_stats_single_data_common_type, allow_access) == 36);

struct serving_cell {
    modem_stats_single_data_common_type record;
    uint8_t mnc_num; /* digits of mnc; printed, not handed on */
};

/* Reads the record from the armed cursor. False after a line that says why; cell is then not to
 * be used. */
bool serving_cell_unpack(serving_cell& cell);

/* Reads the record from the armed cursor, prints it, stores it in the output area and points the
 * cursor at it: g_pk_data_ptr at the record, g_pk_data_cnt its length. If it can't be read, a line
 * says why, and area and cursor stay as they are then. The arguments, a data id and where the
 * record goes, are those of every such parser; this one uses neither. */
void modem_stats_parse_xxxx_diag_xxxx(int, modem_stats_data_id_e_type*,
                                      modem_stats_single_data_common_type**);
