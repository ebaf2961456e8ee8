// SPDX-License-Identifier: Apache-2.0
/* The command set's one list, from which help, man page and completions come, against what the
 * groups really run. */
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "handlers.h"
#include "help.h"
#include "phone_test.h"
#include "stats_commands.h"

namespace {

struct Group {
    int number;
    int (*handler)(int argc, char** argv);
    const char* refusal;                /* of a sub-command that is none */
    std::vector<std::string> arguments; /* what the group wants before it looks at the number */
};

void PrintTo(const Group& group, std::ostream* out) { *out << "group " << group.number; }

class CommandSet : public PhoneTest, public testing::WithParamInterface<Group> {};

TEST_P(CommandSet, HelpListsExactlyTheNumbersThatRun) {
    put("prop/persist.radio.ssr_wait_s", "0");
    put("restart_ms", "0");
    const Group& group = GetParam();
    std::set<int> listed, run;
    for (const help_row& row : help_rows())
        if (row.group == group.number && row.kind == help_row::command)
            listed.insert(row.sub);
    for (int sub = -1; sub <= 40; ++sub) {
        std::vector<std::string> words = {"kvt", std::to_string(group.number), std::to_string(sub)};
        words.insert(words.end(), group.arguments.begin(), group.arguments.end());
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        const std::string text =
            printed([&] { group.handler(static_cast<int>(words.size()), argv.data()); });
        if (text.find(group.refusal) == std::string::npos)
            run.insert(sub);
    }
    EXPECT_EQ(run, listed);
    EXPECT_FALSE(listed.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Groups, CommandSet,
    testing::Values(Group{3, orvik_test_rf_do, "the second parameters is invalid", {}},
                    Group{4, orvik_test_nvefs_do, "the second parameters is invalid", {}},
                    Group{5, orvik_test_cmn_do, "the second parameters is invalid", {}},
                    Group{7, orvik_test_modem_stats_do, "invalid type = ", {"0"}},
                    Group{9, orvik_test_qmi_modem_stats_do, "Unknown opt(", {"0"}},
                    Group{11, orvik_smart_test_do, "invalid par_i = ", {}}));

} // namespace
