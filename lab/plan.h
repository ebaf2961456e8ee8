// SPDX-License-Identifier: Apache-2.0
/* A plan: steps that run one after the other, and what undoes them.
 *
 *     title = "Receiver"
 *     [[step]]
 *     name = "the antenna is fixed"
 *     command = "3 3 1 4 0x4"      # or a list of words: ["8", "AT+CSQ"]
 *     undo = true                  # put back at the end what was there before
 *     [[step]]
 *     name = "signal"
 *     command = "9 10 0"
 *     tries = 5                    # only for commands without effect; a second apart
 *     expect = { rsrp_rx0 = { min = -105, max = -40 }, rsrq = { is = -11 } }
 *     keep_going = true            # later steps run although this one failed
 *
 * Further keys of a step: yes = true where something can be lost; timeout_s; verify = false to
 * leave out reading back; not_told_passes = true where nothing can tell. */
#pragma once

#include <optional>

#include "carry_out.h"

namespace lab {

/* What a value must be. */
struct Limit {
    std::string value; /* its name */
    std::optional<double> min, max;
    std::optional<std::string> is; /* as it is shown */
};

struct Step {
    std::string name;
    CommandLine command;
    std::vector<Limit> expect;
    int tries = 1;
    double timeout_s = 0;
    bool undo = false, keep_going = false, verify = true, not_told_passes = false;
};

struct Plan {
    std::string title;
    std::vector<Step> steps;
};

/* False with a message, with line, when anything is wrong with the plan. */
bool load_plan(const std::string& path, Plan& plan, std::string& error);

struct StepResult {
    enum Kind { passed, failed, skipped };
    Kind kind = skipped;
    bool undo = false; /* it undoes a step */
    std::string name;
    std::string message; /* why it did not pass */
    CommandLine command; /* without row when there is none */
    Outcome outcome;     /* of the last try; not of a step that was skipped */
    int tries = 0;       /* runs of the command */
};

const char* result_name(StepResult::Kind kind);

/* Whom the runs are told to, one after the other. */
using ResultListener = std::function<void(const StepResult&)>;

struct PlanRunners {
    Runner step, undo; /* undo is not disturbed by a signal */
    const std::atomic<int>* stop;
};

/* Runs the steps and then undoes, in reverse, what was set: also after a failure, and once `stop`
 * is not 0. Every step and every undoing is told. True when all passed. */
bool run_plan(const Plan& plan, const PlanRunners& runners, const ResultListener& tell);

/* The lines of a program's output, without what a terminal should not see; the last of them when
 * there are many. */
std::vector<std::string> last_lines(const std::string& output);

/* TAP version 14 as it comes. */
class TapReport {
  public:
    void begin(const Plan& plan);
    void tell(const StepResult& result);
    /* signal: what ended the plan, or 0. False when standard output took not all. */
    bool end(int signal);

  private:
    int count_ = 0;
};

/* JUnit XML, written aside and renamed. False with a message when it can't be. */
bool write_junit(const std::string& path, const Plan& plan, const std::vector<StepResult>& results,
                 std::string& error);

/* As schema/plan.json tells, one line. */
std::string plan_json(const Plan& plan, const std::vector<StepResult>& results, bool all_passed);

} // namespace lab
