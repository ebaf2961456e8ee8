// SPDX-License-Identifier: Apache-2.0
/* Handlers of the statistics groups; see the front end for what a handler is. */
#pragma once

int orvik_test_modem_stats_do(int argc, char** argv);     /* 7 */
int orvik_test_qmi_modem_stats_do(int argc, char** argv); /* 9 */

/* Arms the unpack cursor with a payload in UNPK_MEMORY_SIZE bytes of memory and runs the
 * serving-cell parser over it. The other arguments are not used. */
void orvik_test_modem_stats_parsing_process_do(int, unsigned short, unsigned char,
                                               unsigned char* payload);
