// SPDX-License-Identifier: Apache-2.0
/* The rules in the phone's file "faults". */
#pragma once

#include <string>

#include "phone_lines.h"

namespace lab::workbench {

/* What is wrong with a rule, in the phone's words; empty: nothing, also of an empty line or a
 * comment. */
inline std::string wrong_with_rule(const std::string& line) {
    phone_files::Complaints complaints;
    phone_files::read_rules(line, complaints);
    return complaints.empty() ? "" : complaints.front().text;
}

} // namespace lab::workbench
