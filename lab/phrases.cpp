// SPDX-License-Identifier: Apache-2.0
#include "phrases.h"

#include <cstdio>

namespace lab {

namespace {

std::string names_phrase(std::span<const Name> names) {
    std::string text;
    for (const Name& name : names)
        text +=
            (text.empty() ? "" : ", ") + std::to_string(name.number) + " " + std::string(name.text);
    return text;
}

/* "4 1 {sub} {nv_id}" as a person reads it. */
std::string command_phrase(std::string_view form) {
    std::string text = "kvt ";
    for (const std::string& word : words_of(form)) {
        if (text.size() > 4)
            text += ' ';
        constexpr std::string_view before = "{before.";
        if (word.rfind(before, 0) == 0)
            text += "(" + word.substr(before.size(), word.size() - before.size() - 1) + " before)";
        else if (word.front() == '{' && word.back() == '}')
            text += word.substr(1, word.size() - 2);
        else
            text += word;
    }
    return text;
}

std::string seconds(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g s", value);
    return text;
}

} // namespace

std::string usage_phrase(const Command& row) {
    std::string text = "kvt " + std::string(row.words);
    for (const Argument& argument : row.arguments) {
        const std::string name(argument.name);
        const std::string shown = name + (argument.most > 1 ? "..." : "");
        text += argument.optional ? " [" + shown + "]" : " " + shown;
    }
    return text;
}

std::string range_phrase(const Argument& argument) {
    if (!argument.names.empty())
        return names_phrase(argument.names);
    std::string text;
    if (argument.has_range)
        text = std::to_string(argument.min) + " to " + std::to_string(argument.max);
    if (argument.kind != ArgumentKind::integer)
        return text.empty() ? "" : text + " characters";
    return text + (text.empty() ? "" : ", ") +
           (argument.hex ? "decimal or hexadecimal (0x...)" : "decimal only");
}

std::string effect_phrase(const Command& row) {
    const std::string text = row.effect == Effect::none ? "none"
                             : row.effect == Effect::until_restart
                                 ? "until the modem's next restart"
                                 : "kept";
    return text + (row.reboot ? "; needs a reboot of the phone" : "");
}

std::string verify_phrase(const Command& row) {
    std::string text;
    for (const Verify& verify : row.verify) {
        const std::string run = command_phrase(verify.run) +
                                (verify.also.empty() ? "" : " and " + command_phrase(verify.also));
        if (text.find(run) == std::string::npos)
            text += (text.empty() ? "" : ", or ") + run;
    }
    return text.empty() ? "nothing tells" : text;
}

std::string undo_phrase(const Command& row) {
    std::string text, read;
    for (const Undo& undo : row.undo) {
        text += (text.empty() ? "" : ", or ") + command_phrase(undo.run);
        if (!undo.read.empty())
            read = command_phrase(undo.read);
    }
    if (text.empty())
        return "none";
    return text + (read.empty() ? "" : "; it depends on what " + read + " shows before");
}

std::string time_phrase(const Command& row) {
    return seconds(row.ordinary_s) + ", at most " + seconds(row.longest_s) +
           (row.adds_ms.empty() ? "" : " and " + std::string(row.adds_ms) + " on top");
}

} // namespace lab
