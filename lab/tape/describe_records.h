// SPDX-License-Identifier: Apache-2.0
/* What lies within the bytes of a message's field, in words. All append to a text; those that answer
 * return false when it tells of a failure. */
#pragma once

#include "describe.h"

namespace lab::tape {

/* The vendor service's data. A request sets what its answer is told by. */
bool describe_vendor_record(std::string& out, std::string_view data, bool request,
                            Exchange& exchange);

/* The statistics service's item of that number. */
void describe_statistics(std::string& out, int64_t item, std::string_view data);

void describe_command_apdu(std::string& out, std::string_view apdu);
bool describe_reply_apdu(std::string& out, std::string_view apdu);

/* A comma, where something stands before. */
void separate(std::string& out);

} // namespace lab::tape
