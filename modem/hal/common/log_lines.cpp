#include "log_lines.h"

#include <cstdarg>

#include <syslog.h>

#include "cutils_properties.h"
#include "phone_names.h"

std::atomic<int> g_orvik_stdout_print_flag{1};

namespace {

constexpr int print_flag_not_read = 2;

/* Two threads that ask first at once may both read the property; they store the same. */
std::atomic<int> g_print_flag{print_flag_not_read};

} // namespace

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
