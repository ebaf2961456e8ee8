// SPDX-License-Identifier: Apache-2.0
/* Stand-in phones for kvt-lab: folders that the stand-in for adb plays. */
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "process.h"

/* Programs and libraries of the phones: this build's, or another's with KVT_PHONE_BUILD. */
inline std::filesystem::path phone_build() {
    const char* const build = std::getenv("KVT_PHONE_BUILD");
    return build != nullptr ? build : TEST_BUILD;
}

class PhonesTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = testing::TempDir() + "kvt-phones-XXXXXX";
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        dir_ = name;
        std::filesystem::create_directories(dir_ / "phones");
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }

    /* A phone with the simulated phone's libraries; each setting is NAME and word, see the
     * stand-in. */
    std::filesystem::path
    add_phone(const std::string& serial,
              const std::vector<std::pair<std::string, std::string>>& settings = {}) {
        const std::filesystem::path phone = dir_ / "phones" / serial;
        std::filesystem::create_directories(phone / "adb");
        std::filesystem::create_directories(phone / "vendor");
        std::filesystem::create_directories(phone / "data/local/tmp/kvt/tapes");
        std::filesystem::create_directory_symlink(phone_build() / "lib", phone / "vendor/lib64");
        std::filesystem::create_symlink(phone_build() / "lib/libkvt_record.so",
                                        phone / "data/local/tmp/kvt/libkvt_record.so");
        std::filesystem::create_symlink(phone_build() / "bin/kvt",
                                        phone / "data/local/tmp/kvt/kvt");
        for (const auto& [name, word] : settings)
            set(serial, name, word);
        return phone;
    }
    void set(const std::string& serial, const std::string& name, const std::string& word) {
        std::ofstream(dir_ / "phones" / serial / "adb" / name) << word << "\n";
    }
    void reset(const std::string& serial) {
        for (const char* const name : {"calls", "pulled", "pulled_at", "restarted"})
            std::filesystem::remove(dir_ / "phones" / serial / "adb" / name);
    }
    /* A script in kvt's place. */
    void put_kvt(const std::string& serial, const std::string& script) {
        const std::filesystem::path kvt = dir_ / "phones" / serial / "data/local/tmp/kvt/kvt";
        std::filesystem::remove(kvt);
        std::ofstream(kvt) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(kvt, std::filesystem::perms::owner_all);
    }

    struct Outcome {
        int status; /* -1: it did not end by itself */
        std::string output;
    };
    /* kvt-lab, its two outputs together. */
    Outcome lab(std::vector<std::string> words, const char* path = nullptr) {
        const std::string own = std::string(TEST_STAND_IN) + ":" + std::getenv("PATH");
        words.insert(words.begin(), {"-c", "exec \"$0\" \"$@\" 2>&1", TEST_LAB});
        const ProcessResult result = run_process(
            "/bin/sh", words,
            {"PATH=" + (path != nullptr ? path : own), "ADB_PHONES=" + (dir_ / "phones").string()},
            dir_ / "output", 60);
        EXPECT_FALSE(result.timed_out) << result.output;
        return {WIFEXITED(result.status) ? WEXITSTATUS(result.status) : -1, result.output};
    }
    static size_t lines(const std::string& text) {
        return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    std::filesystem::path dir_;
};
