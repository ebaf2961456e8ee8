/* kvt GROUP SUB [ARGUMENTS...]: one modem command a run. The exit status is always 0. */
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "handlers.h"
#include "help.h"
#include "modem_stats_handlers.h"

namespace {

int not_supported(int, char**) { return std::puts("Not support"); }

struct group_row {
    int group;
    int (*handler)(int argc, char** argv);
};

constexpr group_row groups[] = {
    {1, not_supported},
    {2, not_supported},
    {3, orvik_test_rf_do},
    {4, orvik_test_nvefs_do},
    {5, orvik_test_cmn_do},
    {6, orvik_test_qmi_send_data_do},
    {7, orvik_test_modem_stats_do},
    {8, orvik_test_at_cmd_do},
    {9, orvik_test_qmi_modem_stats_do},
    {10, orvik_test_mbn_do},
    {11, orvik_smart_test_do},
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
    /* A reader that goes away ends neither the command nor the promise of status 0. */
    std::signal(SIGPIPE, SIG_IGN);
    run(argc, argv);
    std::fflush(stdout);
    return 0;
}
