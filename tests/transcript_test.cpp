// SPDX-License-Identifier: Apache-2.0
/* Command tests. A transcript is a text file of commands and what they print:
 *
 *     # a comment, outside of a command's output
 *     $ kvt 4 1 0 551
 *     expected output, up to the next line that begins with "$ " or "# "
 *
 * Commands run in a shell, one after the other, in the directory of a phone made for the file; kvt
 * is the real program. Whole outputs are compared. Source line numbers are masked: "RIL[f:123]" is
 * written "RIL[f:#]". Output that does not end with a newline is followed by the line "\no
 * newline".
 * "$? N" demands another exit status than 0. In a Markdown file each block between lines
 * "```console" and "```" is a transcript and they share one phone; only kvt's output counts there.
 *
 * README.md's blocks run as they are typed in a clone, with ./kvt and ./kvt-lab and the default phone.
 * Files that call kvt-lab run where it is built.
 *
 * kvt-lab runs kvt, or what KVT names; kvt_fake runs the phone's file "fake" with a shell.
 *
 * With KVT_UPDATE_TRANSCRIPTS set, files are written anew with what the commands print now: read
 * the difference before you believe it. */
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <re2/re2.h>
#include <sys/wait.h>

#include "scratch.h"

namespace {

namespace fs = std::filesystem;

struct Result {
    std::string output;
    int status;
};

Result run(const std::string& command) {
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr)
        return {"popen failed\n", -1};
    std::string output;
    char buffer[4096];
    while (const size_t n = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, n);
    const int status = ::pclose(pipe);
    return {output, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
}

std::string masked(const std::string& text) {
    static const RE2 lines(R"((RIL\[\w+|\.cpp):\d+\])", RE2::Latin1);
    static const RE2 stamps(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \d+ )", RE2::Latin1);
    std::string result = text;
    RE2::GlobalReplace(&result, lines, R"(\1:#])");
    RE2::GlobalReplace(&result, stamps, "");
    return result;
}

class TranscriptTest : public testing::Test {
  public:
    explicit TranscriptTest(fs::path file) : file_(std::move(file)) {}

  private:
    void SetUp() override {
        std::string name = testing::TempDir() + "kvt-transcript-XXXXXX";
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        dir_ = name;
        scratch_ = new_scratch_folder();
        fs::create_directories(dir_ / "bin");
        script("kvt", "[ -z \"$KVT_EMULATOR\" ] || export KVT_AT_FOLDER='" KVT_AT_FOLDER "'\n"
                      "exec ${KVT_EMULATOR:-} \"${KVT_PROGRAM:-" KVT_PROGRAM "}\" \"$@\"");
        script("kvt_without_mutex", "LD_LIBRARY_PATH='" KVT_NO_MUTEX "' exec kvt \"$@\"");
        script("kvt_fake", "exec sh \"$KVT_PHONE/fake\" \"$@\"");
        script("kvt-lab", "exec '" KVT_LAB_PROGRAM "' --kvt \"${KVT:-$(command -v kvt)}\" \"$@\"");
        prefix_ = "export KVT_TESTS='" KVT_SOURCE_DIR "/tests' KVT_LIBRARIES='" KVT_AT_FOLDER
                  "' KVT_PHONE='" +
                  phone().string() + "' PATH='" + (dir_ / "bin").string() +
                  "':'" KVT_SOURCE_DIR "/docs/recipes':\"$PATH\" ";
        /* Reports of a sanitizer, also of commands in a pipeline, are found in TearDown. */
        const std::string report = "log_path=" + (dir_ / "report").string();
        prefix_ += "ASAN_OPTIONS=" + report + " UBSAN_OPTIONS=print_stacktrace=1:" + report +
                   " TSAN_OPTIONS=atexit_sleep_ms=0:" + report + "; ";
        run(prefix_ + "kvt 6 0 0 >/dev/null"); /* makes the phone */
        fs::remove(phone() / "log");
        if (file_.stem() == "README") { /* as typed in a clone, by somebody who has set nothing */
            fs::create_directories(dir_ / "clone");
            fs::copy(dir_ / "bin" / "kvt", dir_ / "clone");
            fs::copy(dir_ / "bin" / "kvt-lab", dir_ / "clone");
            prefix_ += "unset KVT_PHONE XDG_STATE_HOME; export HOME='" + scratch_.string() +
                       "'; cd '" + (dir_ / "clone").string() + "' || exit 99; ";
        } else {
            prefix_ += "cd '" + phone().string() + "' || exit 99; ";
        }
    }

    /* A command of that name for the transcripts. KVT_PROGRAM and KVT_EMULATOR in the environment
     * put another build in kvt's place. */
    void script(const char* name, const std::string& line) {
        std::ofstream(dir_ / "bin" / name) << "#!/bin/sh\n" << line << "\n";
        fs::permissions(dir_ / "bin" / name, fs::perms::owner_all);
    }

    void TearDown() override {
        for (const fs::directory_entry& entry : fs::directory_iterator(dir_)) {
            if (entry.path().filename().string().rfind("report", 0) != 0)
                continue;
            std::ifstream in(entry.path());
            ADD_FAILURE() << std::string(std::istreambuf_iterator<char>(in), {});
        }
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
        fs::remove_all(scratch_, ignored);
    }

    std::string check(const std::string& command, const std::string& expected, int line) {
        const Result result = run(prefix_ + command);
        std::string actual = masked(result.output);
        if (!actual.empty() && actual.back() != '\n')
            actual += "\n\\no newline\n";
        if (result.status != 0)
            actual += "$? " + std::to_string(result.status) + "\n";
        if (std::getenv("KVT_UPDATE_TRANSCRIPTS") == nullptr) {
            EXPECT_EQ(actual, expected) << file_.string() << ":" << line << ": $ " << command;
        }
        return actual;
    }

    void TestBody() override {
        std::ifstream in(file_);
        const std::string text((std::istreambuf_iterator<char>(in)), {});
        if (*KVT_LAB_PROGRAM == '\0' && text.find("\n$ kvt-lab ") != std::string::npos)
            GTEST_SKIP() << "the lab is not built";
        in.seekg(0);
        const bool markdown = file_.extension() == ".md";
        bool active = !markdown;
        std::string updated, command, expected;
        int number = 0, command_line = 0;
        const auto finish = [&] {
            if (!command.empty())
                updated += "$ " + command + "\n" + check(command, expected, command_line);
            command.clear();
            expected.clear();
        };
        for (std::string line; std::getline(in, line);) {
            ++number;
            const bool fence = markdown && line.rfind("```", 0) == 0;
            if (fence || (active && (line.rfind("$ ", 0) == 0 || line.rfind("# ", 0) == 0))) {
                finish();
                if (fence)
                    active = !active && line == "```console";
                if (active && line.rfind("$ ", 0) == 0) {
                    command = line.substr(2);
                    command_line = number;
                } else {
                    updated += line + "\n";
                }
            } else if (!command.empty()) {
                expected += line + "\n";
            } else {
                updated += line + "\n";
            }
        }
        finish();
        if (std::getenv("KVT_UPDATE_TRANSCRIPTS") != nullptr) {
            in.close();
            std::ofstream(file_) << updated;
        }
    }

    fs::path phone() const { return scratch_ / "phone"; }

    fs::path file_;
    fs::path dir_;     /* commands, which a folder in memory may refuse to run; reports */
    fs::path scratch_; /* the phone */
    std::string prefix_;
};

/* A command line of it calls kvt-lab. */
bool needs_lab(const fs::path& file) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        if (line.rfind("$ ", 0) == 0 && line.find("kvt-lab") != std::string::npos)
            return true;
    return false;
}

void register_files(const char* suite, const fs::path& folder, const std::string& extension) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == extension &&
            (*KVT_LAB_PROGRAM != '\0' || !needs_lab(entry.path())))
            files.push_back(entry.path());
    for (const fs::path& file : files)
        testing::RegisterTest(suite, file.stem().c_str(), nullptr, nullptr, __FILE__, __LINE__,
                              [file] { return new TranscriptTest(file); });
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    register_files("Transcript", fs::path(KVT_SOURCE_DIR) / "tests" / "transcripts", ".txt");
    if (*KVT_LAB_PROGRAM != '\0')
        register_files("Lab", fs::path(KVT_SOURCE_DIR) / "tests" / "lab" / "transcripts", ".txt");
    register_files("Document", fs::path(KVT_SOURCE_DIR) / "docs", ".md");
    register_files("Document", fs::path(KVT_SOURCE_DIR), ".md");
    return RUN_ALL_TESTS();
}
