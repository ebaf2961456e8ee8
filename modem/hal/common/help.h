// SPDX-License-Identifier: Apache-2.0
/* The command set and its published help text. */
#pragma once

#include <span>

/* Prints the header, the sections of a group (0: of all) and the footer. Returns the result of the
 * last puts. */
int show_help(int group);

/* One line of a group's section, in the order of printing. */
struct help_row {
    enum kind_type {
        title,   /* "GROUP: TEXT" */
        command, /* "   kvt GROUP SUB" and the text: one row per command */
        usage,   /* "   kvt GROUP" and the text: a command without a number of its own */
        line,    /* the text alone */
    };
    int group;
    kind_type kind;
    int sub; /* of a command, else 0 */
    const char* text;
};

std::span<const help_row> help_rows();
