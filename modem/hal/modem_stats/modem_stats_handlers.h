/* Handlers of the statistics groups; see the front end for what a handler is. */
#pragma once

int orvik_test_modem_stats_do(int argc, char** argv);     /* 7 */
int orvik_test_qmi_modem_stats_do(int argc, char** argv); /* 9 */
