// SPDX-License-Identifier: Apache-2.0
/* Complaints about what was typed: a note, and as a rule the help of the command's group. */
#pragma once

enum kvt_group {
    GROUP_NV = 1,
    GROUP_IMEI = 2,
    GROUP_RF = 3,
    GROUP_NVEFS = 4,
    GROUP_CMN = 5,
    GROUP_QMI_SEND_DATA = 6,
    GROUP_MODEM_STATS = 7,
    GROUP_AT_CMD = 8,
    GROUP_QMI_MODEM_STATS = 9,
    GROUP_MBN = 10,
    GROUP_SMART = 11,
};

#define NOTE_TOO_FEW_PARAMETERS "\nnote: Too few parameters, Pls refer to the following cmd:\n"
#define NOTE_FIRST_PARAMETER                                                                       \
    "\nnote: the first parameters should be %d, Pls refer to the following cmd:\n"
#define NOTE_SECOND_PARAMETER                                                                      \
    "\nnote: the second parameters is invalid, Pls refer to the following cmd:\n"
#define NOTE_ERROR_CODE "\nnote: Error happen! error_code(%d)\n"
#define NOTE_TOO_FEW_INPUTS "\nnote: Too few inputs, Pls refer to the following cmd:\n"
#define NOTE_NEED_INPUTS "\nnote: need %d inputs, Pls refer to the following cmd:\n"
#define NOTE_NEED_INPUTS_AT_LEAST                                                                  \
    "\nnote: need %d inputs at least, Pls refer to the following cmd:\n"
#define NOTE_CMD_ERROR "\nnote: Cmd error, should be: kvt %d %d , Pls refer to the following cmd:\n"
#define NOTE_QMI_ID "\nnote: the second parameters(qmi_id) should be >= %d && < %d\n"
#define NOTE_OPT_INVALID "\nnote: opt(%d) is invalid:\n"
#define NOTE_NUMBER_OF_INPUTS                                                                      \
    "\nnote: The number of inputs should be 2, Pls refer to the following cmd:\n"
#define NOTE_LENGTH                                                                                \
    "\nnote: the second parameters length should <= %d, Pls refer to the following cmd:\n"
#define NOTE_SUB_MASK "\nnote: sub_mask(%d) is invalid:\n"

/* Prints a note. Those of groups 5 and 6 appear only while the stdout-print flag is 1. */
void usage_note(kvt_group group, const char* note, ...) __attribute__((format(printf, 2, 3)));

/* Prints a note and the group's help, whatever the flag; returns what show_help does. */
int usage_error(kvt_group group, const char* note, ...) __attribute__((format(printf, 2, 3)));

/* True when argc is at least least and argv[1] is the group; false after a note. */
bool usage_good(kvt_group group, int argc, char** argv, int least);
