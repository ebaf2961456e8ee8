// SPDX-License-Identifier: Apache-2.0
#include "log_lines.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include <syslog.h>

#include "cutils_properties.h"
#include "phone_names.h"

std::atomic<int> g_orvik_stdout_print_flag{1};

namespace {

constexpr int print_flag_not_read = 2;

/* When two threads ask first at once, both may read the property; both store the same value. */
std::atomic<int> g_print_flag{print_flag_not_read};

} // namespace

void orvik_print(const char* fmt, ...) {
    if (!orvik_stdout_print_on())
        return;
    va_list args;
    va_start(args, fmt);
    std::vprintf(fmt, args);
    va_end(args);
}

unsigned char orvik_qcril_get_print_flag() {
    if (const int flag = g_print_flag; flag != print_flag_not_read)
        return flag == 1 ? 1 : 0;
    char value[256] = {};
    property_get(PHONE_PROPERTY_PRINT, value, "1");
    const bool on = value[0] == '1' && value[1] == '\0';
    if (on)
        orvik_ril_syslog_dbg("rild print is started");
    else
        orvik_ril_syslog_dbg("rild print is stoped");
    g_print_flag = on ? 1 : 0;
    return on ? 1 : 0;
}

void orvik_ril_syslog_dbg(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    vsyslog(LOG_DEBUG, fmt, args);
    va_end(args);
}

void orvik_ril_syslog_err(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    vsyslog(LOG_ERR, fmt, args);
    va_end(args);
}

int orvik_log(orvik_log_level level, int result, const char* fmt, ...) {
    const int error = errno;
    const bool always = level == ORVIK_LEVEL_ERR;
    va_list args;
    if (always || orvik_qcril_get_print_flag() == 1) {
        va_start(args, fmt);
        vsyslog(level, fmt, args);
        va_end(args);
    }
    if (always || g_orvik_stdout_print_flag != 0) {
        va_start(args, fmt);
        va_arg(args, const char*); /* the file, which this form does not show */
        const int line = va_arg(args, int);
        const char* const function = va_arg(args, const char*);
        flockfile(stdout); /* no other thread prints into the line */
        std::printf("RIL[%s:%d]: ", function, line);
        std::vprintf(fmt + sizeof ORVIK_LOG_PREFIX - 1, args);
        std::putchar('\n');
        funlockfile(stdout);
        va_end(args);
    }
    errno = error;
    return result;
}
