// SPDX-License-Identifier: Apache-2.0
/* Where kvt runs: here, or wherever another runner takes it. Verbs know no more than this. */
#pragma once

#include <functional>

#include "process.h"
#include "verbs.h"

namespace lab {

/* Runs kvt with a command line, within a limit. */
using Runner = std::function<ProcessResult(const std::vector<std::string>& words,
                                           std::chrono::milliseconds limit)>;

/* The runner that the common options ask for; empty, with a message in `error`, when there is none.
 * `stop` as in ProcessRequest. */
Runner make_runner(const Common& common, std::string& error,
                   const std::atomic<int>* stop = nullptr);

} // namespace lab
