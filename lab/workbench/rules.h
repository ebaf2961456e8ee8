// SPDX-License-Identifier: Apache-2.0
/* The rules in the phone's file "faults". */
#pragma once

#include <optional>
#include <string>

namespace lab::workbench {

/* What is wrong with a rule, and what would be right; empty: nothing, also of an empty line or a
 * comment. */
std::string wrong_with_rule(const std::string& line);

/* A whole number, decimal or hexadecimal behind 0x; nothing when it is none. */
std::optional<long long> whole_number(const std::string& text);

} // namespace lab::workbench
