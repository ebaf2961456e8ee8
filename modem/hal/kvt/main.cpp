// SPDX-License-Identifier: Apache-2.0
/* kvt GROUP SUB [ARGUMENTS...]: one modem command a run. The exit status is always 0. */
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "handlers.h"
#include "help.h"
#include "stats_commands.h"
#include "usage.h"

namespace {

int not_supported(int, char**) { return std::puts("Not support"); }

struct group_row {
    kvt_group group;
    int (*handler)(int argc, char** argv);
};

constexpr group_row groups[] = {
    {GROUP_NV, not_supported},
    {GROUP_IMEI, not_supported},
    {GROUP_RF, orvik_test_rf_do},
    {GROUP_NVEFS, orvik_test_nvefs_do},
    {GROUP_CMN, orvik_test_cmn_do},
    {GROUP_QMI_SEND_DATA, orvik_test_qmi_send_data_do},
    {GROUP_MODEM_STATS, orvik_test_modem_stats_do},
    {GROUP_AT_CMD, orvik_test_at_cmd_do},
    {GROUP_QMI_MODEM_STATS, orvik_test_qmi_modem_stats_do},
    {GROUP_MBN, orvik_test_mbn_do},
    {GROUP_SMART, orvik_smart_test_do},
};

void run(int argc, char** argv) {
    const int group = argc < 2 ? 0 : std::atoi(argv[1]);
    for (const group_row& row : groups) {
        if (row.group == group) {
            row.handler(argc, argv);
            return;
        }
    }
    show_help(0);
}

} // namespace

int main(int argc, char** argv) {
    /* The exit status is 0 even if the reader of the output has gone or a file may not grow. */
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    run(argc, argv);
    /* Locked for good: the flush at exit takes no lock, and would cut or repeat the line of a
     * thread that still prints. */
    ::flockfile(stdout);
    std::fflush(stdout);
    return 0;
}
