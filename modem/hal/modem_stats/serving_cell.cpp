#include "serving_cell.h"

#include <cstdio>
#include <cstring>

#include "unpack.h"

namespace {

/* The output area is the first 700 bytes. The memory goes on behind it, since a cursor that points
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
    return unpk_with_cursor([&cell](auto& cursor) __attribute__((always_inline)) {
        return unpk_read_record<serving_cell_table>(cursor, cell);
    });
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
