// SPDX-License-Identifier: Apache-2.0
/* kvt-lab phone show, set and fault: the phone's files by people's names. */
#include "workbench/phone.h"

#include <algorithm>
#include <cstdio>

#include "workbench/directory.h"
#include "workbench/named_settings.h"
#include "workbench/rules.h"

namespace lab::workbench {

namespace {

constexpr const char* fault_file = "faults";

/* Name, unit, range and meaning in columns. */
int list_names() {
    const std::vector<Name> names = all_names();
    size_t name_width = 0, range_width = 0;
    for (const Name& name : names) {
        name_width = std::max(name_width, name.name.size());
        range_width = std::max(range_width, name.range.size());
    }
    for (const Name& name : names)
        std::printf("%-*s  %-5s  %-*s  %s\n", static_cast<int>(name_width), name.name.c_str(),
                    name.unit.c_str(), static_cast<int>(range_width), name.range.c_str(),
                    name.meaning.c_str());
    return std::fflush(stdout) == 0 ? 0 : 1;
}

} // namespace

int refuse(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return 2;
}

int show_phone(const Options& options) {
    std::error_code failed;
    if (!std::filesystem::is_directory(phone_directory(), failed))
        return refuse("there is no phone " + phone_directory().string() +
                      "; kvt-lab phone new makes one");
    if (options.words.empty())
        std::printf("phone %s\n", phone_directory().c_str());
    const std::vector<std::string> lines = current_values(options.words);
    if (lines.empty() && !options.words.empty())
        return refuse("no name like that has a value; kvt-lab phone set --list shows the names");
    for (const std::string& line : lines)
        std::printf("%s\n", line.c_str());
    if (options.words.empty())
        if (const auto rules = setting_text(fault_file); rules && !rules->empty())
            std::printf("faults:\n%s\n", rules->c_str());
    return std::fflush(stdout) == 0 ? 0 : 1;
}

int set(const Options& options) {
    if (options.list)
        return list_names();
    if (options.words.size() < 2)
        return refuse("set takes a name and a value; kvt-lab phone set --list shows the names");
    std::string error;
    const std::vector<std::string> values(options.words.begin() + 1, options.words.end());
    return seed_phone(error) && set_name(options.words[0], values, options.sub, error)
               ? 0
               : refuse(error);
}

int fault(const Options& options) {
    std::string text = options.clear ? "" : read_phone_file(fault_file).value_or("");
    if (!options.clear && options.words.empty()) {
        std::fputs(text.c_str(), stdout);
        return std::fflush(stdout) == 0 ? 0 : 1;
    }
    if (!text.empty() && text.back() != '\n')
        text += '\n';
    /* A rule is one word with blanks in it, or all the words. */
    const bool whole =
        std::all_of(options.words.begin(), options.words.end(),
                    [](const auto& word) { return word.find(' ') != std::string::npos; });
    std::vector<std::string> rules = whole ? options.words : std::vector<std::string>{""};
    if (!whole)
        for (const std::string& word : options.words)
            rules[0] += (rules[0].empty() ? "" : " ") + word;
    for (const std::string& rule : rules) {
        if (const std::string wrong = wrong_with_rule(rule); !wrong.empty())
            return refuse(wrong);
        text += rule + "\n";
    }
    std::string error;
    return seed_phone(error) && write_phone_file(fault_file, text, error) ? 0 : refuse(error);
}

} // namespace lab::workbench
