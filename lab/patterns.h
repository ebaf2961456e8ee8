// SPDX-License-Identifier: Apache-2.0
/* Regular expressions over a program's output: in linear time whatever the bytes are. */
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lab {

/* True when the expression is found within a line of the text; "^" and "$" are a line's ends. Bytes
 * are characters, so that the text need not be UTF-8. groups, unless null, gets what was found and
 * then its groups. A bad expression is found nowhere. */
bool find_pattern(std::string_view pattern, std::string_view text,
                  std::vector<std::string>* groups = nullptr);

/* The text as a pattern that finds just it. */
std::string literal_pattern(std::string_view text);

} // namespace lab
