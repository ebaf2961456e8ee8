// SPDX-License-Identifier: Apache-2.0
/* libcutils as another phone's header has it. */
#ifndef OTHER_PROPERTIES_H
#define OTHER_PROPERTIES_H
#ifdef __cplusplus
extern "C" {
#endif
int property_get(const char*, char*, const char*);
int property_set(const char*, const char*);
#ifdef __cplusplus
}
#endif
#endif
