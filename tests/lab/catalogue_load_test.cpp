// SPDX-License-Identifier: Apache-2.0
/* The catalogue's reader: what is wrong with a row stops the build, with its line. */
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalogue_load.h"

namespace {

using testing::ElementsAre;

const std::string group = "[[group]]\nnumber = 4\ntitle = \"t\"\nabout = \"a\"\n";
const std::string row =
    "[[command]]\nwords = \"4 1\"\ntitle = \"t\"\ndoes = \"d\"\nexample = \"4 1 0\"\n"
    "effect = \"none\"\ndanger = \"\"\nordinary_s = 1\nlongest_s = 2\n";
const std::string verdict = "[command.verdict]\nok = ['^a$']\n";

std::vector<std::string> errors(const std::string& text) {
    return lab::load_catalogue(text, "c.toml").errors;
}

TEST(CatalogueLoad, tells_each_mistake_with_its_line) {
    EXPECT_THAT(errors(group + row + verdict), ElementsAre());
    EXPECT_THAT(errors(group + row + "bogus = 1\n" + verdict),
                ElementsAre("c.toml:14: 4 1: unknown key \"bogus\""));
    EXPECT_THAT(errors(group + row), ElementsAre("c.toml:5: 4 1: \"verdict\" is missing"));
    EXPECT_THAT(errors(group + row + "reboot = \"yes\"\n" + verdict),
                ElementsAre("c.toml:14: 4 1: \"reboot\" must be true or false"));
    EXPECT_THAT(
        errors(group + row + "[command.verdict]\nfailed = ['a(']\n"),
        ElementsAre(testing::StartsWith("c.toml:15: 4 1: verdict: \"failed\": bad regular")));
    EXPECT_THAT(
        errors(group + row + "[command.verdict]\nfailed = [{ find = 'a', why = '\\1' }]\n"),
        ElementsAre("c.toml:15: 4 1: verdict: \"failed\": the regular expression has no group"));
    EXPECT_THAT(errors(group + row + "[command.verdict]\nuse = [\"none\"]\n"),
                ElementsAre("c.toml:14: 4 1: verdict: there is no list [rules.none]"));
    EXPECT_THAT(errors(group + row + verdict + "[[command.undo]]\nrun = \"4 9 {x}\"\n"),
                ElementsAre("c.toml:5: 4 1: undo names no row: \"4 9 {x}\"",
                            "c.toml:16: 4 1: undo: \"x\" is no argument"));
    EXPECT_THAT(errors(group + row + verdict + row + verdict),
                ElementsAre("c.toml:16: a second row for \"4 1\""));
    EXPECT_THAT(errors("a = = 1\n"), testing::SizeIs(1));
}

} // namespace
