/* What the modem tells of its statistics feature: common requests 20 and 27. */
#pragma once

#include "phone/bytes.h"

namespace simphone {

/* Request 20, the debug information. In the phone's directory: stats_debug/version is the layout's
 * version (4), stats_debug/enabled tells whether the feature is on (1), stats_debug/queries counts
 * these requests; every counter is a rate of its own times that count, so that a phone's answers
 * move on and are the same each time it is set up anew. stats_debug/reply.N, bytes, is the whole
 * answer to the Nth of them. */
int32_t stats_debug_info(ByteView data, Bytes& reply);

/* Request 27, the diag logs that the feature can't parse: stats_debug/log_codes, hexadecimal
 * numbers with blanks between; none by default. */
int32_t stats_not_supported_logs(ByteView data, Bytes& reply);

} // namespace simphone
