/* The dispatcher that groups 3, 4 and 5 share. */
#pragma once

#include <span>

struct command_row {
    int sub;
    int (*function)(int argc, char** argv); /* 0, or the code that the dispatcher shows */
};

/* Checks the argument count, the group number and the sub-command, runs the command's function and
 * shows a code other than 0; each complaint is a note and the group's help. notes_gated: the notes,
 * not the help, appear only while the stdout-print flag is 1. */
void dispatch_command(int group, std::span<const command_row> commands, bool notes_gated, int argc,
                      char** argv);
