// SPDX-License-Identifier: Apache-2.0
/* A fresh phone for each test, and what a test asks of it. */
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "scratch.h"

class PhoneTest : public testing::Test {
  public:
    /* Runs action and returns what it printed on standard output. */
    template <typename Action> static std::string printed(Action action) {
        testing::internal::CaptureStdout();
        action();
        std::fflush(stdout);
        return testing::internal::GetCapturedStdout();
    }

    /* Runs action in a process of its own: for what a process reads once. Comes before the tests
     * that read it in this one. */
    template <typename Action> static void in_own_process(Action action) {
        EXPECT_EXIT(
            {
                action();
                std::fflush(stdout);
                ::_exit(HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "");
    }

  protected:
    /* One name for the phones of all tests, since the environment must not change under threads that
     * read it; what it leads to is new each time. */
    PhoneTest() {
        static int tests = 0;
        const std::filesystem::path next = folder_.path / "next";
        std::filesystem::create_directory(folder_.path / std::to_string(++tests));
        std::filesystem::create_directory_symlink(std::to_string(tests), next);
        std::filesystem::rename(next, phone());
    }

    static std::filesystem::path phone() { return folder_.path / "phone"; }

    void put(const std::filesystem::path& name, const std::string& bytes) {
        std::filesystem::create_directories((phone() / name).parent_path());
        std::ofstream(phone() / name, std::ios::binary) << bytes;
    }

    std::string get(const std::filesystem::path& name) const {
        std::ifstream file(phone() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool has(const std::filesystem::path& name) const {
        return std::filesystem::exists(phone() / name);
    }

    /* Log lines that contain every one of the texts. */
    int logged(std::initializer_list<std::string_view> texts) const {
        std::ifstream file(phone() / "log");
        int count = 0;
        for (std::string line; std::getline(file, line);) {
            bool all = true;
            for (const std::string_view text : texts)
                all = all && line.find(text) != std::string::npos;
            count += all ? 1 : 0;
        }
        return count;
    }

  private:
    struct Folder {
        const std::filesystem::path path = new_scratch_folder();
        Folder() { ::setenv("KVT_PHONE", (path / "phone").c_str(), 1); }
        ~Folder() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static inline const Folder folder_; /* before main: no thread is there yet */
};
