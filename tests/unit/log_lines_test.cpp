// SPDX-License-Identifier: Apache-2.0
#include "log_lines.h"

#include <cerrno>
#include <string>

#include "phone_test.h"
#include "ravex_log.h"

namespace {

class LogLinesTest : public PhoneTest {
  protected:
    ~LogLinesTest() override { g_orvik_stdout_print_flag = 1; }
};

void logging_function() {
    ORVIK_FUNCTION_SCOPE();
    ORVIK_DBG("value %d", 7);
    ORVIK_ERR("broken %s", "thing");
}

TEST_F(LogLinesTest, WithBothFlagsOffOnlyErrorsAppear) {
    for (const char* const off : {"0", "11", "1 ", " 1", "true"}) {
        put("prop/persist.vendor.radio.adb_log_ov", off);
        put("log", "");
        in_own_process([] {
            g_orvik_stdout_print_flag = 0;
            EXPECT_THAT(printed(logging_function),
                        testing::MatchesRegex("RIL.logging_function:[0-9]+.: broken thing\n"));
        });
        EXPECT_EQ(logged({"syslog 7 rild print is stoped"}), 1) << off;
        EXPECT_EQ(logged({"syslog 7 SUB"}), 0);
        EXPECT_EQ(logged({"syslog 3 SUB"}), 1);
    }
}

TEST_F(LogLinesTest, BothFormsNameFunctionAndFile) {
    const std::string text = printed(logging_function);
    EXPECT_THAT(text, testing::MatchesRegex(
                          "RIL.logging_function:[0-9]+.: function entry ------------->\n"
                          "RIL.logging_function:[0-9]+.: value 7\n"
                          "RIL.logging_function:[0-9]+.: broken thing\n"
                          "RIL.logging_function:[0-9]+.: function exit <-------------\n"));
    EXPECT_EQ(logged({"syslog 7 SUB[shell][log_lines_test.cpp:", "] logging_function: value 7"}),
              1);
    EXPECT_EQ(logged({"syslog 3 SUB[shell][log_lines_test.cpp:", "] logging_function: broken"}), 1);
    EXPECT_EQ(logged({"syslog 7 rild print is started"}), 1);
    EXPECT_EQ(logged({"call property_get:persist.vendor.radio.adb_log_ov"}), 1);
}

TEST_F(LogLinesTest, ALineLeavesErrnoAndTakesItsArgumentsOnce) {
    int calls = 0;
    printed([&] {
        errno = ENOTTY;
        ORVIK_DBG("call %d", ++calls);
        ORVIK_ERR("call %d", ++calls);
        EXPECT_EQ(errno, ENOTTY);
    });
    EXPECT_EQ(calls, 2);
}

TEST_F(LogLinesTest, FrameworkLogMapsLevelsAndCutsLines) {
    for (const int level : {2, 16, 3, 4, 5, 7})
        ravex_log_msg_to_adb(level, ("level" + std::to_string(level)).c_str());
    EXPECT_EQ(logged({"android 4 RAVEX level2"}), 1);
    EXPECT_EQ(logged({"android 4 RAVEX level16"}), 1);
    EXPECT_EQ(logged({"android 3 RAVEX level3"}), 1);
    EXPECT_EQ(logged({"android 6 RAVEX level4"}), 1);
    EXPECT_EQ(logged({"android 6 RAVEX level5"}), 1);
    EXPECT_EQ(logged({"level7"}), 0);

    RAVEX_LOG("%s!", std::string(600, 'x').c_str());
    EXPECT_EQ(logged({"RAVEX TestBody: " + std::string(511 - 10, 'x')}), 1);
    EXPECT_EQ(logged({std::string(502, 'x')}), 0);
}

TEST_F(LogLinesTest, FrameworkFormatRefusesNoBufferAndTruncates) {
    char out[4] = "...";
    EXPECT_EQ(ravex_log_format_log_msg(nullptr, 4, "%d", 1), 0);
    ravex_log_format_log_msg(out, 0, "%d", 1);
    EXPECT_STREQ(out, "...");
    EXPECT_EQ(ravex_log_format_log_msg(out, 4, "%d", 12345), 5);
    EXPECT_STREQ(out, "123");
}

} // namespace
