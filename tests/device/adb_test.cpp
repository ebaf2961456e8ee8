// SPDX-License-Identifier: Apache-2.0
/* kvt-lab on phones behind the stand-in for adb. */
#include "phones.h"

namespace {

namespace fs = std::filesystem;

constexpr int not_run = 5, timed_out = 4, failed = 1;

class AdbTest : public PhonesTest {};

/* Every byte that a program can be given, and a word that looks like the lab's own marks. */
std::vector<std::string> hard_words() {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return {bytes,
            "AT+CGDCONT=1,\"IP\",\"a b$c\"",
            "",
            " ",
            "-x",
            "A=1",
            "*",
            "'",
            "\\",
            "$(id)",
            "\nkvt-lab-end 0\n"};
}

TEST_F(AdbTest, HandsEveryByteToKvtThroughBothWaysOfBeingRoot) {
    const std::string at = "AT+CGDCONT=1,\"IP\",\"a b$c\"";
    for (const char* const root : {"adbd", "su"}) {
        const fs::path phone = add_phone(root, {{"root", root}});
        put_kvt(root, "echo $PHONE_USER > " + (phone / "user").string() +
                          "; printf '%s\\0' \"$@\" > " + (phone / "words").string());
        EXPECT_EQ(lab({"--on", root, "check", "8", at}).status, 3);
        std::string expected = std::string("8") + '\0' + at + '\0';
        EXPECT_EQ(file_contents(phone / "words"), expected) << root;
        EXPECT_EQ(file_contents(phone / "user"), "0\n") << root;

        std::vector<std::string> words{"run", "--on", root, "--"};
        expected.clear();
        for (const std::string& word : hard_words()) {
            words.push_back(word);
            expected += word + '\0';
        }
        EXPECT_EQ(lab(words).status, 0);
        EXPECT_EQ(file_contents(phone / "words"), expected) << root;
    }
}

TEST_F(AdbTest, ReadsOutputAndStatusOfAnOldAdb) {
    for (const char* const root : {"adbd", "su"}) {
        add_phone(root, {{"root", root}, {"lines", "crlf"}, {"status", "lost"}});
        const Outcome good = lab({"check", "4", "1", "0", "550", "--on", root});
        EXPECT_EQ(good.status, 0) << good.output;
        EXPECT_EQ(good.output.find('\r'), std::string::npos) << good.output;
        put_kvt(root, "printf 'one\\ntwo'; exit 7");
        const Outcome status = lab({"run", "--on", root, "--", "7", "0", "1"});
        EXPECT_EQ(status.status, not_run);
        EXPECT_EQ(status.output, "one\ntwokvt-lab: kvt ended with status 7\n");
    }
}

TEST_F(AdbTest, TellsInOneLineWhyAPhoneCantBeUsed) {
    add_phone("good");
    add_phone("locked", {{"state", "unauthorized"}});
    add_phone("away", {{"state", "offline"}});
    add_phone("closed", {{"root", "none"}});
    const auto expect = [&](const char* on, const char* text) {
        const Outcome outcome = lab({"--on", on, "check", "4", "1", "0", "550"});
        EXPECT_EQ(outcome.status, not_run) << outcome.output;
        EXPECT_NE(outcome.output.find(text), std::string::npos) << outcome.output;
        EXPECT_EQ(outcome.output.find("ok"), std::string::npos) << outcome.output;
        EXPECT_EQ(lines(outcome.output), 1U) << outcome.output;
    };
    expect("locked", "has not authorised this machine");
    expect("away", "is offline");
    expect("closed", "no root on phone closed");
    expect("nobody", "no phone nobody; adb sees away, closed, good, locked");
    expect("usb", "several phones on USB");

    for (const char* const gone : {"locked", "away", "closed", "good"})
        fs::remove_all(dir_ / "phones" / gone);
    expect("usb", "no phone on USB: adb sees none");
    add_phone("only");
    add_phone("192.168.0.7:5555");
    EXPECT_EQ(lab({"--on", "usb", "check", "4", "1", "0", "550"}).status, 0);

    const Outcome without = lab({"--on", "only", "check", "4", "1", "0", "550"}, "/nonexistent");
    EXPECT_EQ(without.status, not_run);
    EXPECT_EQ(without.output, "not run: adb is not installed (no program adb in PATH)\n");
}

TEST_F(AdbTest, NeverCallsARunOkWhoseCableIsPulled) {
    for (const char* const root : {"adbd", "su"}) {
        add_phone(root, {{"root", root}});
        int good_after = 0; /* shell calls that a whole run takes */
        for (int call = 1; good_after == 0 && call < 10; ++call) {
            reset(root);
            set(root, "pulled_at", std::to_string(call));
            const Outcome outcome = lab({"--on", root, "check", "4", "1", "0", "550"});
            if (outcome.status == 0)
                good_after = call;
            else
                EXPECT_TRUE(outcome.status == not_run || outcome.status == timed_out)
                    << outcome.output;
            EXPECT_EQ(outcome.status == 0, !fs::exists(dir_ / "phones" / root / "adb/pulled"))
                << outcome.output;
        }
        EXPECT_GT(good_after, 2);
    }
}

TEST_F(AdbTest, EndsACommandOnThePhoneWhoseTimeIsUp) {
    for (const char* const root : {"adbd", "su"}) {
        const fs::path phone = add_phone(root, {{"root", root}});
        put_kvt(root, "echo $$ > " + (phone / "process").string() + "; exec sleep 1000");
        int process = 0; /* the time must be long enough for the command to begin */
        for (const char* const time : {"0.5", "2", "8", "32"}) {
            const Outcome outcome =
                lab({"--on", root, "check", "--timeout", time, "4", "1", "0", "550"});
            EXPECT_EQ(outcome.status, timed_out) << outcome.output;
            if (std::ifstream(phone / "process") >> process)
                break;
        }
        ASSERT_GT(process, 1);
        const auto running = [&] { return ::kill(process, 0) == 0; };
        for (int i = 0; i < 1000 && running(); ++i)
            ::usleep(10000);
        EXPECT_FALSE(running());
    }
}

TEST_F(AdbTest, DeploysOnceAndOnlyWhole) {
    const fs::path phone = add_phone("P", {{"root", "su"}});
    const fs::path folder = phone / "data/local/tmp/kvt";
    fs::remove_all(folder);
    const std::string from = phone_build();
    const Outcome first = lab({"deploy", "--on", "P", "--from", from});
    EXPECT_NE(first.output.find("kvt: pushed\nkvt-doctor: pushed\n"), std::string::npos)
        << first.output;
    EXPECT_NE(first.output.find("kvt starts on phone P: yes\n"), std::string::npos) << first.output;
    EXPECT_NE(first.output.find("\ncan     4 "), std::string::npos) << first.output;
    const Outcome second = lab({"deploy", "--on", "P", "--from", from});
    EXPECT_NE(second.output.find("kvt: is there already\nkvt-doctor: is there already\n"),
              std::string::npos)
        << second.output;
    EXPECT_EQ(second.status, lab({"doctor", "--on", "P", "--services"}).status);

    fs::remove(folder / "kvt");
    set("P", "garbled", "1");
    const Outcome garbled = lab({"deploy", "--on", "P", "--from", from});
    EXPECT_EQ(garbled.status, not_run);
    EXPECT_NE(garbled.output.find("did not arrive whole"), std::string::npos) << garbled.output;
    EXPECT_FALSE(fs::exists(folder / "kvt"));
    EXPECT_EQ(lab({"--on", "P", "check", "7", "0", "1"}).status, not_run) << "kvt is not there";

    /* A phone that lacks a library: the programs arrive, kvt does not start, the doctor says why.
     */
    set("P", "garbled", "0");
    fs::remove(phone / "vendor/lib64");
    fs::create_directories(phone / "vendor/lib64");
    const Outcome bare = lab({"deploy", "--on", "P", "--from", from});
    EXPECT_EQ(bare.status, failed) << bare.output;
    EXPECT_NE(bare.output.find("kvt: pushed\nkvt-doctor: is there already\n"), std::string::npos)
        << bare.output;
}

TEST_F(AdbTest, RecordsOnThePhone) {
    if (std::getenv("KVT_PHONE_BUILD") != nullptr)
        GTEST_SKIP() << "an emulator can't be given a library for what it emulates";
    add_phone("P", {{"root", "su"}});
    const Outcome recorded = lab({"record", "--on", "P", "one.tape", "--", "4", "1", "0", "550"});
    EXPECT_EQ(recorded.status, 0) << recorded.output;
    EXPECT_NE(recorded.output.find("data len(9)"), std::string::npos) << recorded.output;
    EXPECT_EQ(lab({"pull", "--on", "P", "--to", dir_}).status, 0);
    const Outcome shown = lab({"show", dir_ / "one.tape"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_NE(shown.output.find("kvt 4 1 0 550"), std::string::npos) << shown.output;
    EXPECT_EQ(lab({"record", "--on", "P", "--redact", "t", "--", "7", "0", "1"}).status, 2);
}

TEST_F(AdbTest, PullsTapesWhole) {
    const fs::path phone = add_phone("P");
    const fs::path tapes = phone / "data/local/tmp/kvt/tapes";
    const fs::path here = dir_ / "here";
    fs::create_directories(here);
    EXPECT_EQ(lab({"pull", "--on", "P", "--to", here}).output, "no tapes on phone P\n");
    std::ofstream(tapes / "one.tape") << "first\n";
    std::ofstream(tapes / "a b.tape") << "second\n";
    EXPECT_EQ(lab({"pull", "--on", "P", "--to", here}).status, 0);
    EXPECT_EQ(file_contents(here / "one.tape"), "first\n");
    EXPECT_EQ(file_contents(here / "a b.tape"), "second\n");
    EXPECT_EQ(lab({"pull", "--on", "P", "--to", here, "none.tape"}).status, not_run);
    EXPECT_EQ(std::distance(fs::directory_iterator(here), {}), 2);
}

} // namespace
