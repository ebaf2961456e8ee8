// SPDX-License-Identifier: Apache-2.0
/* kvt-lab describe: the catalogue as a person reads it. */
#include <algorithm>
#include <cstdio>

#include "command_line.h"
#include "phrases.h"
#include "verbs.h"

namespace lab {

namespace {

constexpr size_t width = 88;

void print_line(const char* head, const std::string& text) {
    constexpr int indent = 14;
    std::string line;
    bool first = true;
    const auto put = [&] {
        std::printf("  %-*s%s\n", indent - 2, first ? head : "", line.c_str());
        first = false;
        line.clear();
    };
    for (const std::string& word : words_of(text)) {
        if (!line.empty() && indent + line.size() + 1 + word.size() > width)
            put();
        line += (line.empty() ? "" : " ") + word;
    }
    put();
}

std::string joined(Texts texts) {
    std::string all;
    for (const std::string_view text : texts)
        all += (all.empty() ? "" : ", ") + std::string(text);
    return all;
}

std::string in_parentheses(const std::string& text) {
    return text.empty() ? "" : " (" + text + ")";
}

void describe_row(const Command& row) {
    std::printf("%s: %s%s\n", usage_phrase(row).c_str(), std::string(row.title).c_str(),
                row.in_help ? "" : " (not in kvt's help)");
    print_line("", std::string(row.does));
    for (const Argument& argument : row.arguments)
        print_line(
            "takes",
            std::string(argument.name) + ": " + std::string(argument.meaning) +
                in_parentheses(range_phrase(argument)) +
                (argument.outside.empty() ? "" : "; outside: " + std::string(argument.outside)));
    for (const Value& value : row.values)
        print_line("tells", std::string(value.name) + ": " + std::string(value.meaning) +
                                in_parentheses(std::string(value.unit)));
    print_line("effect", effect_phrase(row));
    if (!row.danger.empty())
        print_line("danger", std::string(row.danger));
    print_line("undo", undo_phrase(row));
    print_line("verify", verify_phrase(row));
    if (!row.leaves.empty())
        print_line("when ended", std::string(row.leaves));
    print_line("time", time_phrase(row));
    print_line("needs", row.needs.empty() ? "nothing of the phone" : joined(row.needs));
}

/* True when one line's words begin the other's. */
bool related(const std::vector<std::string>& one, const std::vector<std::string>& other) {
    return std::equal(one.begin(),
                      one.begin() + static_cast<long>(std::min(one.size(), other.size())),
                      other.begin());
}

} // namespace

int describe(const Common&, const DescribeOptions& options) {
    bool found = false;
    for (const Command& row : catalogue()) {
        if (!related(words_of(row.words), options.words))
            continue;
        if (options.words.empty()) {
            std::printf("%-8s%s\n", std::string(row.words).c_str(), std::string(row.title).c_str());
        } else {
            if (found)
                std::puts("");
            describe_row(row);
        }
        found = true;
    }
    CommandLine line;
    std::string error;
    if (!found && !read_command_line(options.words, line, error))
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
    return found ? 0 : 2;
}

} // namespace lab
