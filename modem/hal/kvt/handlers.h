// SPDX-License-Identifier: Apache-2.0
/* Handlers of the command groups. Each gets the whole argument vector (argv[1] is its own group
 * number, argv[2] the sub-command), checks both itself and tells the outcome on standard output. */
#pragma once

int orvik_test_rf_do(int argc, char** argv);            /* 3 */
int orvik_test_nvefs_do(int argc, char** argv);         /* 4 */
int orvik_test_cmn_do(int argc, char** argv);           /* 5 */
int orvik_test_qmi_send_data_do(int argc, char** argv); /* 6 */
int orvik_test_at_cmd_do(int argc, char** argv);        /* 8 */
int orvik_test_mbn_do(int argc, char** argv);           /* 10 */
int orvik_smart_test_do(int argc, char** argv);         /* 11 */

/* Sends a typed command with len bytes of data, at most 491, and prints the exchange. Returns the
 * result of the send; a result that the response reports is printed only. */
int orvik_cmn_cmd_send(int type, unsigned int len, const char* data);
