// SPDX-License-Identifier: Apache-2.0
/* The tool's log lines and the two switches that decide which of them appear.
 *
 * A debug line goes to the system log (priority 7) as "SUB[shell][FILE:LINE] FUNCTION: TEXT" when
 * the print flag is on, and to standard output as "RIL[FUNCTION:LINE]: TEXT" when the stdout-print
 * flag is set. An error line goes to both whatever the flags say (system log priority 3).
 *
 * Logging leaves errno as it was and evaluates its arguments once. Only the macros below know file,
 * line and function. */
#pragma once

#include <atomic>
#include <string_view>

/* Gates most of what the tool prints. Initially 1; only the eSIM switch clears it. */
extern std::atomic<int> g_orvik_stdout_print_flag;

inline bool orvik_stdout_print_on() { return g_orvik_stdout_print_flag == 1; }

/* Prints on standard output while the stdout-print flag is 1. */
void orvik_print(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

/* 1 when system-log debug lines are on, else 0. Reads the property
 * "persist.vendor.radio.adb_log_ov" once per process: on only for exactly "1", the default. */
unsigned char orvik_qcril_get_print_flag();

/* One line to the system log at priority 7 (debug) or 3 (error), as it stands. */
void orvik_ril_syslog_dbg(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
void orvik_ril_syslog_err(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

/* What the macros below call. fmt begins with ORVIK_LOG_PREFIX, the arguments with the file, line
 * and function for it. Returns result. */
enum orvik_log_level { ORVIK_LEVEL_ERR = 3, ORVIK_LEVEL_DBG = 7 };
int orvik_log(orvik_log_level level, int result, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

/* What stands after the last slash of a source path. */
consteval const char* orvik_base_name(std::string_view path) {
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path.data() : path.data() + slash + 1;
}

#define ORVIK_LOG_PREFIX "SUB[shell][%s:%d] %s: " /* file, line, function */

#define ORVIK_LOG(level, result, function, text, ...)                                              \
    orvik_log(level, result, ORVIK_LOG_PREFIX text, orvik_base_name(__FILE__), __LINE__,           \
              function __VA_OPT__(, ) __VA_ARGS__)

/* A debug line; with _IN under a given function's name, for a helper that logs on behalf of its
 * caller. */
#define ORVIK_DBG(text, ...) ORVIK_DBG_IN(__func__, text __VA_OPT__(, ) __VA_ARGS__)
#define ORVIK_DBG_IN(function, text, ...)                                                          \
    ORVIK_LOG(ORVIK_LEVEL_DBG, 0, function, text __VA_OPT__(, ) __VA_ARGS__)

/* Logs a debug line and yields result: "return ORVIK_FAILED(-1, ...)". */
#define ORVIK_FAILED(result, text, ...)                                                            \
    ORVIK_FAILED_IN(__func__, result, text __VA_OPT__(, ) __VA_ARGS__)
#define ORVIK_FAILED_IN(function, result, text, ...)                                               \
    ORVIK_LOG(ORVIK_LEVEL_DBG, result, function, text __VA_OPT__(, ) __VA_ARGS__)

#define ORVIK_ERR(text, ...)                                                                       \
    ORVIK_LOG(ORVIK_LEVEL_ERR, 0, __func__, text __VA_OPT__(, ) __VA_ARGS__)

/* Logs the entry line now and the exit line at the end of the scope, after the destructors of what
 * is declared later. */
#define ORVIK_FUNCTION_SCOPE()                                                                     \
    ORVIK_DBG("function entry ------------->");                                                    \
    const orvik_function_exit orvik_function_scope { orvik_base_name(__FILE__), __LINE__, __func__ }

struct orvik_function_exit {
    const char* file;
    int line;
    const char* function;

    ~orvik_function_exit() {
        orvik_log(ORVIK_LEVEL_DBG, 0, ORVIK_LOG_PREFIX "function exit <-------------", file, line,
                  function);
    }
};
