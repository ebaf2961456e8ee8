/* Android log and system log: lines "android PRIORITY TAG TEXT" and "syslog PRIORITY TEXT" of the
 * phone's log. */
#include "android_log.h"

#include <cstdarg>
#include <cstdio>
#include <string>

#include "phone/phone.h"

namespace {

/* The platform's own limit of a line. */
constexpr size_t max_line = 4068;

__attribute__((format(printf, 1, 0))) std::string format(const char* fmt, va_list args) {
    char text[max_line];
    if (std::vsnprintf(text, sizeof text, fmt, args) < 0)
        return fmt;
    return text;
}

} // namespace

int __android_log_print(int priority, const char* tag, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const std::string text = format(fmt, args);
    va_end(args);
    simphone::log_line("android", std::to_string(priority) + " " + tag + " " + text);
    return 1;
}

/* In front of the C library's, so that what a program hands to the system log reaches the phone's.
 */
extern "C" {

__attribute__((format(printf, 2, 0))) void vsyslog(int priority, const char* fmt, va_list args) {
    simphone::log_line("syslog", std::to_string(priority) + " " + format(fmt, args));
}

__attribute__((format(printf, 3, 0))) void __vsyslog_chk(int priority, int, const char* fmt,
                                                         va_list args) {
    vsyslog(priority, fmt, args);
}
}
