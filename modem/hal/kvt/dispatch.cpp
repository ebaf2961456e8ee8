// SPDX-License-Identifier: Apache-2.0
#include "dispatch.h"

#include <cstdlib>

#include "help.h"

void dispatch_command(kvt_group group, std::span<const command_row> commands, int argc,
                      char** argv) {
    if (!usage_good(group, argc, argv, 3)) {
        show_help(group);
        return;
    }
    const int sub = std::atoi(argv[2]);
    for (const command_row& command : commands) {
        if (command.sub != sub)
            continue;
        if (const int result = command.function(argc, argv))
            usage_error(group, NOTE_ERROR_CODE, result);
        return;
    }
    usage_error(group, NOTE_SECOND_PARAMETER);
}
