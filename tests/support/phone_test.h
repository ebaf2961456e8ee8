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
    /* A thread of the test before may still write a last line of the log while it is removed. */
    PhoneTest() {
        std::error_code error;
        for (int tries = 0; tries < 100 && std::filesystem::exists(phone()); ++tries) {
            std::filesystem::remove_all(phone(), error);
            ::usleep(error ? 1000 : 0);
        }
        EXPECT_FALSE(error) << error.message();
    }

    /* The same place in every test: the environment is set before there are threads that read it.
     */
    static std::filesystem::path phone() { return folder().path / "phone"; }

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
    static Folder& folder() {
        static Folder folder;
        return folder;
    }
};
