// SPDX-License-Identifier: Apache-2.0
/* kvt-lab watch: asks for levels again and again and shows how they move. */
#include "watch.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include <poll.h>
#include <unistd.h>

#include "carry_out.h"
#include "stop.h"
#include "verbs.h"
#include "write_file.h"

namespace lab {

namespace {

using Clock = std::chrono::steady_clock;

/* Units of levels, and what a bar of them can show. */
struct Scale {
    std::string_view unit;
    double from, to;
};
constexpr Scale scales[] = {{"dBm", -140, -30}, {"dB", -25, 35}};
constexpr int bar_width = 30;

const Scale* scale_of(std::string_view unit) {
    const auto scale = std::find_if(std::begin(scales), std::end(scales),
                                    [&](const Scale& row) { return row.unit == unit; });
    return scale == std::end(scales) ? nullptr : scale;
}

void add_sample(Series& series, const Judgement& judgement) {
    std::optional<double> sample;
    if (judgement.verdict == Verdict::ok)
        for (const Shown& shown : judgement.values)
            if (shown.value->name == series.name)
                sample = shown.number;
    series.samples.push_back(sample);
    if (!sample)
        return;
    series.min = series.there == 0 ? *sample : std::min(series.min, *sample);
    series.max = series.there == 0 ? *sample : std::max(series.max, *sample);
    ++series.there;
}

std::string bar(const Scale& scale, double level) {
    const double part = std::clamp((level - scale.from) / (scale.to - scale.from), 0.0, 1.0);
    const int filled = static_cast<int>(std::lround(part * bar_width));
    return std::string(static_cast<size_t>(filled), '#') +
           std::string(static_cast<size_t>(bar_width - filled), '.');
}

/* The newest sample of each level, with what was lowest and highest since the start. */
void show(const Levels& levels, const std::vector<std::string>& troubles, bool redraw) {
    if (redraw)
        std::fputs("\033[H\033[J", stdout);
    std::printf("%.1f s\n", levels.times.back());
    std::string_view command;
    for (const Series& series : levels.series) {
        if (series.command != command)
            std::printf("kvt %.*s\n", static_cast<int>(series.command.size()),
                        series.command.data());
        command = series.command;
        std::printf("  %-12.*s", static_cast<int>(series.name.size()), series.name.data());
        if (const std::optional<double>& sample = series.samples.back())
            std::printf("%9.2f %-4.*s %s", *sample, static_cast<int>(series.unit.size()),
                        series.unit.data(), bar(*scale_of(series.unit), *sample).c_str());
        else
            std::printf("%9s %-4s %-*s", "missing", "", bar_width, "");
        if (series.there > 0)
            std::printf("  min %.2f  max %.2f", series.min, series.max);
        std::putchar('\n');
    }
    for (const std::string& trouble : troubles)
        std::printf("%s\n", trouble.c_str());
    std::fflush(stdout);
}

int refuse(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return 2;
}

/* The commands to ask, and an empty series for each level that they tell. */
bool read_commands(const WatchOptions& options, std::vector<CommandLine>& lines, Levels& levels,
                   std::string& error) {
    if (options.words.size() < 2 || options.words[0] != "9") {
        error = "watch takes group 9 and its sub-commands: kvt-lab watch 9 10";
        return false;
    }
    for (size_t i = 1; i < options.words.size(); ++i) {
        CommandLine line;
        if (!read_command_line({"9", options.words[i], options.sub}, line, error))
            return false;
        const size_t before = levels.series.size();
        for (const Value& value : line.row->values)
            if (scale_of(value.unit) != nullptr)
                levels.series.push_back({line.row->words, value.name, value.unit, {}});
        if (levels.series.size() == before) {
            error = "kvt " + std::string(line.row->words) + " tells no level";
            return false;
        }
        lines.push_back(line);
    }
    return true;
}

bool write_out(const std::string& file, const Levels& levels, std::string& error) {
    const bool svg = file.size() > 4 && file.compare(file.size() - 4, 4, ".svg") == 0;
    return write_file(file, svg ? levels_svg(levels) : levels_csv(levels), error);
}

} // namespace

std::string levels_csv(const Levels& levels) {
    std::string text = "time_s";
    for (const Series& series : levels.series)
        text += "," + std::string(series.command) + " " + std::string(series.name) + " " +
                std::string(series.unit);
    text += "\n";
    char number[32];
    for (size_t i = 0; i < levels.times.size(); ++i) {
        std::snprintf(number, sizeof number, "%.3f", levels.times[i]);
        text += number;
        for (const Series& series : levels.series) {
            number[0] = '\0';
            if (series.samples[i])
                std::snprintf(number, sizeof number, "%.2f", *series.samples[i]);
            text += std::string(",") + number;
        }
        text += "\n";
    }
    return text;
}

int watch(const Common& common, const WatchOptions& options) {
    std::vector<CommandLine> lines;
    Levels levels;
    std::string error;
    if (!read_commands(options, lines, levels, error) ||
        (!options.out.empty() && !write_out(options.out, levels, error)))
        return refuse(error);
    const std::atomic<int>& stop = note_signals();
    const Runner runner = make_runner(common, error, &stop);
    if (runner == nullptr) {
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
        return verdict_status(Verdict::not_run);
    }
    const bool terminal = ::isatty(1) == 1;
    const auto start = Clock::now();
    const auto pace = std::chrono::duration<double>(options.every_s);
    auto next = start;
    bool missing = false;
    for (long asked = 0; stop == 0 && (options.count == 0 || asked < options.count); ++asked) {
        levels.times.push_back(std::chrono::duration<double>(Clock::now() - start).count());
        std::vector<std::string> troubles;
        for (const CommandLine& line : lines) {
            const Outcome outcome = carry_out(runner, line, {false, 0, &stop});
            for (Series& series : levels.series)
                if (series.command == line.row->words)
                    add_sample(series, outcome);
            if (outcome.verdict != Verdict::ok)
                troubles.push_back("kvt " + line.text() + " " + verdict_name(outcome.verdict) +
                                   ": " + outcome.why);
        }
        if (stop != 0) { /* the last answers may be cut short */
            levels.times.pop_back();
            for (Series& series : levels.series)
                series.samples.pop_back();
            break;
        }
        missing = missing || !troubles.empty();
        show(levels, troubles, terminal);
        /* A person who looks at the file meanwhile finds it whole. */
        if (!options.out.empty() && !write_out(options.out, levels, error))
            return refuse(error);
        next += std::chrono::duration_cast<Clock::duration>(pace);
        next = std::max(next, Clock::now()); /* a slow answer is not made up for */
        while (stop == 0 && Clock::now() < next &&
               (options.count == 0 || asked + 1 < options.count))
            ::poll(nullptr, 0, 20);
    }
    return missing ? 1 : 0;
}

} // namespace lab
