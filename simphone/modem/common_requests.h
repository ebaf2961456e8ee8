// SPDX-License-Identifier: Apache-2.0
/* Request kind 4 of the vendor service: records that begin with their own kind. */
#pragma once

#include "phone/bytes.h"

namespace simphone {

/* Takes a request's payload, returns the response's. */
Bytes common_request(ByteView request);

} // namespace simphone
