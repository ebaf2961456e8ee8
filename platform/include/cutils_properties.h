// SPDX-License-Identifier: Apache-2.0
/* Android system properties (libcutils). */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum { PROPERTY_VALUE_MAX = 92 };

/* value holds PROPERTY_VALUE_MAX bytes at least. Returns the value's length; a property that is not
 * set (or empty) yields default_value, which may be null. */
int property_get(const char* key, char* value, const char* default_value);

/* Returns 0, or a negative number when the property was not set. */
int property_set(const char* key, const char* value);

#ifdef __cplusplus
}
#endif
