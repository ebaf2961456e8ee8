// SPDX-License-Identifier: Apache-2.0
/* kvt-lab plan: the steps of a file, reported as TAP. */
#include "plan.h"

#include <cstdio>
#include <fstream>

#include "stop.h"
#include "verbs.h"

namespace lab {

namespace {

int refuse(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return 2;
}

/* kvt can't be run at all: the reports are whole all the same, and say why. */
int report_not_run(const Plan& plan, const PlanOptions& options, const std::string& why) {
    std::vector<StepResult> results;
    for (const Step& step : plan.steps) {
        StepResult result;
        result.name = step.name;
        result.command = step.command;
        result.kind = results.empty() ? StepResult::failed : StepResult::skipped;
        result.message = results.empty() ? "not run: " + why : "kvt can't be run";
        results.push_back(result);
    }
    TapReport tap;
    if (options.json) {
        std::puts(plan_json(plan, results, false).c_str());
    } else {
        tap.begin(plan);
        for (const StepResult& result : results)
            tap.tell(result);
        tap.end(0);
    }
    std::string error;
    if (!options.junit.empty() && !write_junit(options.junit, plan, results, error))
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
    std::fprintf(stderr, "kvt-lab: %s\n", why.c_str());
    return verdict_status(Verdict::not_run);
}

} // namespace

int plan(const Common& common, const PlanOptions& options) {
    Plan plan;
    std::string error;
    if (!load_plan(options.file, plan, error))
        return refuse(one_line(error));
    if (!common.on.empty()) /* reports of several phones are read side by side */
        plan.title += (plan.title.empty() ? "on " : " on ") + common.on;
    /* A signal ends the plan, not us: there is something to undo. */
    const std::atomic<int>& signal = note_signals();
    const Runner steps = make_runner(common, error, &signal);
    const Runner undo = make_runner(common, error);
    if (steps == nullptr || undo == nullptr)
        return report_not_run(plan, options, error);
    /* A report that can't be written is told before anything is run. */
    if (!options.junit.empty() && !write_junit(options.junit, plan, {}, error))
        return refuse(error);

    TapReport tap;
    std::vector<StepResult> results;
    if (!options.json)
        tap.begin(plan);
    bool good = run_plan(plan, {steps, undo, &signal}, [&](const StepResult& result) {
        if (!options.json)
            tap.tell(result);
        results.push_back(result);
    });
    if (options.json)
        good = std::puts(plan_json(plan, results, good).c_str()) >= 0 && std::fflush(stdout) == 0 &&
               good;
    else
        good = tap.end(signal) && good;
    if (!options.junit.empty() && !write_junit(options.junit, plan, results, error)) {
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
        good = false;
    }
    if (signal != 0)
        return 128 + signal;
    return good ? 0 : 1;
}

} // namespace lab
