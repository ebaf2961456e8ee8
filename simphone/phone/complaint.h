// SPDX-License-Identifier: Apache-2.0
/* What the phone tells the person who set it up, when it does not understand something. */
#pragma once

#include <string>

#include "phone_text.h"

namespace simphone {

/* Tells on standard error, "simulated phone: FILE:LINE: TEXT", and in the log, once in a process.
 * file is relative to the phone, empty for its directory; line counts from 1, 0 is the file as a whole. */
void complain(const std::string& file, int line, const std::string& text);
void complain(const std::string& file, const phone_files::Complaints& complaints);

} // namespace simphone
