// SPDX-License-Identifier: Apache-2.0
/* The modem's AT channel, and how the phone's parts speak of it. */
#pragma once

#define AT_DEVICE "/dev/smd8"
#define AT_REDIRECT_VARIABLE "KVT_AT_REDIRECT_TO"
#define AT_REDIRECT_LIBRARY "libkvt_at_redirect.so"

/* The program that keeps the terminal of a phone's AT channel, and the pipe in the phone's
 * directory that it takes answers from. */
#define AT_TERMINAL_PROGRAM "kvt-at-terminal"
#define AT_TERMINAL_PIPE "at/.answers"
