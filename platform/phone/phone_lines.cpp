// SPDX-License-Identifier: Apache-2.0
#include "phone_lines.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>

#include <fnmatch.h>

namespace phone_files {

namespace {

/* Calls take(LINE, NUMBER) for each line. */
template <typename Take> void for_each_line(const std::string& text, Take take) {
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);)
        take(line, ++number);
}

/* ---- faults ---- */

/* False when no call can ever match. A pattern without ":" may match across call and object. */
bool can_match(const std::string& pattern) {
    const size_t colon = pattern.find(':');
    if (colon == std::string::npos && pattern.find_first_of("*?[") != std::string::npos)
        return true;
    const std::string call = pattern.substr(0, colon);
    return std::any_of(std::begin(calls), std::end(calls),
                       [&](const char* name) { return ::fnmatch(call.c_str(), name, 0) == 0; });
}

const Action* find_action(const std::string& name) {
    const Action* const found = std::find_if(std::begin(actions), std::end(actions),
                                             [&](const Action& row) { return name == row.name; });
    return found == std::end(actions) ? nullptr : found;
}

std::string action_names() {
    std::string text;
    for (const Action& action : actions)
        text += std::string(text.empty() ? "" : " ") + action.name;
    return text;
}

/* Reads what stands behind the action. */
void read_argument(Rule& rule, Complaints& complaints) {
    const Word word{rule.argument, rule.line};
    switch (rule.action->takes) {
    case Takes::nothing:
        if (!word.text.empty())
            complaints.push_back(
                {rule.line, std::string(rule.action->name) + " takes no argument"});
        return;
    case Takes::result:
        if (!word.text.empty() && whole_number(word.text))
            rule.number = number_within(word, {INT32_MIN, INT32_MAX}, 0, complaints);
        else if (!word.text.empty())
            complaints.push_back(
                {rule.line, "'" + word.text + "' is no result: error takes a number, or nothing"});
        return;
    case Takes::milliseconds:
        rule.number = number_within(word, {0, hour_ms}, 0, complaints);
        return;
    case Takes::answer:
        return;
    }
}

/* False when it is no rule. */
bool read_rule(const std::string& text, Rule& rule, Complaints& complaints) {
    std::istringstream words(text.substr(0, text.find('#')));
    std::string when, name;
    const auto wrong = [&](const std::string& why) {
        complaints.push_back({rule.line, why});
        return false;
    };
    if (!(words >> rule.pattern))
        return false;
    if (!(words >> when >> name))
        return wrong("'" + text + "' is no rule: CALL[:OBJECT] WHEN ACTION [ARGUMENT]");
    std::getline(words >> std::ws, rule.argument);
    rule.argument = trimmed(rule.argument);
    const bool share = when.rfind("*/", 0) == 0;
    const int64_t number =
        when == "*" ? 0 : whole_number(share ? when.substr(2) : when).value_or(-1);
    if (number < 0 || (number == 0 && when != "*"))
        return wrong("'" + when + "' is no call's number: * for each, the number, from 1, or */N");
    (share ? rule.every_n : rule.nth) = number;
    rule.action = find_action(name);
    if (rule.action == nullptr)
        return wrong("'" + name + "' is no action; one of: " + action_names());
    if (!can_match(rule.pattern))
        wrong("no call is named '" + rule.pattern + "'; the log's lines \"call\" show their names");
    read_argument(rule, complaints);
    return true;
}

/* ---- at/commands ---- */

/* A file that an action may name: below the phone, and none of the phone's own. */
bool is_settable(const std::filesystem::path& name) {
    return name.is_relative() && name.has_filename() && name.string()[0] != '.' && name != "log" &&
           std::none_of(name.begin(), name.end(),
                        [](const std::filesystem::path& part) { return part == ".."; });
}

bool is_at_action(const std::vector<std::string>& words) {
    return words.empty() || (words.size() == 1 && words[0] == "restart") ||
           (words.size() == 2 && words[0] == "remove" && is_settable(words[1])) ||
           (words.size() >= 3 && words[0] == "write" && is_settable(words[1]));
}

bool read_at_row(const std::string& text, int line, AtRow& row, Complaints& complaints) {
    std::istringstream in(text);
    std::string rest;
    if (text[0] == '#' || !(in >> row.pattern))
        return false;
    std::getline(in, rest);
    const size_t arrow = rest.rfind("->");
    row.answer = trimmed(rest.substr(0, arrow));
    if (arrow != std::string::npos)
        for (const Word& word : words_of(rest.substr(arrow + 2)))
            row.action.push_back(word.text);
    if (row.answer.empty() && row.action.empty()) {
        complaints.push_back({line, "'" + text + "' has no answer: PATTERN ANSWER [-> ACTION]"});
        return false;
    }
    if ((arrow != std::string::npos && row.action.empty()) || !is_at_action(row.action)) {
        complaints.push_back(
            {line, "'" + trimmed(rest.substr(arrow)) +
                       "' can't be done: -> restart, -> write FILE TEXT, -> remove FILE"});
        row.action.clear();
    }
    return true;
}

} // namespace

std::vector<Rule> read_rules(const std::string& text, Complaints& complaints) {
    std::vector<Rule> rules;
    for_each_line(text, [&](const std::string& line, int number) {
        Rule rule{number, line, "", 0, 0, nullptr, "", std::nullopt};
        if (read_rule(line, rule, complaints))
            rules.push_back(std::move(rule));
    });
    return rules;
}

std::vector<AtRow> read_at_rows(const std::string& text, Complaints& complaints) {
    std::vector<AtRow> rows;
    for_each_line(text, [&](const std::string& line, int number) {
        AtRow row;
        if (read_at_row(line, number, row, complaints))
            rows.push_back(std::move(row));
    });
    return rows;
}

Power read_power(const std::string& text, Complaints& complaints) {
    const std::vector<Word> words = words_of(text);
    Power power;
    if (words.size() > 1)
        power.number = number_within(words[1], times, 0, complaints);
    power.on = words.empty() || words[0].text != "off";
    if (words.empty() || (power.on && words[0].text != "on"))
        complaints.push_back({1, "neither on nor off, taken for on"});
    return power;
}

Detect read_detect(const std::string& text, Complaints& complaints) {
    const std::vector<Word> words = words_of(text);
    const std::string level = words.empty() ? "" : words[0].text;
    const std::string who = words.size() > 1 ? words[1].text : "general";
    const bool forced = level == "low" || level == "high";
    if ((forced || level == "auto") && (who == "general" || who == "sim"))
        return {forced, level == "high", who == "sim"};
    complaints.push_back(
        {1,
         "'" + text + "' can't be used (auto, or low or high and general or sim), taken for auto"});
    return {};
}

HotSwap read_hotswap(const std::string& text, Complaints& complaints) {
    const std::vector<Word> words = words_of(text);
    if (words.size() == 1 && words[0].text == "stop")
        return {};
    if (words.size() != 4) {
        complaints.push_back({1, "neither stop nor four numbers (seconds in, seconds out, count, "
                                 "since when in milliseconds), taken for stop"});
        return {};
    }
    const auto number = [&](size_t i, Range range) {
        return number_within(words[i], range, 0, complaints);
    };
    HotSwap test{true, 0, 0, 0, 0};
    test.after_push = number(0, u32) * 1000;
    test.after_pull = number(1, u32) * 1000;
    test.count = number(2, u32);
    test.since = number(3, times);
    return test;
}

std::vector<Profile> read_profiles(const std::string& text, Complaints& complaints) {
    std::vector<Profile> profiles;
    for_each_line(text, [&](const std::string& line, int number) {
        std::istringstream words(line);
        std::string iccid, kind;
        if (!(words >> iccid))
            return;
        words >> kind;
        if (kind != "test" && kind != "operational")
            complaints.push_back({number, "'" + kind +
                                              "' is neither operational nor test, taken "
                                              "for operational"});
        profiles.push_back({line, kind == "test"});
    });
    return profiles;
}

std::vector<OpenChannel> read_channels(const std::string& text, Complaints& complaints) {
    const std::vector<Word> words = words_of(text);
    if (words.size() % 2 != 0)
        complaints.push_back(
            {words.back().line, "a channel without the restarts when it was opened"});
    std::vector<OpenChannel> channels;
    for (size_t i = 0; i + 1 < words.size(); i += 2) {
        const int64_t channel = number_within(words[i], {1, 19}, 0, complaints);
        if (channel != 0)
            channels.push_back({channel, number_within(words[i + 1], u32, 0, complaints)});
    }
    return channels;
}

} // namespace phone_files
