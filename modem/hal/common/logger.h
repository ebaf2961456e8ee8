// SPDX-License-Identifier: Apache-2.0
/* A small logger: loggers by name, one of them in use. */
#pragma once

#include <sys/types.h>

namespace qti::ril::logger {

/* The calling thread's id. */
pid_t my_gettid();

/* How a line is written, and the most verbose level that is. */
struct LoggerImpl {
    static constexpr const char* level_option = "level";
    static constexpr const char* level_description = "Set the maximum level to log at.";

    void (*write)(int level, const char* tag, const char* text);
    int max_level = 16;
};

/* Writes "[LEVEL:TAG]: TEXT" lines on standard output. Its name is "stdout". */
extern LoggerImpl StdoutLogger;

struct Logger {
    /* Takes the logger of that name into use; says so when there is none and keeps the one in use.
     */
    static bool init(const char* name);

    /* To the logger in use: the stdout logger unless another was taken. */
    static void log(int level, const char* tag, const char* text);
};

} // namespace qti::ril::logger
