// SPDX-License-Identifier: Apache-2.0
/* kvt-lab check: one command, its verdict and its values. */
#include <cstdio>

#include "carry_out.h"
#include "report.h"

namespace lab {

namespace {

constexpr int usage_status = 2;

/* Says all that speaks against running it. */
bool may_run(const CheckOptions& options, CommandLine& line) {
    std::string error;
    const bool good = read_command_line(options.command, line, error);
    if (!good)
        std::fprintf(stderr, "kvt-lab: %s\n", one_line(error).c_str());
    if (line.row == nullptr || !line.row->asks || options.yes)
        return good;
    std::fprintf(stderr, "kvt-lab: kvt %s needs --yes. What can be lost: %s\n",
                 std::string(line.row->words).c_str(), std::string(line.row->danger).c_str());
    return false;
}

} // namespace

int check(const Common& common, const CheckOptions& options) {
    CommandLine line;
    if (!may_run(options, line))
        return usage_status;
    std::string error;
    const Runner runner = make_runner(common, error);
    Outcome outcome;
    if (runner == nullptr)
        outcome.why = error;
    else
        outcome = carry_out(runner, line, {options.verify, options.timeout_s, nullptr});
    if (options.output) {
        std::fflush(stdout);
        std::fwrite(outcome.output.data(), 1, outcome.output.size(), stderr);
    }
    std::puts((options.json ? outcome_json(line, outcome) : outcome_text(outcome)).c_str());
    return verdict_status(outcome.verdict);
}

} // namespace lab
