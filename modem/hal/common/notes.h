/* The "note:" texts of usage errors, and the code that a command returns for one. A text without
 * conversions is printed with puts, the others with printf. */
#pragma once

enum { ORVIK_USAGE_ERROR = 0x0FFFF00A };

#define NOTE_TOO_FEW_PARAMETERS "\nnote: Too few parameters, Pls refer to the following cmd:"
#define NOTE_FIRST_PARAMETER                                                                       \
    "\nnote: the first parameters should be %d, Pls refer to the following cmd:\n"
#define NOTE_SECOND_PARAMETER                                                                      \
    "\nnote: the second parameters is invalid, Pls refer to the following cmd:"
#define NOTE_ERROR_CODE "\nnote: Error happen! error_code(%d)\n"
#define NOTE_TOO_FEW_INPUTS "\nnote: Too few inputs, Pls refer to the following cmd:"
#define NOTE_NEED_INPUTS "\nnote: need %d inputs, Pls refer to the following cmd:\n"
#define NOTE_NEED_INPUTS_AT_LEAST                                                                  \
    "\nnote: need %d inputs at least, Pls refer to the following cmd:\n"
#define NOTE_CMD_ERROR "\nnote: Cmd error, should be: kvt %d %d , Pls refer to the following cmd:\n"
#define NOTE_QMI_ID "\nnote: the second parameters(qmi_id) should be >= %d && < %d\n"
#define NOTE_OPT_INVALID "\nnote: opt(%d) is invalid:\n"
#define NOTE_NUMBER_OF_INPUTS                                                                      \
    "\nnote: The number of inputs should be 2, Pls refer to the following cmd:"
#define NOTE_LENGTH                                                                                \
    "\nnote: the second parameters length should <= %d, Pls refer to the following cmd:\n"
#define NOTE_SUB_MASK "\nnote: sub_mask(%d) is invalid:\n"
