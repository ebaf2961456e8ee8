// SPDX-License-Identifier: Apache-2.0
/* The statistics items that the modem's vs service answers with: the files of the phone's folder
 * stats (docs/phone.md), laid out as qmi_vs_records.h says. */
#pragma once

#include <cstdint>
#include <optional>

#include "phone/bytes.h"

namespace simphone {

/* To be called with the phone locked. */
std::optional<Bytes> stats_item(uint32_t sub, uint32_t id);

} // namespace simphone
