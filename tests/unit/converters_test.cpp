// SPDX-License-Identifier: Apache-2.0
#include "converters.h"

#include <string>

#include "log_lines.h"
#include "phone_test.h"

namespace {

TEST(Converters, DecimalOrHexadecimalByPrefix) {
    EXPECT_EQ(orvik_string_to_int("0X1f"), 31);
    EXPECT_EQ(orvik_string_to_int("0xABCDEF"), 0xABCDEF);
    EXPECT_EQ(orvik_string_to_int("0x"), 0);
    EXPECT_EQ(orvik_string_to_int("0x1g"), 16);
    EXPECT_EQ(orvik_string_to_int(" -5z"), -5);
    EXPECT_EQ(orvik_string_to_int("x12"), 0);
    EXPECT_EQ(orvik_string_to_int(""), 0);
    EXPECT_EQ(orvik_string_to_int("0"), 0);
}

TEST(Converters, HexTermsSaturateAndTheSumWraps) {
    EXPECT_EQ(orvik_hex_string_to_int("7fffffff"), 0x7FFFFFFF);
    EXPECT_EQ(orvik_hex_string_to_int("80000000"), 0x7FFFFFFF);
    EXPECT_EQ(static_cast<unsigned>(orvik_hex_string_to_int("ffffffff")), 0x8FFFFFFEu);
    EXPECT_EQ(static_cast<unsigned>(orvik_hex_string_to_int("1ffffffff")), 0x0FFFFFFDu);
    EXPECT_EQ(orvik_hex_string_to_int("-1 A"), 0x010A);
    EXPECT_EQ(orvik_hex_string_to_int(""), 0);
    EXPECT_EQ(orvik_hex_string_to_int((std::string(49, '0') + "7").c_str()), 7);
    EXPECT_EQ(orvik_hex_string_to_int((std::string(50, '0') + "7").c_str()), 0);
}

TEST(Converters, NullIsToldOnlyWhileTheFlagIsOn) {
    EXPECT_EQ(PhoneTest::printed([] { EXPECT_EQ(orvik_string_to_int(nullptr), 0); }),
              "\ninput is null\n");
    g_orvik_stdout_print_flag = 0;
    EXPECT_EQ(PhoneTest::printed([] { EXPECT_EQ(orvik_hex_string_to_int(nullptr), 0); }), "");
    g_orvik_stdout_print_flag = 1;
}

TEST(Converters, BytesToHexWritesDigitsAndNothingElse) {
    const unsigned char bytes[] = {0xAB, 0x01};
    char out[] = "......";
    orvik_byte_to_hex(bytes, 2, out);
    EXPECT_STREQ(out, "ab01..");
    orvik_byte_to_hex(bytes, 0, out);
    orvik_byte_to_hex(bytes, -1, out);
    orvik_byte_to_hex(nullptr, 2, out);
    EXPECT_STREQ(out, "ab01..");
}

} // namespace
