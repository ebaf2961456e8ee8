// SPDX-License-Identifier: Apache-2.0
#include "workbench/rules.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>

#include <fnmatch.h>

#include "phone_files.h"

namespace lab::workbench {

using phone_files::Action;
using phone_files::Takes;

namespace {

/* False when no call can ever match. A pattern without ":" may match across call and object. */
bool can_match(const std::string& pattern) {
    const size_t colon = pattern.find(':');
    if (colon == std::string::npos && pattern.find_first_of("*?[") != std::string::npos)
        return true;
    const std::string call = pattern.substr(0, colon);
    return std::any_of(std::begin(phone_files::calls), std::end(phone_files::calls),
                       [&](const char* name) { return ::fnmatch(call.c_str(), name, 0) == 0; });
}

bool right_when(const std::string& when) {
    const bool share = when.rfind("*/", 0) == 0;
    return when == "*" || whole_number(share ? when.substr(2) : when).value_or(0) > 0;
}

std::string action_names() {
    std::string text;
    for (const Action& action : phone_files::actions)
        text += std::string(text.empty() ? "" : " ") + action.name;
    return text;
}

std::string wrong_with_argument(const Action& action, const std::string& argument) {
    const std::optional<long long> number = whole_number(argument);
    switch (action.takes) {
    case Takes::nothing:
        return argument.empty() ? "" : std::string(action.name) + " takes no argument";
    case Takes::result:
        return argument.empty() || (number && *number >= INT32_MIN && *number <= INT32_MAX)
                   ? ""
                   : "'" + argument + "' is no result: error takes a number, or nothing";
    case Takes::milliseconds:
        return number && *number >= 0 && *number <= phone_files::hour_ms
                   ? ""
                   : "late takes milliseconds, 0 to " + std::to_string(phone_files::hour_ms);
    case Takes::answer:
        return "";
    }
    return "";
}

} // namespace

std::optional<long long> whole_number(const std::string& text) {
    const bool minus = text.rfind('-', 0) == 0;
    const size_t start = minus ? 1 : 0;
    const bool hex = text.compare(start, 2, "0x") == 0 || text.compare(start, 2, "0X") == 0;
    const std::string digits = (minus ? "-" : "") + text.substr(start + (hex ? 2 : 0));
    long long number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, hex ? 16 : 10);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::string wrong_with_rule(const std::string& line) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string pattern, when, name, argument;
    if (!(words >> pattern))
        return "";
    if (!(words >> when >> name))
        return "'" + line + "' is no rule: CALL[:OBJECT] WHEN ACTION [ARGUMENT]";
    std::getline(words >> std::ws, argument);
    argument.erase(argument.find_last_not_of(" \t\r") + 1);
    if (!right_when(when))
        return "'" + when + "' is no call's number: * for each, the number, from 1, or */N";
    const Action* const action =
        std::find_if(std::begin(phone_files::actions), std::end(phone_files::actions),
                     [&](const Action& row) { return name == row.name; });
    if (action == std::end(phone_files::actions))
        return "'" + name + "' is no action; one of: " + action_names();
    if (!can_match(pattern))
        return "no call is named '" + pattern + "'; the log's lines \"call\" show their names";
    return wrong_with_argument(*action, argument);
}

} // namespace lab::workbench
