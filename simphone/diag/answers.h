// SPDX-License-Identifier: Apache-2.0
/* What the modem answers to DIAG packets: the files of the phone's folder diag (docs/phone.md), or
 * the modem's own answer where there is none. */
#pragma once

#include <vector>

#include "phone/bytes.h"

namespace simphone {

/* In the order in which they come. */
std::vector<Bytes> answers_to(ByteView packet);

} // namespace simphone
