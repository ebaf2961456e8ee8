#include "dispatch.h"

#include <cstdio>
#include <cstdlib>

#include "help.h"
#include "log_lines.h"
#include "notes.h"

void dispatch_command(int group, std::span<const command_row> commands, bool notes_gated, int argc,
                      char** argv) {
    const auto notes_on = [notes_gated] { return !notes_gated || orvik_stdout_print_on(); };
    if (argc <= 2) {
        if (notes_on())
            std::puts(NOTE_TOO_FEW_PARAMETERS);
        show_help(group);
        return;
    }
    if (std::atoi(argv[1]) != group) {
        if (notes_on())
            std::printf(NOTE_FIRST_PARAMETER, group);
        show_help(group);
        return;
    }
    const int sub = std::atoi(argv[2]);
    for (const command_row& command : commands) {
        if (command.sub != sub)
            continue;
        const int result = command.function(argc, argv);
        if (result != 0) {
            if (notes_on())
                std::printf(NOTE_ERROR_CODE, result);
            show_help(group);
        }
        return;
    }
    if (notes_on())
        std::puts(NOTE_SECOND_PARAMETER);
    show_help(group);
}
