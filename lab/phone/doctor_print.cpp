// SPDX-License-Identifier: Apache-2.0
/* The report as a table for a person. */
#include "doctor.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace doctor {

namespace {

constexpr int group_by_sub_command = 5;

/* Names of the checks that cost the command. */
std::string reasons(const Report& report, const CommandNeeds& command) {
    std::string result;
    for (const Check& check : report.checks)
        if ((check.lost & (command.needs | need_start)) != 0)
            result += (result.empty() ? "" : ", ") + check.name;
    return result;
}

void print_line(const Report& report, const char* words, const char* title,
                const CommandNeeds& command) {
    const bool can = can_work(report, command);
    std::printf("%-7s %-8s%s%s%s\n", can ? "can" : "cannot", words, title, can ? "" : "; see ",
                can ? "" : reasons(report, command).c_str());
}

const char* group_title(int number) {
    for (const GroupTitle& group : group_titles)
        if (group.number == number)
            return group.title;
    return "";
}

/* A group whose commands all need the same is one line. */
void print_group(const Report& report, const CommandNeeds* first, const CommandNeeds* end) {
    const int group = std::atoi(first->words);
    bool same = group != group_by_sub_command;
    for (const CommandNeeds* row = first; row != end; ++row)
        same &= row->needs == first->needs;
    if (same && end - first > 1) {
        print_line(report, std::to_string(group).c_str(), group_title(group), *first);
        return;
    }
    for (; first != end; ++first)
        print_line(report, first->words, first->title, *first);
}

} // namespace

void print_text(const Report& report) {
    static constexpr const char* marks[] = {"ok", "BAD", "note"};
    std::puts("What is here");
    for (const Check& check : report.checks) {
        std::printf("%-7s %s: %s", marks[check.state], check.name.c_str(), check.found.c_str());
        if (check.state == Check::bad)
            std::printf("; lost: %s", lost_commands(check).c_str());
        std::puts("");
        if (!check.remedy.empty())
            std::printf("%-7s   %s\n", "", check.remedy.c_str());
    }
    std::puts("What can work");
    for (const CommandNeeds* first = command_needs; first != std::end(command_needs);) {
        const CommandNeeds* const end = group_end(first);
        print_group(report, first, end);
        first = end;
    }
}

} // namespace doctor
