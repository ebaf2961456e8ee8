// SPDX-License-Identifier: Apache-2.0
#include "usage.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "help.h"
#include "log_lines.h"

namespace {

void print_note(kvt_group group, const char* note, va_list args) {
    const bool gated = group == GROUP_CMN || group == GROUP_QMI_SEND_DATA;
    if (!gated || orvik_stdout_print_on())
        std::vprintf(note, args);
}

} // namespace

void usage_note(kvt_group group, const char* note, ...) {
    va_list args;
    va_start(args, note);
    print_note(group, note, args);
    va_end(args);
}

int usage_error(kvt_group group, const char* note, ...) {
    va_list args;
    va_start(args, note);
    print_note(group, note, args);
    va_end(args);
    return show_help(group);
}

bool usage_good(kvt_group group, int argc, char** argv, int least) {
    if (argc < least)
        usage_note(group, NOTE_TOO_FEW_PARAMETERS);
    else if (std::atoi(argv[1]) != group)
        usage_note(group, NOTE_FIRST_PARAMETER, group);
    else
        return true;
    return false;
}
