// SPDX-License-Identifier: Apache-2.0
/* The debug information that the modem keeps about its statistics: requests 20 and 27. */
#pragma once

/* Asks for the debug information. mask 0: checks the feature's status; any other: prints the
 * blocks.
 */
void orvik_test_modem_stats_get_debug_info_do(int mask);

/* Prints the feature's status from the data of request 20, at least 26 bytes, and which logs the
 * modem can't parse. */
void orvik_modem_stats_support_status_check(unsigned char* data);

/* Print one block, whose fields depend on the layout version, and return its length in bytes; data
 * must hold that many. Null: a line and 0. The cm and uim blocks have one layout. */
int orvik_modem_stats_main_info_unpk(unsigned char* data, int version);
int orvik_modem_stats_diag_info_unpk(unsigned char* data, int version);
int orvik_modem_stats_cm_info_unpk(unsigned char* data, int version);
int orvik_modem_stats_uim_info_unpk(unsigned char* data, int version);
