// SPDX-License-Identifier: Apache-2.0
/* A tape without what is private. */
#pragma once

#include <string>

namespace lab::tape {

/* Appends the runs of one tape, redacted, to another. False, with a message, when nothing was
 * added. */
bool append_redacted(const std::string& in, const std::string& out, std::string& error);

} // namespace lab::tape
