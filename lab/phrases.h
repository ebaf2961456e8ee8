// SPDX-License-Identifier: Apache-2.0
/* The catalogue's fields in words, for everything that a person reads. */
#pragma once

#include "catalogue.h"

namespace lab {

/* "kvt 4 1 sub nv_id", with "..." behind an argument that repeats and brackets around one that may
 * be left out. */
std::string usage_phrase(const Command& row);

/* "0 to 65535, decimal only", "0 lower antenna, 1 upper antenna", "1 to 71 characters". */
std::string range_phrase(const Argument& argument);

/* "none", "until the modem's next restart", "kept; needs a reboot of the phone". */
std::string effect_phrase(const Command& row);

/* "kvt 3 4" or "nothing tells". */
std::string verify_phrase(const Command& row);

/* "kvt 3 5" or "none"; several ways with what they depend on. */
std::string undo_phrase(const Command& row);

/* "0.1 s, at most 5 s". */
std::string time_phrase(const Command& row);

} // namespace lab
