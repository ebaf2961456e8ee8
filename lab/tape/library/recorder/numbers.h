// SPDX-License-Identifier: Apache-2.0
/* Numbers for what can't be compared between runs: in the order in which they were first seen. 0 for
 * null, -1 for one that was never seen. */
#pragma once

namespace numbers {

int add_handle(const void* handle, const void* os_params);
int of_handle(const void* handle);
int of_signal(const void* os_params); /* the number of the last handle made with them */
int of_pointer(const void* pointer, bool add);

} // namespace numbers
