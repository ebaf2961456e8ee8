// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>

#include <poll.h>

#include "patterns.h"
#include "plan.h"

namespace lab {

namespace {

constexpr int between_tries_ms = 1000;

/* What puts back what a step has set. */
struct WayBack {
    std::string name;
    CommandLine command;
    CommandLine
        reading; /* shows whether there is something to put back; without row: nothing does */
    std::string_view seen, unless;
    ShownWords before;
    const Step* step;
};

class PlanRun {
  public:
    PlanRun(const PlanRunners& runners, const ResultListener& tell)
        : runners_(runners), tell_(tell) {}

    bool run(const Plan& plan) {
        bool going = true;
        for (const Step& step : plan.steps) {
            StepResult result;
            result.name = step.name;
            result.command = step.command;
            if (stopped() || !going)
                result.message = stopped() ? "interrupted" : "an earlier step failed";
            else
                run_step(step, result);
            going = going && (result.kind == StepResult::passed || step.keep_going);
            told(result);
        }
        for (; !ways_back_.empty(); ways_back_.pop_back())
            undo(ways_back_.back());
        return all_passed_;
    }

  private:
    bool stopped() const { return *runners_.stop != 0; }

    void told(const StepResult& result) {
        all_passed_ = all_passed_ && result.kind == StepResult::passed;
        tell_(result);
    }

    void run_step(const Step& step, StepResult& result) {
        result.kind = StepResult::failed;
        WayBack way;
        if (step.undo && !find_way_back(step, way, result.message))
            return;
        for (;;) {
            result.outcome = carry_out(runners_.step, step.command,
                                       {step.verify, step.timeout_s, runners_.stop});
            ++result.tries;
            result.message = trouble(step, result.outcome);
            if (result.message.empty() || result.tries == step.tries || stopped())
                break;
            wait_for_next_try();
        }
        if (result.message.empty())
            result.kind = StepResult::passed;
        if (step.undo && result.outcome.verdict != Verdict::not_run)
            ways_back_.push_back(std::move(way));
    }

    void wait_for_next_try() {
        for (int waited = 0; waited < between_tries_ms && !stopped(); waited += 50)
            ::poll(nullptr, 0, 50);
    }

    /* "" when the step passed. */
    static std::string trouble(const Step& step, const Outcome& outcome) {
        if (outcome.verdict != Verdict::ok &&
            !(outcome.verdict == Verdict::not_told && step.not_told_passes))
            return std::string(verdict_name(outcome.verdict)) +
                   (outcome.why.empty() ? "" : ": " + outcome.why);
        std::string text;
        for (const Limit& limit : step.expect)
            if (const std::string wrong = trouble_with(limit, outcome.values); !wrong.empty())
                text += (text.empty() ? "" : "; ") + wrong;
        return text;
    }

    static std::string trouble_with(const Limit& limit, const std::vector<Shown>& values) {
        const auto shown = std::find_if(values.begin(), values.end(), [&](const Shown& value) {
            return value.value->name == limit.value;
        });
        if (shown == values.end())
            return limit.value + " is not told";
        const auto number = [](double value) {
            char text[32];
            std::snprintf(text, sizeof text, "%g", value);
            return std::string(text);
        };
        const std::string is = limit.value + " is " + one_line(shown->text);
        if (limit.is && shown->text != *limit.is)
            return is + ", not " + one_line(*limit.is);
        if (limit.min && !(shown->number >= *limit.min))
            return is + ", less than " + number(*limit.min);
        if (limit.max && !(shown->number <= *limit.max))
            return is + ", more than " + number(*limit.max);
        return "";
    }

    static bool fits(const Undo& undo, const std::string& output) {
        return (undo.seen.empty() || find_pattern(undo.seen, output)) &&
               (undo.unless.empty() || !find_pattern(undo.unless, output));
    }

    static ShownWords shown_words(const Command& row, const std::string& output) {
        ShownWords words;
        for (const Shown& shown : read_values(row, output))
            words[std::string(shown.value->name)] = shown.as_arguments;
        return words;
    }

    /* Looks at what is there before the step, which is not run when nothing leads back to it. */
    bool find_way_back(const Step& step, WayBack& way, std::string& message) {
        way.step = &step;
        way.name = "undo: " + step.name;
        std::string error, last_read;
        ProcessResult shown;
        for (const Undo& undo : step.command.row->undo) {
            way.reading = {};
            way.before.clear();
            if (!undo.read.empty()) {
                if (!read_command_line(filled_words(undo.read, step.command, {}), way.reading,
                                       error))
                    break;
                if (const std::string read = way.reading.text(); read != last_read) {
                    shown = runners_.step(way.reading.words, limit_of(way.reading, 0));
                    last_read = read;
                }
                if (shown.how != ProcessResult::exited || !fits(undo, shown.output))
                    continue;
                way.before = shown_words(*way.reading.row, shown.output);
            }
            way.seen = undo.seen;
            way.unless = undo.unless;
            if (read_command_line(filled_words(undo.run, step.command, way.before), way.command,
                                  error))
                return true;
        }
        message = "not run: what is there now could not be put back" +
                  (error.empty() ? "" : " (" + error + ")");
        return false;
    }

    /* True when all is as it was before the step. */
    bool is_as_before(const WayBack& way) {
        if (way.reading.row == nullptr)
            return false;
        const ProcessResult result = runners_.undo(way.reading.words, limit_of(way.reading, 0));
        return result.how == ProcessResult::exited &&
               fits({"", way.seen, way.unless, ""}, result.output) &&
               shown_words(*way.reading.row, result.output) == way.before;
    }

    void undo(const WayBack& way) {
        StepResult result;
        result.undo = true;
        result.name = way.name;
        result.command = way.command;
        result.kind = StepResult::passed;
        if (is_as_before(way)) {
            result.outcome.verdict = Verdict::ok;
            result.outcome.verified = true;
        } else {
            result.outcome = carry_out(runners_.undo, way.command, {true, 0, nullptr});
            result.tries = 1;
            /* What the command can't tell the look at what is there now may. */
            if (result.outcome.verdict == Verdict::not_told && is_as_before(way)) {
                result.outcome.verdict = Verdict::ok;
                result.outcome.why.clear();
                result.outcome.verified = true;
            }
            if (result.outcome.verdict != Verdict::ok &&
                !(result.outcome.verdict == Verdict::not_told && way.step->not_told_passes)) {
                result.kind = StepResult::failed;
                result.message =
                    std::string(verdict_name(result.outcome.verdict)) + ": " + result.outcome.why;
            }
        }
        told(result);
    }

    const PlanRunners& runners_;
    const ResultListener& tell_;
    std::vector<WayBack> ways_back_;
    bool all_passed_ = true;
};

} // namespace

const char* result_name(StepResult::Kind kind) {
    constexpr const char* names[] = {"passed", "failed", "skipped"};
    return names[kind];
}

bool run_plan(const Plan& plan, const PlanRunners& runners, const ResultListener& tell) {
    return PlanRun(runners, tell).run(plan);
}

} // namespace lab
