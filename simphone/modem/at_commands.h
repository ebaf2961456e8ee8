// SPDX-License-Identifier: Apache-2.0
/* The modem's AT channel: the table at/commands in the phone's directory (docs/phone.md). */
#pragma once

#include <string>

namespace simphone {

/* Does what the table says of the command and returns the answer, each line of it between CR LF. No
 * line of the table: ERROR. */
std::string answer_at_command(const std::string& command);

/* What crossed as one readable line: \r, \n, \xHH and \\ for what is no plain character. */
std::string at_text(const std::string& bytes);

} // namespace simphone
