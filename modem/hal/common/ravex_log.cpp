// SPDX-License-Identifier: Apache-2.0
#include "ravex_log.h"

#include <cstdarg>
#include <cstdint>
#include <cstring>

#include "android_log.h"

std::FILE* g_ravex_log_mirror = nullptr;

namespace {

constexpr size_t line_size = 512;

} // namespace

long ravex_log_format_log_msg(char* out, int size, const char* fmt, ...) {
    if (out == nullptr || size < 1)
        return static_cast<long>(reinterpret_cast<intptr_t>(out));
    va_list args;
    va_start(args, fmt);
    const int length = std::vsnprintf(out, static_cast<size_t>(size), fmt, args);
    va_end(args);
    return length;
}

void ravex_log_msg_to_adb(int level, const char* text) {
    static constexpr struct {
        int level, priority;
    } priorities[] = {{RAVEX_LOG_DEFAULT, ANDROID_LOG_INFO},
                      {16, ANDROID_LOG_INFO},
                      {RAVEX_LOG_DEBUG, ANDROID_LOG_DEBUG},
                      {RAVEX_LOG_ERROR, ANDROID_LOG_ERROR},
                      {5, ANDROID_LOG_ERROR}};
    for (const auto& row : priorities)
        if (row.level == level)
            __android_log_print(row.priority, "RAVEX", "%s", text);
    if (g_ravex_log_mirror != nullptr)
        std::fprintf(g_ravex_log_mirror, "%s\n", text);
}

void ravex_log_line(int level, const char* function, const char* fmt, ...) {
    /* Name and text are formatted one after the other. A template "NAME: TEXT" could be cut in the
     * middle of a conversion. */
    char line[line_size];
    ravex_log_format_log_msg(line, sizeof line, "%s: ", function);
    const size_t used = std::strlen(line);
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(line + used, sizeof line - used, fmt, args);
    va_end(args);
    ravex_log_msg_to_adb(level, line);
}
