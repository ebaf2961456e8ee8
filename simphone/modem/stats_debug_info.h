// SPDX-License-Identifier: Apache-2.0
/* What the modem tells of its statistics feature: the files of the phone's folder stats_debug
 * (docs/phone.md). */
#pragma once

#include "phone/bytes.h"

namespace simphone {

/* The debug information: every counter is a rate of its own times the requests so far, so that a
 * phone's answers move on and are the same each time it is set up anew. */
int32_t stats_debug_info(ByteView data, Bytes& reply);

/* The diag logs that the feature can't parse. */
int32_t stats_not_supported_logs(ByteView data, Bytes& reply);

} // namespace simphone
