// SPDX-License-Identifier: Apache-2.0
/* docs/commands.md: what stands at the head of each command's section. */
#include <set>

#include "pages.h"
#include "phrases.h"

namespace lab {

namespace {

constexpr std::string_view mark = "<!-- kvt ";
constexpr std::string_view mark_end = " -->\n";
constexpr std::string_view end = "<!-- end -->\n";

/* Within a table's cell. */
std::string cell(std::string_view text) {
    std::string result;
    for (const char c : text)
        if (c == '|')
            result += "\\|";
        else if (c == '<')
            result += "&lt;";
        else
            result += c;
    return result;
}

std::string line(const std::string& head, const std::string& text) {
    return "| " + head + " | " + cell(text) + " |\n";
}

bool same_values(const Command& one, const Command& other) {
    return std::equal(one.values.begin(), one.values.end(), other.values.begin(),
                      other.values.end(), [](const Value& a, const Value& b) {
                          return a.name == b.name && a.meaning == b.meaning && a.unit == b.unit;
                      });
}

/* An earlier row that tells the same many values; null when there is none. */
const Command* told_before(const Command& row) {
    constexpr size_t many = 5;
    for (const Command& other : catalogue()) {
        if (&other == &row || row.values.size() < many)
            return nullptr;
        if (same_values(row, other))
            return &other;
    }
    return nullptr;
}

std::string names_text(std::span<const Name> names) {
    std::string text;
    for (const Name& name : names)
        text += (text.empty() ? ": " : ", ") + std::to_string(name.number) + " " +
                std::string(name.text);
    return text;
}

std::string values_lines(const Command& row) {
    if (const Command* const other = told_before(row))
        return line("tells", "the values of `kvt " + std::string(other->words) + "`");
    std::string text;
    for (const Value& value : row.values)
        text += line("tells `" + std::string(value.name) + "`",
                     std::string(value.meaning) + names_text(value.names) +
                         (value.unit.empty() ? "" : "; in " + std::string(value.unit)));
    return text;
}

std::string needs_text(const Command& row) {
    std::string text;
    for (const std::string_view need : row.needs)
        text += (text.empty() ? "" : ", ") + std::string(need);
    return text.empty() ? "nothing of the phone" : text;
}

std::string head(const Command& row) {
    std::string text = "### `" + usage_phrase(row) + "`: " + std::string(row.title) + "\n\n" +
                       std::string(row.does) +
                       (row.in_help ? "" : " (kvt's own help leaves it out.)") +
                       "\n\n| | |\n|---|---|\n";
    for (const Argument& argument : row.arguments)
        text += line("`" + std::string(argument.name) + "`", argument_text(argument));
    text += values_lines(row) + line("effect", effect_phrase(row));
    if (!row.danger.empty())
        text += line("**danger**", std::string(row.danger));
    if (row.effect != Effect::none)
        text += line("undo", undo_phrase(row)) + line("verify", verify_phrase(row));
    if (!row.leaves.empty())
        text += line("ended midway", std::string(row.leaves));
    return text + line("time", time_phrase(row)) + line("needs", needs_text(row)) + "\n";
}

} // namespace

bool fill_command_heads(std::string& text, std::string& error) {
    std::string filled;
    std::set<std::string_view> seen;
    size_t at = 0;
    for (size_t open; (open = text.find(mark, at)) != std::string::npos;) {
        const size_t words_at = open + mark.size();
        const size_t words_end = text.find(mark_end, words_at);
        const size_t close = text.find(end, words_at);
        if (words_end == std::string::npos || close == std::string::npos || close < words_end) {
            error = "a mark is not closed: " + text.substr(open, 40);
            return false;
        }
        const std::vector<std::string> words =
            words_of(std::string_view(text).substr(words_at, words_end - words_at));
        size_t count;
        const Command* const row = find_command(catalogue(), words, count);
        if (row == nullptr || count != words.size() || !seen.insert(row->words).second) {
            error = "no such command, or twice: " + text.substr(open, words_end - open);
            return false;
        }
        const size_t body = words_end + mark_end.size();
        filled += text.substr(at, body - at) + head(*row) + std::string(end);
        at = close + end.size();
    }
    for (const Command& row : catalogue())
        if (seen.count(row.words) == 0) {
            error = "there is no \"" + std::string(mark) + std::string(row.words) + " -->\"";
            return false;
        }
    text = filled + text.substr(at);
    return true;
}

} // namespace lab
