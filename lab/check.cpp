/* kvt-lab check: one command, its verdict and its values. */
#include <cstdio>

#include "carry_out.h"
#include "report.h"

namespace lab {

namespace {

constexpr int usage_status = 2;

int refuse(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", one_line(message).c_str());
    return usage_status;
}

} // namespace

int check(const Common& common, const CheckOptions& options) {
    CommandLine line;
    std::string error;
    if (!read_command_line(options.command, line, error))
        return refuse(error);
    if (!line.row->danger.empty() && !options.yes) {
        std::fprintf(stderr, "kvt-lab: kvt %s needs --yes. What can be lost: %s\n",
                     one_line(line.text()).c_str(), std::string(line.row->danger).c_str());
        return usage_status;
    }
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
