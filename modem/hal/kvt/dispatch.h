// SPDX-License-Identifier: Apache-2.0
/* The dispatcher that groups 3, 4 and 5 share. */
#pragma once

#include <span>

#include "usage.h"

struct command_row {
    int sub;
    int (*function)(int argc, char** argv); /* 0, or the code that the dispatcher shows */
};

/* Checks the arguments, runs the sub-command's function and shows a result other than 0; each
 * complaint is a note and the group's help. */
void dispatch_command(kvt_group group, std::span<const command_row> commands, int argc,
                      char** argv);
