// SPDX-License-Identifier: Apache-2.0
/* Android log (liblog). The system log is reached through vsyslog of the C library. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum {
    ANDROID_LOG_DEBUG = 3,
    ANDROID_LOG_INFO = 4,
    ANDROID_LOG_ERROR = 6,
};

int __android_log_print(int priority, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif
