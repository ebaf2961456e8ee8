// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>

#include "patterns.h"

namespace lab {

std::string CommandLine::text() const {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

bool read_number(const std::string& text, bool hex, bool& negative, unsigned long long& magnitude) {
    const char* start = text.data();
    const char* const end = start + text.size();
    negative = start != end && *start == '-';
    start += negative ? 1 : 0;
    const bool is_hex = hex && end - start > 2 && *start == '0' && (start[1] | 0x20) == 'x';
    if (is_hex)
        start += 2;
    /* Where kvt reads hexadecimal, a leading zero may mean octal to it, or not. */
    if (hex && !is_hex && end - start > 1 && *start == '0')
        return false;
    const auto [stopped, error] = std::from_chars(start, end, magnitude, is_hex ? 16 : 10);
    return error == std::errc() && stopped == end;
}

namespace {

std::string quoted(const std::string& word) { return "\"" + word + "\""; }

bool in_range(const Argument& argument, bool negative, unsigned long long magnitude) {
    if (!argument.names.empty())
        return std::any_of(argument.names.begin(), argument.names.end(), [&](const Name& name) {
            return !negative && name.number >= 0 &&
                   static_cast<unsigned long long>(name.number) == magnitude;
        });
    if (!argument.has_range)
        return true;
    if (magnitude > INT64_MAX)
        return false;
    const auto value = static_cast<long long>(magnitude);
    return (negative ? -value : value) >= argument.min &&
           (negative ? -value : value) <= argument.max;
}

std::string range_text(const Argument& argument) {
    if (argument.names.empty())
        return std::to_string(argument.min) + " to " + std::to_string(argument.max);
    std::string text;
    for (const Name& name : argument.names)
        text +=
            (text.empty() ? "" : ", ") + std::to_string(name.number) + " " + std::string(name.text);
    return text;
}

/* "" when the word is right for the argument. */
std::string trouble_with(const Argument& argument, const std::string& word) {
    const std::string name(argument.name);
    if (argument.kind == ArgumentKind::integer) {
        bool negative;
        unsigned long long magnitude;
        if (!read_number(word, argument.hex, negative, magnitude))
            return name + " must be a number, " +
                   (argument.hex ? "decimal without leading zeros or hexadecimal"
                                 : "decimal only") +
                   ": " + quoted(word);
        if (!in_range(argument, negative, magnitude))
            return name + " must be " + range_text(argument) + ": " + quoted(word);
        return "";
    }
    if (argument.kind == ArgumentKind::path && (word.empty() || word[0] != '/'))
        return name + " must begin with a slash: " + quoted(word);
    const auto length = static_cast<long long>(word.size());
    if (argument.has_range && (length < argument.min || length > argument.max))
        return name + " must be " + std::to_string(argument.min) + " to " +
               std::to_string(argument.max) + " characters long";
    return "";
}

} // namespace

bool read_command_line(const std::vector<std::string>& words, CommandLine& line,
                       std::string& error) {
    line = {};
    line.words = words;
    size_t next;
    line.row = find_command(catalogue(), words, next);
    if (line.row == nullptr) {
        const bool glued = std::any_of(words.begin(), words.end(), [](const std::string& word) {
            return word.find(' ') != std::string::npos;
        });
        error = words.empty()       ? "a command is missing"
                : words[0] == "kvt" ? "a command is meant without the word kvt"
                : glued ? "a command's words are arguments of their own: " + quoted(line.text())
                        : "kvt has no command " + quoted(line.text());
        error += "; kvt-lab describe shows them";
        return false;
    }
    for (const Argument& argument : line.row->arguments) {
        const size_t taken = std::min(argument.most, words.size() - next);
        if (taken == 0 && !argument.optional) {
            error =
                std::string(argument.name) + " is missing (" + std::string(argument.meaning) + ")";
            return false;
        }
        std::vector<std::string>& values = line.values[argument.name];
        values.assign(words.begin() + static_cast<long>(next),
                      words.begin() + static_cast<long>(next + taken));
        next += taken;
        for (const std::string& value : values)
            if (error = trouble_with(argument, value); !error.empty())
                return false;
    }
    if (next < words.size()) {
        error = "there is no argument for " + quoted(words[next]);
        return false;
    }
    return true;
}

namespace {

/* A number as bytes are shown: " XX" each, the lowest first. */
std::string shown_bytes(const std::string& word, int size) {
    bool negative;
    unsigned long long bits = 0;
    read_number(word, true, negative, bits);
    if (negative)
        bits = 0 - bits;
    std::string text;
    for (int i = 0; i < size; ++i) {
        char byte[4];
        std::snprintf(byte, sizeof byte, " %02X", static_cast<unsigned>(bits >> (8 * i)) & 0xFF);
        text += byte;
    }
    return text;
}

/* Calls plain(TEXT) for what stands between holes and hole(NAME, FORM) for each "{NAME:FORM}". */
template <typename Plain, typename Hole>
void for_each_part(std::string_view form, Plain plain, Hole hole) {
    size_t at = 0;
    for (size_t open; (open = form.find('{', at)) != std::string_view::npos;) {
        const size_t close = form.find('}', open);
        const bool named =
            close != std::string_view::npos && open + 1 < form.size() &&
            ((form[open + 1] >= 'a' && form[open + 1] <= 'z') || form[open + 1] == '_');
        if (!named) { /* a repetition of a pattern */
            plain(form.substr(at, open + 1 - at));
            at = open + 1;
            continue;
        }
        plain(form.substr(at, open - at));
        const std::string_view inside = form.substr(open + 1, close - open - 1);
        const size_t colon = std::min(inside.find(':'), inside.size());
        hole(inside.substr(0, colon),
             colon < inside.size() ? inside.substr(colon + 1) : std::string_view());
        at = close + 1;
    }
    plain(form.substr(at));
}

const std::vector<std::string>& values_of(std::string_view name, const CommandLine& line,
                                          const ShownWords& before) {
    static const std::vector<std::string> none;
    constexpr std::string_view shown = "before.";
    if (name.substr(0, shown.size()) == shown) {
        const auto found = before.find(std::string(name.substr(shown.size())));
        return found == before.end() ? none : found->second;
    }
    const auto found = line.values.find(name);
    return found == line.values.end() ? none : found->second;
}

} // namespace

std::vector<std::string> filled_words(std::string_view form, const CommandLine& line,
                                      const ShownWords& before) {
    std::vector<std::string> words;
    for (const std::string& part : words_of(form)) {
        std::string word;
        std::vector<std::string> several;
        for_each_part(
            part, [&](std::string_view text) { word += text; },
            [&](std::string_view name, std::string_view) {
                const std::vector<std::string>& values = values_of(name, line, before);
                several.insert(several.end(), values.begin(), values.end());
            });
        if (!several.empty())
            words.insert(words.end(), several.begin(), several.end());
        else if (!word.empty())
            words.push_back(word);
    }
    return words;
}

std::string filled_pattern(std::string_view form, const CommandLine& line) {
    std::string pattern;
    for_each_part(
        form, [&](std::string_view text) { pattern += text; },
        [&](std::string_view name, std::string_view as) {
            const std::vector<std::string>& values = values_of(name, line, {});
            if (as == "count") {
                pattern += shown_bytes(std::to_string(values.size()), 4);
                return;
            }
            if (as == "first") {
                pattern += values.empty() ? "" : "0x" + shown_bytes(values[0], 1).substr(1);
                return;
            }
            const int size = as == "u8" ? 1 : as == "u32" ? 4 : as == "u64" ? 8 : 0;
            for (const std::string& value : values)
                pattern += size == 0 ? literal_pattern(value) : shown_bytes(value, size);
        });
    return pattern;
}

} // namespace lab
