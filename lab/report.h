// SPDX-License-Identifier: Apache-2.0
/* What the lab says to programs, as JSON. schema/ holds its form. */
#pragma once

#include <string>

#include "carry_out.h"

namespace lab {

/* An outcome as schema/check.json tells, one line. What is not UTF-8 is replaced. */
std::string outcome_json(const CommandLine& line, const Outcome& outcome);

} // namespace lab
