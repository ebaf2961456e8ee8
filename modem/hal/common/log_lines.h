/* The tool's log lines and the two switches that decide which of them appear.
 *
 * A debug line goes to the system log (priority 7) as "SUB[shell][FILE:LINE] FUNCTION: TEXT" when
 * the print flag is on, and to standard output as "RIL[FUNCTION:LINE]: TEXT" when the stdout-print
 * flag is set. An error line goes to both whatever the flags say (system log priority 3).
 *
 * The macros below are the only log sites; nothing else knows file, line and function. */
#pragma once

#include <atomic>
#include <cstdio>
#include <string_view>

/* Gates most of what the tool prints. Initially 1; only the eSIM switch clears it. */
extern std::atomic<int> g_orvik_stdout_print_flag;

inline bool orvik_stdout_print_on() { return g_orvik_stdout_print_flag == 1; }

/* 1 when system-log debug lines are on, else 0. Reads the property
 * "persist.vendor.radio.adb_log_ov" once per process: on only for exactly "1", the default. */
unsigned char orvik_qcril_get_print_flag();

/* One line to the system log at priority 7 (debug) or 3 (error), as it stands. */
void orvik_ril_syslog_dbg(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
void orvik_ril_syslog_err(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

/* What stands after the last slash of a source path. */
consteval const char* orvik_base_name(std::string_view path) {
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path.data() : path.data() + slash + 1;
}

#define ORVIK_SYSLOG_LINE(write, function, text, ...)                                              \
    write("SUB[%s][%s:%d] %s: " text, "shell", orvik_base_name(__FILE__), __LINE__,                \
          function __VA_OPT__(, ) __VA_ARGS__)

#define ORVIK_STDOUT_LINE(function, text, ...)                                                     \
    std::printf("RIL[%s:%d]: " text "\n", function, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

/* A debug line under a given function's name: for a helper that logs on behalf of its caller. */
#define ORVIK_DBG_IN(function, text, ...)                                                          \
    do {                                                                                           \
        if (orvik_qcril_get_print_flag() == 1)                                                     \
            ORVIK_SYSLOG_LINE(orvik_ril_syslog_dbg, function, text __VA_OPT__(, ) __VA_ARGS__);    \
        if (g_orvik_stdout_print_flag != 0)                                                        \
            ORVIK_STDOUT_LINE(function, text __VA_OPT__(, ) __VA_ARGS__);                          \
    } while (false)

#define ORVIK_DBG(text, ...) ORVIK_DBG_IN(__func__, text __VA_OPT__(, ) __VA_ARGS__)

#define ORVIK_ERR(text, ...)                                                                       \
    do {                                                                                           \
        ORVIK_SYSLOG_LINE(orvik_ril_syslog_err, __func__, text __VA_OPT__(, ) __VA_ARGS__);        \
        ORVIK_STDOUT_LINE(__func__, text __VA_OPT__(, ) __VA_ARGS__);                              \
    } while (false)

/* Logs the entry line now and the exit line when the scope ends, after what is declared behind it.
 */
#define ORVIK_FUNCTION_SCOPE()                                                                     \
    ORVIK_DBG("function entry ------------->");                                                    \
    const orvik_scope_exit orvik_function_scope(                                                   \
        [function = __func__] { ORVIK_DBG_IN(function, "function exit <-------------"); })

/* Runs its action when the scope ends. */
template <typename Action> class orvik_scope_exit {
  public:
    explicit orvik_scope_exit(Action action) : action_(action) {}
    ~orvik_scope_exit() { action_(); }
    orvik_scope_exit(const orvik_scope_exit&) = delete;
    orvik_scope_exit& operator=(const orvik_scope_exit&) = delete;

  private:
    Action action_;
};
