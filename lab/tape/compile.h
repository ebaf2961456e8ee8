// SPDX-License-Identifier: Apache-2.0
/* Makes the replayer's script of a recorded run. */
#pragma once

#include <string>

#include "format.h"
#include "script.h"

namespace lab::tape {

/* False, with a message, when the run's lines do not fit together. */
bool compile(const Tape& tape, const Run& run, Script& script, std::string& error);

} // namespace lab::tape
