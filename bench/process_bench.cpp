// SPDX-License-Identifier: Apache-2.0
/* Whole processes: a run of "kvt 1" against a program that prints the same line and is linked with the
 * same libraries; and kvt-lab, which tells how a read went, against the read alone. */
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "run_program.h"

namespace {

/* The simulated phone of the runs that ask one. */
struct Phone {
    std::string folder = (std::filesystem::temp_directory_path() / "kvt-bench-XXXXXX").string();
    std::string setting;
    Phone() {
        if (::mkdtemp(folder.data()) != nullptr)
            setting = "KVT_PHONE=" + folder;
    }
    ~Phone() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
};

void run(benchmark::State& state, const std::vector<std::string>& words) {
    static const Phone phone;
    for (auto _ : state) {
        if (!run_program(words, {phone.setting})) {
            state.SkipWithError("did not run");
            break;
        }
    }
}

void process_one_line(benchmark::State& state) { run(state, {ONE_LINE_PROGRAM, "1"}); }
void process_kvt(benchmark::State& state) { run(state, {KVT_PROGRAM, "1"}); }

BENCHMARK(process_one_line)->UseRealTime();
BENCHMARK(process_kvt)->UseRealTime();

#ifdef KVT_LAB_PROGRAM
void process_read(benchmark::State& state) { run(state, {KVT_PROGRAM, "4", "1", "0", "550"}); }
void process_check(benchmark::State& state) {
    run(state, {KVT_LAB_PROGRAM, "check", "4", "1", "0", "550"});
}

BENCHMARK(process_read)->UseRealTime();
BENCHMARK(process_check)->UseRealTime();
#endif

} // namespace
