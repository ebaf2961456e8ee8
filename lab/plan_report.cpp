// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "plan.h"
#include "report.h"

namespace lab {

using nlohmann::json;

std::vector<std::string> last_lines(const std::string& output) {
    constexpr size_t most = 20;
    std::vector<std::string> lines;
    for (size_t end = output.size(); end > 0 && lines.size() < most;) {
        const size_t start = output.rfind('\n', end - 1);
        const size_t from = start == std::string::npos ? 0 : start + 1;
        if (end > from)
            lines.insert(lines.begin(),
                         one_line(std::string_view(output).substr(from, end - from)));
        end = start == std::string::npos ? 0 : start;
    }
    return lines;
}

namespace {

/* Text as JSON has it, which YAML understands too. */
std::string quoted(const std::string& text) {
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

/* "#" begins a directive in a TAP line. */
std::string tap_name(const std::string& name) {
    std::string text;
    for (const char c : one_line(name))
        text += c == '#' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return text;
}

/* A line within a block, whose first line says by its blanks where the block ends, and which a line
 * of three dots would end for readers of TAP. */
std::string block_line(const std::string& line) {
    const size_t start = line.find_first_not_of(' ');
    const std::string text = start == std::string::npos ? "" : line.substr(start);
    return text == "..." ? "(...)" : text;
}

std::string seconds_text(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", seconds);
    return text;
}

} // namespace

void TapReport::begin(const Plan& plan) {
    /* prove, which sets this for what it runs, refuses numbers that it does not know; what is used
     * of version 14 here it understands as 13. */
    std::printf("TAP version %d\n", std::getenv("HARNESS_ACTIVE") != nullptr ? 13 : 14);
    if (!plan.title.empty())
        std::printf("# %s\n", one_line(plan.title).c_str());
    std::fflush(stdout);
}

void TapReport::tell(const StepResult& result) {
    const bool skipped = result.kind == StepResult::skipped;
    std::printf("%sok %d - %s%s\n", result.kind == StepResult::failed ? "not " : "", ++count_,
                tap_name(result.name).c_str(),
                skipped ? (" # SKIP " + result.message).c_str() : "");
    if (!skipped) {
        std::printf("  ---\n");
        if (!result.message.empty())
            std::printf("  message: %s\n", quoted(result.message).c_str());
        std::printf("  command: %s\n", quoted("kvt " + result.command.text()).c_str());
        if (result.tries > 0)
            std::printf("  verdict: %s\n", quoted(outcome_text(result.outcome)).c_str());
        if (result.tries != 1)
            std::printf("  tries: %d\n", result.tries);
        std::printf("  duration_ms: %lld\n", static_cast<long long>(result.outcome.took.count()));
        if (result.kind == StepResult::failed && result.tries > 0) {
            std::printf("  output: |\n");
            for (const std::string& line : last_lines(result.outcome.output))
                std::printf("    %s\n", block_line(line).c_str());
        }
        std::printf("  ...\n");
    }
    std::fflush(stdout);
}

bool TapReport::end(int signal) {
    std::printf("1..%d\n", count_);
    if (signal != 0)
        std::printf("Bail out! Interrupted by signal %d; what was set is undone as told above\n",
                    signal);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

bool write_junit(const std::string& path, const Plan& plan, const std::vector<StepResult>& results,
                 std::string& error) {
    pugi::xml_document document;
    pugi::xml_node head = document.append_child(pugi::node_declaration);
    head.append_attribute("version") = "1.0";
    head.append_attribute("encoding") = "UTF-8";
    pugi::xml_node suite = document.append_child("testsuites").append_child("testsuite");
    int failures = 0, skipped = 0;
    double seconds = 0;
    const std::string title = one_line(plan.title.empty() ? "plan" : plan.title);
    for (const StepResult& result : results) {
        pugi::xml_node test = suite.append_child("testcase");
        const double took = static_cast<double>(result.outcome.took.count()) / 1000;
        test.append_attribute("classname") = title.c_str();
        test.append_attribute("name") = one_line(result.name).c_str();
        test.append_attribute("time") = seconds_text(took).c_str();
        seconds += took;
        if (result.kind == StepResult::skipped) {
            ++skipped;
            test.append_child("skipped").append_attribute("message") = result.message.c_str();
        } else if (result.kind == StepResult::failed) {
            ++failures;
            pugi::xml_node failure = test.append_child("failure");
            failure.append_attribute("message") = one_line(result.message).c_str();
            std::string text = "kvt " + one_line(result.command.text()) + "\n";
            for (const std::string& line : last_lines(result.outcome.output))
                text += line + "\n";
            failure.text() = text.c_str();
        }
    }
    suite.append_attribute("name") = title.c_str();
    suite.append_attribute("tests") = static_cast<int>(results.size());
    suite.append_attribute("failures") = failures;
    suite.append_attribute("errors") = 0;
    suite.append_attribute("skipped") = skipped;
    suite.append_attribute("time") = seconds_text(seconds).c_str();
    const std::string aside = path + "." + std::to_string(::getpid());
    if (document.save_file(aside.c_str(), "  ") && std::rename(aside.c_str(), path.c_str()) == 0)
        return true;
    std::remove(aside.c_str());
    error = path + ": can't be written";
    return false;
}

std::string plan_json(const Plan& plan, const std::vector<StepResult>& results, bool all_passed) {
    json steps = json::array();
    for (const StepResult& result : results) {
        json step = {{"name", result.name},
                     {"result", result_name(result.kind)},
                     {"undo", result.undo},
                     {"message", result.message},
                     {"command", result.command.text()},
                     {"tries", result.tries}};
        if (result.tries > 0)
            step["outcome"] = json::parse(outcome_json(result.command, result.outcome));
        steps.push_back(std::move(step));
    }
    const json report = {{"title", plan.title}, {"passed", all_passed}, {"steps", steps}};
    return report.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace lab
