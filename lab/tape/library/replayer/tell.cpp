// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include <unistd.h>

#include "state.h"

namespace engine {

using namespace lab::tape;

namespace {

/* A part of a value that is too long to show, around the place that matters. */
std::string shown(const std::string& value, size_t place) {
    constexpr size_t before = 16, most = 64;
    if (value.size() <= most)
        return value;
    const size_t from = place > before ? place - before : 0;
    return (from > 0 ? "..." : "") + value.substr(from, most) +
           (from + most < value.size() ? "..." : "");
}

std::vector<std::string> fields_of(const std::string& inputs) {
    std::vector<std::string> fields;
    for (size_t from = 0; from < inputs.size();) {
        const size_t to = inputs.find(input_separator, from);
        fields.push_back(inputs.substr(from, to - from));
        from = to == std::string::npos ? inputs.size() : to + 1;
    }
    return fields;
}

} // namespace

void tell(const std::string& line) {
    std::string text = line;
    std::replace(text.begin(), text.end(), '\n', ' ');
    text += '\n';
    (void)!::write(g_state.report, text.data(), text.size());
}

void differs(const std::string& line) {
    if (g_state.differences++ == 0)
        tell("differs: " + line);
}

std::string call_text(const std::string& name, const std::string& inputs) {
    std::string text = name + "(";
    for (const std::string& field : fields_of(inputs))
        text += (text.back() == '(' ? "" : ", ") + shown(field, 0);
    return text + ")";
}

std::string difference(const ScriptEvent& event, const std::string& inputs) {
    const std::vector<std::string> then = fields_of(event.inputs), now = fields_of(inputs);
    const auto [a, b] = std::mismatch(then.begin(), then.end(), now.begin(), now.end());
    const std::string left = a != then.end() ? *a : "nothing more";
    const std::string right = b != now.end() ? *b : "nothing more";
    const auto place = static_cast<size_t>(
        std::mismatch(left.begin(), left.end(), right.begin(), right.end()).first - left.begin());
    std::string text = event.name;
    if (has_object(event.name) && !now.empty() && b != now.begin())
        text += " of " + now.front();
    return text + ": the tape (line " + std::to_string(event.line) + ") has " + shown(left, place) +
           ", the program gives " + shown(right, place);
}

std::string next_on_tape() {
    const ScriptEvent* next = nullptr;
    for (const auto& [name, events] : g_state.sequences)
        if (!events.empty() && g_state.event(events.front()).kind == ScriptKind::call &&
            (next == nullptr || g_state.event(events.front()).line < next->line))
            next = &g_state.event(events.front());
    if (next == nullptr)
        return "the tape has no call any more";
    return "the tape (line " + std::to_string(next->line) + ") has " +
           call_text(next->name, next->inputs) + " next";
}

} // namespace engine
