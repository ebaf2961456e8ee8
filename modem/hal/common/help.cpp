// SPDX-License-Identifier: Apache-2.0
#include "help.h"

#include <cstdio>

namespace {

/* The published text: its misspellings, unbalanced comment marks and trailing blanks stay. The
 * statistics queries jump from 12 to 20 and from 21 to 30 on purpose. */
// clang-format off
constexpr help_row rows[] = {
    {1, help_row::title, 0, "nv option cmd"},
    {1, help_row::command, 1, "       /* nv test */"},
    {1, help_row::command, 2, " 0     /* nv backup(no privacy nvs) */"},
    {1, help_row::command, 2, " 1     /* nv backup(have privacy nvs) */"},
    {1, help_row::command, 3, " 0     /* nv restore(no goldencopy done after restore) */"},
    {1, help_row::command, 3, " 1     /* nv restore(do goldencopy done after restore) */"},
    {1, help_row::command, 4, " nvid  /* nv delete */"},

    {2, help_row::title, 0, "imei option cmd"},
    {2, help_row::command, 0, "       /* imei_protect disable */"},
    {2, help_row::command, 1, "       /* imei_protect start */"},

    {3, help_row::title, 0, "rf option cmd"},
    {3, help_row::command, 0, " ...   /* gpio value setting(pls input enough gpio value by notice)*/"},
    {3, help_row::line, 0, "                    (need to reboot duing first setting) "},
    {3, help_row::command, 1, "       /* get gpio test state */"},
    {3, help_row::command, 2, "       /* Close gpio test(need to reboot) */"},
    {3, help_row::command, 3, " v_ant v_sys v_band_list"},
    {3, help_row::line, 0, "                 /* fix tx to upper(lower) antenna for given band list */"},
    {3, help_row::line, 0, "                    (need to reboot) "},
    {3, help_row::line, 0, "                    v_ant: 0 - lower antenna, 1 - upper antenna "},
    {3, help_row::line, 0, "                    v_sys: 0 - gsm, 1 - wcdma, 2 - cdma, 3 - tds, 4 - lte "},
    {3, help_row::line, 0, "                    v_band_list: bit0~bi43 - (gsm: 850,900,1800,1900; wcdma: b1,b2,b4,b5,b8; "},
    {3, help_row::line, 0, "                                            cdma: bc0, tds: b34,b39; lte: b1...b44 "},
    {3, help_row::line, 0, "                    v_band_list: bit44~bi63 - (only for lte: b28b,b40b,b41b,b41c,b39b,b252,"},
    {3, help_row::line, 0, "                                            b255,b253,b254,b66,b46,b250,b47,b48,b71,b71b,b38k ...  "},
    {3, help_row::command, 4, "       /* get tx test state */"},
    {3, help_row::command, 5, "       /* Close tx test(need to reboot) */"},

    {4, help_row::title, 0, "nvefs option cmd: "},
    {4, help_row::command, 1, " sub nv_id             /* nv read */"},
    {4, help_row::command, 2, " sub nv_id nv_data     /* nv write */"},
    {4, help_row::command, 3, " sub nv_id             /* nv delete */"},
    {4, help_row::command, 4, " sub efs_path          /* efs read */"},
    {4, help_row::command, 5, " sub efs_path efs_data /* efs write */"},
    {4, help_row::command, 6, " sub efs_path          /* efs delete */"},

    {5, help_row::title, 0, "cmn option cmd: "},
    {5, help_row::command, 0, " mode type time_out cmd_cnt"},
    {5, help_row::line, 0, "                                 /* diag cmd */"},
    {5, help_row::line, 0, "                                    mode: 0 - callback, 1 - dci; "},
    {5, help_row::line, 0, "                                    type: 0 - with result, 1 - without result; "},
    {5, help_row::line, 0, "                                    time_out: set time - with result, set 0 - without result. unit:ms */"},
    {5, help_row::line, 0, "                                    cmd_cnt: diag cmd bytes */"},
    {5, help_row::command, 1, "                       /* card status query: 0 - absent, 1 - present"},
    {5, help_row::command, 2, " sub                   /* card status get, sub: 0 or 1; ret: 0 - absent, 1 - present */"},
    {5, help_row::command, 3, " sub mode set_val      /* card status set, sub: 0 or 1; mode: 0 - general, 1 - sim; set_val: 0 - low, 1 - high */"},
    {5, help_row::command, 4, "                       /* card type query: 0 - err, 1 - single sim, 2 - mult sim */"},
    {5, help_row::command, 5, "                       /* get sar dsi */"},
    {5, help_row::command, 6, " opt option_list       /* card slot hotswap test */"},
    {5, help_row::line, 0, "                                    opt: 0 - stop hotswap test, 1 - start hotswap test "},
    {5, help_row::line, 0, "                                    option_list(when opt is 1 for blew inputs): "},
    {5, help_row::line, 0, "                                      seconds_after_push : the seconds of waiting after push the card slot "},
    {5, help_row::line, 0, "                                      seconds_after_pull : the seconds of waiting after pull the card slot "},
    {5, help_row::line, 0, "                                      count_push_and_pull: the count of push and pull the card slot "},
    {5, help_row::command, 10, " esim_on debug_on     /* set esim state */"},
    {5, help_row::line, 0, "                                    esim_on  : 1 - switch to eSIM,2 - switch to PSIM2 "},
    {5, help_row::line, 0, "                                    debug_on : 0 - disable log print,1 - enable log print "},

    {6, help_row::title, 0, "orvik qmi send_data"},
    {6, help_row::usage, 0, " qmi_id qmi_data         /* qmi_id: Any binary data you will send */"},
    {6, help_row::line, 0, "                                    qmi_data: Any binary data you will send "},

    {7, help_row::title, 0, "orvik modem stats test"},
    {7, help_row::command, 0, " print                 /* modem stats diag-parsed test */"},
    {7, help_row::line, 0, "                                    print: 0 - print-off for temp info, 1 - print-on for temp info "},
    {7, help_row::command, 1, " type                  /* get the debug info of modem stats */"},
    {7, help_row::line, 0, "                                    type: 0 - check, 1 - debuginfo "},

    {8, help_row::title, 0, "orvik at command test"},
    {8, help_row::usage, 0, " atcmd_cxt               /* atcmd_cxt: at command context */"},
    {8, help_row::line, 0, "                                    the len of atcmd can not > 100"},

    {9, help_row::title, 0, "orvik modem stats qmi test"},
    {9, help_row::command, 0, " sub                   /* 4G PCC rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 1, " sub                   /* 4G SCC1 rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 2, " sub                   /* 4G SCC2 rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 3, " sub                   /* 4G SCC3 rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 4, " sub                   /* 4G SCC4 rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 5, " sub                   /* 4G SCC5 rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 6, " sub                   /* 4G SCC6 rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 7, " sub                   /* 5G PCC rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 8, " sub                   /* 5G PCC snr, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 9, " sub                   /* 5G ANT diversity, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 10, " sub                  /* 5G PCC rsrp, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 11, " sub                  /* 5G SCC1 rsrp, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 12, " sub                  /* 5G SCC2 rsrp, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 20, " sub                  /* WCDMA rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 21, " sub                  /* GSM rssi, sub: 0 - sub0; 1 - sub1 */"},
    {9, help_row::command, 30, " 0                    /* Ant info */"},

    {10, help_row::title, 0, "orvik mbn test"},

    {11, help_row::title, 0, "smart test"},
    {11, help_row::command, 0, "                      /* trigger SSR of modem */"},
    {11, help_row::command, 1, "                      /* trigger Full Dump */"},
    {11, help_row::command, 2, "                      /* trigger NV SYNC */"},
    {11, help_row::command, 3, " opt                  /* ap ravex print(need reboot), opt: 0 - off; 1 - on */"},
    {11, help_row::command, 4, " opt                  /* bp ravex print, opt: 0 - off; 1 - on */"},
    {11, help_row::command, 5, " opt                  /* bp qmi print, opt: 0 - off; 1 - on */"},
    {11, help_row::command, 6, " opt                  /* bp rf print, opt: 0 - off; 1 - on */"},
};
// clang-format on

void print_row(const help_row& row) {
    switch (row.kind) {
    case help_row::title:
        std::printf("%d: %s\n", row.group, row.text);
        break;
    case help_row::command:
        std::printf("   kvt %d %d%s\n", row.group, row.sub, row.text);
        break;
    case help_row::usage:
        std::printf("   kvt %d%s\n", row.group, row.text);
        break;
    case help_row::line:
        std::puts(row.text);
        break;
    }
}

} // namespace

std::span<const help_row> help_rows() { return rows; }

int show_help(int group) {
    std::puts("\n=========== blew: kavit(kvt) cmd help "
              "=======================================================");
    for (const help_row& row : rows)
        if (group == 0 || group == row.group)
            print_row(row);
    return std::puts("=========== above: kavit(kvt) cmd help "
                     "=======================================================\n");
}
