// SPDX-License-Identifier: Apache-2.0
/* One request to the modem and its answer, as TLVs. */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "framework.h"
#include "phone/faults.h"

namespace simphone {

/* "vendor.0x02": a message as rules and the log name it. */
std::string message_name(const Client& client, unsigned msg_id);

/* Sends the request, takes the answer, does to it what the fault says, and writes both to the log.
 * Returns 0 with the answer, or a QMI result. */
int exchange(Client& client, uint16_t msg_id, const Bytes& request, unsigned timeout_ms,
             const std::optional<Fault>& fault, Bytes& answer);

} // namespace simphone
