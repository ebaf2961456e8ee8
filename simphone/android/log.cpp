// SPDX-License-Identifier: Apache-2.0
/* Android log and system log: lines "android PRIORITY TAG TEXT" and "syslog PRIORITY TEXT" of the
 * phone's log. */
#include "android_log.h"

#include <cstdarg>
#include <cstdio>
#include <string>

#include "phone/guarded.h"
#include "phone/phone.h"

namespace {

struct Line {
    char text[4068]; /* the platform's own limit */
};

__attribute__((format(printf, 1, 0))) Line format(const char* fmt, va_list args) {
    Line line{};
    std::vsnprintf(line.text, sizeof line.text, fmt, args);
    return line;
}

} // namespace

int __android_log_print(int priority, const char* tag, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const Line text = format(fmt, args);
    va_end(args);
    return simphone::guarded(-1, [&] {
        simphone::log_line("android", std::to_string(priority) + " " + tag + " " + text.text);
        return 1;
    });
}

/* In front of the C library's, so that what a program hands to the system log reaches the phone's.
 */
extern "C" {

__attribute__((format(printf, 2, 0))) void vsyslog(int priority, const char* fmt, va_list args) {
    const Line text = format(fmt, args);
    simphone::guarded(false, [&] {
        simphone::log_line("syslog", std::to_string(priority) + " " + text.text);
        return true;
    });
}

__attribute__((format(printf, 3, 0))) void __vsyslog_chk(int priority, int, const char* fmt,
                                                         va_list args) {
    vsyslog(priority, fmt, args);
}
}
