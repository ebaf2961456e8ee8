// SPDX-License-Identifier: Apache-2.0
#include "carry_out.h"

#include <thread>

#include "patterns.h"

namespace lab {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const Verify* way_to_verify(const CommandLine& line, const std::string& output) {
    for (const Verify& verify : line.row->verify) {
        if (!verify.seen.empty() && !find_pattern(verify.seen, output))
            continue;
        if (verify.when_argument.empty())
            return &verify;
        const auto typed = line.values.find(verify.when_argument);
        if (typed != line.values.end() && !typed->second.empty() &&
            typed->second[0] == verify.when_value)
            return &verify;
    }
    return nullptr;
}

constexpr milliseconds between_readings{100};

bool shows_all(const Verify& way, const CommandLine& line, const std::string& output) {
    for (const std::string_view pattern : way.ok)
        if (!find_pattern(filled_pattern(pattern, line), output))
            return false;
    return way.unless.empty() || !find_pattern(way.unless, output);
}

/* Reads back until all is found that the catalogue wants to see, whichever reading showed it. */
void read_back(const Runner& runner, const CommandLine& line, const Verify& way,
               const CarryOptions& options, Outcome& outcome) {
    std::vector<CommandLine> readings;
    outcome.verdict = Verdict::not_told;
    for (const std::string_view form : {way.run, way.also}) {
        std::string error;
        if (form.empty())
            continue;
        if (!read_command_line(filled_words(form, line, {}), readings.emplace_back(), error)) {
            outcome.why = "it could not be read back: " + error;
            return;
        }
    }
    const auto name = [](const CommandLine& reading) { return "kvt " + one_line(reading.text()); };
    const auto end = Clock::now() + milliseconds(static_cast<long>(way.within_s * 1000));
    std::string output;
    for (;;) {
        Judgement trouble{Verdict::ok, "", {}};
        bool ended = true;
        for (const CommandLine& reading : readings) {
            if (options.stop != nullptr && *options.stop != 0) {
                outcome.why = "it was interrupted before it was read back with " + name(reading);
                return;
            }
            const ProcessResult result =
                runner(reading.words, limit_of(reading, options.timeout_s));
            output += result.output + "\n";
            ended = ended && result.how == ProcessResult::exited;
            const Judgement judgement = judge(reading, result);
            if (judgement.verdict != Verdict::ok && trouble.verdict == Verdict::ok)
                trouble = {judgement.verdict, name(reading) + ": " + judgement.why, {}};
        }
        outcome.verified = ended && shows_all(way, line, output);
        if (outcome.verified) {
            outcome.verdict = Verdict::ok;
            outcome.why.clear();
            return;
        }
        if (Clock::now() < end) {
            std::this_thread::sleep_for(between_readings);
            continue;
        }
        outcome.verified = trouble.verdict == Verdict::ok;
        outcome.verdict = outcome.verified ? Verdict::failed : Verdict::not_told;
        outcome.why = outcome.verified ? name(readings[0]) + " shows no effect of it"
                                       : "it could not be read back with " + trouble.why;
        return;
    }
}

} // namespace

/* Beyond a row's longest time a run is not slow, it hangs. */
milliseconds limit_of(const CommandLine& line, double timeout_s) {
    double seconds = timeout_s;
    if (seconds <= 0) {
        seconds = line.row->longest_s * 1.5 + 2;
        const auto added = line.values.find(line.row->adds_ms);
        if (added != line.values.end() && !added->second.empty())
            seconds += std::strtod(added->second[0].c_str(), nullptr) / 1000;
    }
    constexpr double a_day = 86400;
    return milliseconds(static_cast<long>(std::min(seconds, a_day) * 1000));
}

Outcome carry_out(const Runner& runner, const CommandLine& line, const CarryOptions& options) {
    const ProcessResult result = runner(line.words, limit_of(line, options.timeout_s));
    Outcome outcome;
    static_cast<Judgement&>(outcome) = judge(line, result);
    outcome.output = result.output;
    const bool worth_reading =
        outcome.verdict == Verdict::ok || outcome.verdict == Verdict::not_told;
    if (const Verify* const way = way_to_verify(line, result.output);
        options.verify && worth_reading && way != nullptr)
        read_back(runner, line, *way, options, outcome);
    else if (outcome.verdict == Verdict::not_told)
        outcome.why += way == nullptr    ? "; nothing tells"
                       : !options.verify ? "; --verify reads it back"
                                         : "";
    outcome.took = result.took;
    return outcome;
}

std::string outcome_text(const Judgement& outcome) {
    std::string text = verdict_name(outcome.verdict);
    const char* separator = ": ";
    if (!outcome.why.empty()) {
        text += separator + outcome.why;
        separator = "; ";
    }
    for (const Shown& shown : outcome.values) {
        text += separator + std::string(shown.value->name) + " = " + one_line(shown.text);
        if (!shown.value->unit.empty())
            text += " " + std::string(shown.value->unit);
        if (!shown.name.empty())
            text += " (" + std::string(shown.name) + ")";
        separator = ", ";
    }
    return text;
}

} // namespace lab
