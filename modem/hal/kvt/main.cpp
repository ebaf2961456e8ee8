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
    /* Neither a reader that goes away nor a file that may not grow ends the command, nor the
     * promise of status 0. */
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    run(argc, argv);
    /* The lock is kept: a thread that still runs writes nothing more, since the flush at the
     * process's end doesn't wait for it to finish its line. */
    ::flockfile(stdout);
    std::fflush(stdout);
    return 0;
}
