// SPDX-License-Identifier: Apache-2.0
/* The framework log: the modem API's lines, "FUNCTION: TEXT" under the tag "RAVEX" of the Android
 * log. */
#pragma once

#include <cstdio>

/* Levels and the Android priority each gets: 2 and 16 info (4), 3 debug (3), 4 and 5 error (6); any
 * other level writes nothing to the Android log. */
enum {
    RAVEX_LOG_DEFAULT = 2, /* progress lines */
    RAVEX_LOG_DEBUG = 3,
    RAVEX_LOG_ERROR = 4,
};

/* Also gets every line when it is set; nothing in the tool opens it. */
extern std::FILE* g_ravex_log_mirror;

/* Formats into out, cut to size, and returns the length of the whole text. Without a buffer, or
 * with a size below 1, it returns out as a number. */
long ravex_log_format_log_msg(char* out, int size, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

void ravex_log_msg_to_adb(int level, const char* text);

/* One line of a modem API function; text and line are cut at 511 characters. */
void ravex_log_line(int level, const char* function, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

#define RAVEX_LOG_AT(level, text, ...)                                                             \
    ravex_log_line(level, __func__, text __VA_OPT__(, ) __VA_ARGS__)
#define RAVEX_LOG(text, ...) RAVEX_LOG_AT(RAVEX_LOG_DEFAULT, text __VA_OPT__(, ) __VA_ARGS__)
#define RAVEX_ENTRY() RAVEX_LOG("function entry")
