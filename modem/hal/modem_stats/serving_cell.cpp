// SPDX-License-Identifier: Apache-2.0
#include "serving_cell.h"

#include <cstdio>
#include <cstring>

#include "unpack.h"

namespace {

using record_type = modem_stats_single_data_common_type;
#define RECORD(name) #name, offsetof(serving_cell, record.name), sizeof record_type::name

/* Versions 0x30001 and 0x30002 are 0x30000 moved by 10 and 24 bits, so that no field of 0x30001
 * begins at a byte; version 4 lacks the 64 bits between pci and dl_earfcn. */
// clang-format off
constexpr uint32_t versions[] =      {0x30000, 0x30001, 0x30002,   4};
constexpr unpk_field fields[] = {
    {RECORD(mcc),           16, {240,     250,     264, 176}},
    {"mnc_num", offsetof(serving_cell, mnc_num), 1, 8, {256,     266,     280, 192}},
    {RECORD(mnc),           16, {264,     274,     288, 200}},
    {RECORD(tac),           32, {288,     298,     312, 224}},
    {RECORD(cgi),           64, {176,     186,     200, 112}},
    {RECORD(pci),           16, {  0,      10,      24,   0}},
    {RECORD(freq_band_ind), 16, {320,     330,     344, 256}},
    {RECORD(dl_earfcn),     32, { 80,      90,     104,  16}},
    {RECORD(dl_bw),         16, {144,     154,     168,  80}},
    {RECORD(ul_earfcn),     32, {112,     122,     136,  48}},
    {RECORD(ul_bw),         16, {160,     170,     184,  96}},
    {RECORD(allow_access),   8, {280,     290,     304, 216}},
};
// clang-format on

constexpr unpk_record serving_cell_record = {"modem_stats_parse_xxxx_diag_xxxx", versions, fields};

/* The output area is the first 700 bytes. The rest is there because the cursor may be read wherever
 * it points. */
constexpr size_t area_size = 700;
constexpr size_t area_cleared_from = 36;
uint8_t g_single_data[UNPK_MEMORY_SIZE];

void print(const record_type& record, uint8_t mnc_num) {
    std::printf("version = %d, mcc = %d, mnc_num %d, mnc %d, tac %d, cgi %lu, pci %d\n",
                record.version, record.mcc, mnc_num, record.mnc, record.tac, record.cgi,
                record.pci);
    std::printf("freq_band_ind = %d, dl_earfcn = %d, dl_bw %d, ul_earfcn %d, ul_bw %d, "
                "allow_access %d, scs %d\n",
                record.freq_band_ind, record.dl_earfcn, record.dl_bw, record.ul_earfcn,
                record.ul_bw, record.allow_access, record.scs);
}

} // namespace

bool serving_cell_unpack(serving_cell& cell) {
    return unpk_read_record(serving_cell_record, &cell);
}

void modem_stats_parse_xxxx_diag_xxxx(int, modem_stats_data_id_e_type*,
                                      modem_stats_single_data_common_type**) {
    serving_cell cell{};
    if (!serving_cell_unpack(cell))
        return;
    print(cell.record, cell.mnc_num);
    std::memset(g_single_data + area_cleared_from, 0, area_size - area_cleared_from);
    std::memcpy(g_single_data, &cell.record, sizeof cell.record);
    g_pk_data_ptr = g_single_data;
    g_pk_data_cnt = sizeof cell.record;
}
