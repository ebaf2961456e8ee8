// SPDX-License-Identifier: Apache-2.0
/* liblog as another phone's header has it. */
#ifndef OTHER_ANDROID_LOG_H
#define OTHER_ANDROID_LOG_H
#ifdef __cplusplus
extern "C" {
#endif
typedef enum { ANDROID_LOG_DEBUG = 3, ANDROID_LOG_INFO, ANDROID_LOG_ERROR = 6 } other_log_priority;
int __android_log_print(int, const char*, const char*, ...)
    __attribute__((__format__(printf, 3, 4)));
#ifdef __cplusplus
}
#endif
#endif
