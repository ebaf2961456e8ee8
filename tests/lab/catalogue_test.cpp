// SPDX-License-Identifier: Apache-2.0
/* The catalogue against the tool: its rows are the tool's commands, and what it looks for in their
 * output is what transcripts show. */
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <re2/re2.h>

#include "command_line.h"
#include "help.h"
#include "patterns.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

/* "GROUP SUB" of a row; "GROUP" where the group has no numbered commands. */
std::string number_of(std::string_view words) {
    const std::vector<std::string> list = lab::words_of(words);
    return list.size() < 2 ? list[0] : list[0] + " " + list[1];
}

/* The help lists exactly what dispatch runs: another test sees to that. */
TEST(Catalogue, has_a_row_for_every_command_and_no_other) {
    std::set<std::string> commands = {"10"}, rows;
    for (const help_row& row : help_rows())
        if (row.group >= 3 && row.kind == help_row::command)
            commands.insert(std::to_string(row.group) + " " + std::to_string(row.sub));
        else if (row.group >= 3 && row.kind == help_row::usage)
            commands.insert(std::to_string(row.group));
    std::vector<std::string> left_out, several;
    for (const lab::Command& row : lab::catalogue()) {
        rows.insert(number_of(row.words));
        if (!row.in_help)
            left_out.emplace_back(row.words);
        if (lab::words_of(row.words).size() > 2)
            several.emplace_back(row.words);
    }
    EXPECT_EQ(rows, commands);
    EXPECT_THAT(left_out, ElementsAre("5 10 3", "5 10 4", "5 10 5", "10"));
    EXPECT_THAT(several, ElementsAre("5 6 0", "5 6 1", "5 10 1", "5 10 2", "5 10 3", "5 10 4",
                                     "5 10 5", "7 1 0", "7 1 1"));
}

/* All transcripts, with a line number in place of the mask. */
std::string transcripts() {
    std::string all;
    for (const char* folder : {"tests/transcripts", "tests/lab/transcripts", "docs"})
        for (const fs::directory_entry& entry :
             fs::directory_iterator(fs::path(KVT_SOURCE_DIR) / folder)) {
            if (!entry.is_regular_file())
                continue;
            std::ifstream in(entry.path());
            all += std::string((std::istreambuf_iterator<char>(in)), {}) + "\n";
        }
    RE2::GlobalReplace(&all, R"(:#\])", ":1]");
    return all;
}

TEST(Catalogue, looks_for_nothing_that_no_transcript_shows) {
    const std::string text = transcripts();
    std::set<std::string> seen;
    for (const lab::Command& row : lab::catalogue()) {
        lab::CommandLine example;
        std::string error;
        ASSERT_TRUE(lab::read_command_line(lab::words_of(row.example), example, error)) << error;
        EXPECT_EQ(example.row, &row);
        const auto shown = [&](std::string_view pattern) {
            if (!pattern.empty() && seen.insert(std::string(pattern)).second) {
                EXPECT_TRUE(lab::find_pattern(lab::filled_pattern(pattern, example), text))
                    << row.words << ": " << pattern;
            }
        };
        for (const lab::Rule& rule : row.failed)
            shown(rule.find);
        for (const std::string_view pattern : row.ok)
            shown(pattern);
        for (const lab::Value& value : row.values)
            shown(value.find);
        for (const lab::Verify& verify : row.verify) {
            shown(verify.seen);
            shown(verify.unless);
            for (const std::string_view pattern : verify.ok)
                shown(pattern);
        }
        for (const lab::Undo& undo : row.undo) {
            shown(undo.seen);
            shown(undo.unless);
        }
    }
    EXPECT_GT(seen.size(), 100u);
}

} // namespace
