#include "serving_cell.h"

#include <cstdio>
#include <cstring>

#include "unpack.h"

namespace {

#define MEMBER(name) #name, offsetof(serving_cell, name), sizeof serving_cell::name

/* Versions 0x30001 and 0x30002 are 0x30000 moved by 10 and 24 bits, so that no field of 0x30001
 * begins at a byte; version 4 lacks the 64 bits between pci and dl_earfcn. */
// clang-format off
constexpr uint32_t versions[] =      {0x30000, 0x30001, 0x30002,   4};
constexpr unpk_field fields[] = {
    {MEMBER(mcc),           16, {240,     250,     264, 176}},
    {MEMBER(mnc_num),        8, {256,     266,     280, 192}},
    {MEMBER(mnc),           16, {264,     274,     288, 200}},
    {MEMBER(tac),           32, {288,     298,     312, 224}},
    {MEMBER(cgi),           64, {176,     186,     200, 112}},
    {MEMBER(pci),           16, {  0,      10,      24,   0}},
    {MEMBER(freq_band_ind), 16, {320,     330,     344, 256}},
    {MEMBER(dl_earfcn),     32, { 80,      90,     104,  16}},
    {MEMBER(dl_bw),         16, {144,     154,     168,  80}},
    {MEMBER(ul_earfcn),     32, {112,     122,     136,  48}},
    {MEMBER(ul_bw),         16, {160,     170,     184,  96}},
    {MEMBER(allow_access),   8, {280,     290,     304, 216}},
};
// clang-format on

constexpr unpk_record serving_cell_record = {"modem_stats_parse_xxxx_diag_xxxx", versions, fields};

/* The output area is the first 700 bytes. More memory follows, since a cursor that points
 * at a record may be read like any other. */
constexpr size_t area_size = 700;
constexpr size_t area_cleared_from = 36;
uint8_t g_single_data[UNPK_MEMORY_SIZE];

void print(const serving_cell& cell, int scs) {
    std::printf("version = %d, mcc = %d, mnc_num %d, mnc %d, tac %d, cgi %lu, pci %d\n",
                cell.version, cell.mcc, cell.mnc_num, cell.mnc, cell.tac, cell.cgi, cell.pci);
    std::printf("freq_band_ind = %d, dl_earfcn = %d, dl_bw %d, ul_earfcn %d, ul_bw %d, "
                "allow_access %d, scs %d\n",
                cell.freq_band_ind, cell.dl_earfcn, cell.dl_bw, cell.ul_earfcn, cell.ul_bw,
                cell.allow_access, scs);
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
    const modem_stats_single_data_common_type record = {
        .version = cell.version,
        .mcc = cell.mcc,
        .mnc = cell.mnc,
        .tac = cell.tac,
        .cgi = cell.cgi,
        .pci = cell.pci,
        .freq_band_ind = cell.freq_band_ind,
        .dl_earfcn = cell.dl_earfcn,
        .dl_bw = cell.dl_bw,
        .ul_earfcn = cell.ul_earfcn,
        .ul_bw = cell.ul_bw,
        .allow_access = cell.allow_access,
        .scs = 0,
    };
    print(cell, record.scs);
    std::memset(g_single_data + area_cleared_from, 0, area_size - area_cleared_from);
    std::memcpy(g_single_data, &record, sizeof record);
    g_pk_data_ptr = g_single_data;
    g_pk_data_cnt = sizeof record;
}
