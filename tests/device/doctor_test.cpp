// SPDX-License-Identifier: Apache-2.0
/* kvt-doctor against the simulated phone's libraries, whole and with one fault each. KVT_DOCTOR,
 * KVT_PHONE_LIBS and KVT_EMULATOR put another build in place. */
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "phone/doctor.h"
#include "process.h"

namespace {

namespace fs = std::filesystem;

std::string setting(const char* name, const char* otherwise) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

struct Outcome {
    int status;
    std::string output;

    /* The one line that begins with the mark and the name; empty unless there is just one. */
    std::string line(const std::string& mark, const std::string& name) const {
        std::istringstream lines(output);
        std::string found;
        const std::string start = mark + std::string(8 - mark.size(), ' ') + name;
        for (std::string one; std::getline(lines, one);) {
            if (one.compare(0, start.size(), start) != 0)
                continue;
            if (!found.empty())
                return "";
            found = one;
        }
        return found;
    }
    /* Without the AT channel, which a plain user of a desk can't have. */
    size_t bad_lines() const {
        size_t count = 0;
        std::istringstream lines(output);
        for (std::string one; std::getline(lines, one);)
            count += one.compare(0, 3, "BAD") == 0 && one.find("/dev/") == std::string::npos;
        return count;
    }
};

constexpr const char* libraries[] = {
    "libcutils.so",        "libdiag.so",           "libidl.so", "liblog.so", "libqmi_cci.so",
    "libqmi_common_so.so", "libqcrilNrQtiMutex.so"};

/* A folder with the doctor and the seven libraries, as on a phone. */
class DoctorTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = testing::TempDir() + "kvt-doctor-XXXXXX";
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        dir_ = name;
        fs::create_directories(dir_ / "bin");
        fs::create_directories(dir_ / "lib");
        for (const char* const library : libraries)
            restore(library);
        restore("libsimphone.so"); /* behind the seven */
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
    }

    Outcome run(std::vector<std::string> options = {}, const std::string& fault = "") {
        std::vector<std::string> words;
        std::istringstream emulator(setting("KVT_EMULATOR", ""));
        for (std::string word; emulator >> word;)
            words.push_back(word);
        words.push_back(setting("KVT_DOCTOR", TEST_DOCTOR));
        /* A copy, away from the libraries that it was built beside.
         */
        fs::copy_file(words.back(), dir_ / "bin" / "kvt-doctor",
                      fs::copy_options::overwrite_existing);
        words.back() = dir_ / "bin" / "kvt-doctor";
        words.insert(words.end(), options.begin(), options.end());
        const std::string program =
            words.size() > options.size() + 1 ? "/usr/bin/" + words.front() : words.front();
        words.erase(words.begin());
        const ProcessResult result =
            run_process(program, words,
                        {"LD_LIBRARY_PATH=" + (dir_ / "lib").string(),
                         "KVT_PHONE=" + (dir_ / "phone").string(), "KVT_TEST_FAULT=" + fault},
                        dir_ / "output", 60);
        EXPECT_TRUE(WIFEXITED(result.status)) << result.status << "\n" << result.output;
        return {WIFEXITED(result.status) ? WEXITSTATUS(result.status) : -1, result.output};
    }

    void take_away(const std::string& library) { fs::remove(dir_ / "lib" / library); }
    void restore(const std::string& library) { link(library, phone_libs()); }
    /* The library replaced by that of another phone, see tests/libraries. */
    void replace(const std::string& library, const char* other) {
        link(library, fs::path(setting("KVT_OTHER_LIBS", TEST_OTHER_LIBS)) / other);
    }

    static fs::path phone_libs() { return setting("KVT_PHONE_LIBS", TEST_PHONE_LIBS); }
    void link(const std::string& library, const fs::path& folder) {
        take_away(library);
        fs::create_symlink(folder / library, dir_ / "lib" / library);
    }
    std::string phone_log() { return file_contents(dir_ / "phone" / "log"); }

    fs::path dir_;
};

/* Whether a line says that the command is lost, by itself or with its group. */
bool is_lost(const std::string& line, const std::string& words) {
    const std::string list = ", " + line.substr(line.find("lost: ") + 6) + ", ";
    return list.find(", " + words + ", ") != std::string::npos ||
           list.find(", " + words.substr(0, words.find(' ')) + ", ") != std::string::npos;
}

TEST_F(DoctorTest, FindsTheSimulatedPhoneWholeAndSendsItNothing) {
    if (::geteuid() != 0 && !fs::exists("/dev/smd8"))
        GTEST_SKIP() << "only root can write an AT channel here";
    const Outcome outcome = run({"--services"});
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    for (const char* const library : libraries)
        EXPECT_NE(outcome.line("ok", library), "") << library << outcome.output;
    for (const CommandNeeds& command : command_needs) {
        const std::string words = command.words;
        const std::string group = words.substr(0, words.find(' '));
        EXPECT_TRUE(!outcome.line("can", words + " ").empty() ||
                    !outcome.line("can", group + " ").empty())
            << words << "\n"
            << outcome.output;
    }
    EXPECT_EQ(outcome.output.find("cannot"), std::string::npos) << outcome.output;
    const std::string log = phone_log();
    EXPECT_NE(log.find("qmi_client_get_service_list:vendor"), std::string::npos) << log;
    for (const char* const traffic : {" qmi ", " diag ", " modem "})
        EXPECT_EQ(log.find(traffic), std::string::npos) << log;
    EXPECT_EQ(log.find("property_set"), std::string::npos) << log;
    EXPECT_EQ(log.find("qmi_client_init"), std::string::npos) << log;
}

TEST_F(DoctorTest, NamesAMissingLibraryAndWhatItCosts) {
    for (const char* const library : libraries) {
        take_away(library);
        const Outcome outcome = run({"--services"});
        EXPECT_EQ(outcome.status, 1) << library;
        const std::string line = outcome.line("BAD", library);
        EXPECT_NE(line.find("lost: every command"), std::string::npos) << outcome.output;
        EXPECT_EQ(outcome.output.find("\ncan "), std::string::npos) << outcome.output;
        restore(library);
    }
}

TEST_F(DoctorTest, NamesAMissingSymbolUnlessKvtStartsWithoutIt) {
    replace("libcutils.so", "no_property_set");
    Outcome outcome = run();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.line("BAD", "libcutils.so property_set: ").find("lost: every command"),
              std::string::npos)
        << outcome.output;
    EXPECT_EQ(outcome.bad_lines(), 1U) << outcome.output;

    restore("libcutils.so");
    replace("libqcrilNrQtiMutex.so", "no_mutex");
    outcome = run();
    EXPECT_NE(outcome.line("note", "libqcrilNrQtiMutex.so:"), "") << outcome.output;
    EXPECT_EQ(outcome.bad_lines(), 0U) << outcome.output;
}

TEST_F(DoctorTest, NamesEveryWayInWhichAServiceObjectDiffers) {
    replace("libqmi_common_so.so", "other_objects");
    EXPECT_EQ(run().bad_lines(), 0U) << "the objects themselves";
    struct Fault {
        const char* kind;
        const char* found; /* begins what the line says */
    };
    for (const auto& [kind, found] :
         {Fault{"minor", "; kvt is made for 1."}, Fault{"library", "IDL library 5; "},
          Fault{"size", "bytes in memory, kvt's record has "},
          Fault{"bytes", "bytes on the wire, kvt's record takes up to "},
          Fault{"absent", "the service has no such message"}}) {
        for (const auto& [service, need] :
             {std::pair{"uim", need_uim}, {"sar", need_sar}, {"nas", need_nas}, {"vs", need_vs}}) {
            const std::string fault = kind + std::string(" ") + service;
            const Outcome outcome = run({}, fault);
            EXPECT_EQ(outcome.status, 1) << fault;
            const std::string line = outcome.line("BAD", service);
            EXPECT_NE(line.find(found), std::string::npos) << fault << "\n" << outcome.output;
            for (const CommandNeeds& command : command_needs)
                EXPECT_EQ(is_lost(line, command.words), (command.needs & need) != 0)
                    << command.words << " in " << line;
        }
    }
}

TEST_F(DoctorTest, NamesServicesThatAreDown) {
    fs::create_directories(dir_ / "phone");
    std::ofstream(dir_ / "phone" / "services") << "uim sar nas vs\n";
    const Outcome outcome = run({"--services", "--json"});
    EXPECT_EQ(outcome.status, 1);
    const auto report = nlohmann::json::parse(outcome.output);
    EXPECT_FALSE(report.at("all_good").get<bool>());
    for (const auto& command : report.at("commands")) {
        const CommandNeeds* const row =
            std::find_if(std::begin(command_needs), std::end(command_needs),
                         [&](const CommandNeeds& one) { return command.at("words") == one.words; });
        ASSERT_NE(row, std::end(command_needs));
        EXPECT_EQ(command.at("can").get<bool>(),
                  (row->needs & need_vendor) == 0 && command.at("why").empty())
            << command;
    }
    EXPECT_EQ(run({"--json"}).output.find("vendor service"), std::string::npos);
}

TEST_F(DoctorTest, TellsADeviceFromWhatARunWithoutOneLeftBehind) {
    using doctor::Check;
    using doctor::check_at_channel;
    EXPECT_EQ(check_at_channel("/dev/null", true).state, Check::good);
    const std::string path = dir_ / "smd8";
    EXPECT_EQ(check_at_channel(path.c_str(), true).state, Check::bad);
    EXPECT_EQ(check_at_channel(path.c_str(), false).state, Check::note);
    std::ofstream(path) << "AT\n";
    EXPECT_EQ(check_at_channel(path.c_str(), true).lost, unsigned{need_at});
    EXPECT_EQ(check_at_channel(path.c_str(), false).state, Check::note);
    EXPECT_EQ(check_at_channel(dir_.c_str(), false).state, Check::bad);
}

} // namespace
