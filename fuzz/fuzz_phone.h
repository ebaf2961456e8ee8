// SPDX-License-Identifier: Apache-2.0
/* A phone for a fuzz target; the tool's output goes nowhere. */
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "log_lines.h"
#include "scratch.h"

class FuzzPhone {
  public:
    FuzzPhone() {
        if (std::freopen("/dev/null", "w", stdout) == nullptr)
            std::abort();
        ::setenv("KVT_PHONE", (dir_ / "phone").c_str(), 1);
        instance() = this;
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(instance()->dir_, ignored);
        });
        reset();
    }

    /* A fresh phone whose system-log lines are off, and the flag that a command may have cleared.
     */
    void reset() {
        std::error_code ignored;
        std::filesystem::remove_all(dir_ / "phone", ignored);
        g_orvik_stdout_print_flag = 1;
        put("prop/persist.vendor.radio.adb_log_ov", "0", 1);
        put("restart_ms", "1", 1);
    }

    void put(const char* name, const void* bytes, size_t size) {
        const std::filesystem::path path = dir_ / "phone" / name;
        std::error_code ignored;
        std::filesystem::create_directories(path.parent_path(), ignored);
        std::ofstream(path, std::ios::binary)
            .write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    }

  private:
    static FuzzPhone*& instance() {
        static FuzzPhone* phone = nullptr;
        return phone;
    }
    const std::filesystem::path dir_ = new_scratch_folder();
};
