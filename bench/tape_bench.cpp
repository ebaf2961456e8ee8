// SPDX-License-Identifier: Apache-2.0
/* Tapes: EFS write and read of 100 KiB as a process of its own, as it is, recorded, and replayed; and
 * what kvt-lab show makes of a tape of 100 MB. */
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "run_program.h"

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

constexpr size_t long_tape_size = 100'000'000;

/* A phone, and tapes of it. */
struct Studio {
    fs::path folder = fs::temp_directory_path() / "kvt-bench-XXXXXX";
    std::string phone;
    std::string tape() const { return folder / "tape"; }
    std::string long_tape() const { return folder / "long"; }
    Words recorder() const { return {phone, "LD_PRELOAD=" RECORDER_LIBRARY, "KVT_TAPE=" + tape()}; }

    Studio() {
        std::string name = folder;
        if (::mkdtemp(name.data()) != nullptr)
            folder = name;
        phone = "KVT_PHONE=" + (folder / "phone").string();
        run_program({EFS_PROGRAM}, recorder());
    }
    ~Studio() {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    /* The one run many times, each under a name of its own. */
    void make_long_tape() const {
        if (fs::exists(long_tape()))
            return;
        std::stringstream one;
        one << std::ifstream(tape()).rdbuf();
        const std::string text = one.str();
        constexpr size_t from = sizeof "{\"run\":\"" - 1;
        const std::string name = text.substr(from, text.find('"', from) - from);
        std::ofstream out(long_tape());
        for (size_t size = 0, number = 0; size < long_tape_size; size += text.size(), ++number) {
            std::string copy = text;
            char other[24];
            const auto length =
                static_cast<size_t>(std::snprintf(other, sizeof other, "%08zu", number));
            for (size_t at = from; at < copy.size(); at = copy.find('\n', at) + 1 + from)
                copy.replace(at + name.size() - length, length, other);
            out << copy;
        }
    }
};

Studio& studio() {
    static Studio the_studio;
    return the_studio;
}

void repeat(benchmark::State& state, const Words& words, const Words& environment) {
    for (auto _ : state) {
        if (!run_program(words, environment)) {
            state.SkipWithError("did not run");
            break;
        }
    }
}

void tape_efs(benchmark::State& state) { repeat(state, {EFS_PROGRAM}, {studio().phone}); }

void tape_efs_recorded(benchmark::State& state) {
    Words environment = studio().recorder();
    environment.back() += "-again";
    for (auto _ : state) {
        if (!run_program({EFS_PROGRAM}, environment)) {
            state.SkipWithError("did not run");
            break;
        }
        state.PauseTiming();
        fs::remove(studio().tape() + "-again");
        state.ResumeTiming();
    }
}

void tape_efs_replayed(benchmark::State& state) {
    repeat(state, {KVT_LAB_PROGRAM, "--kvt", EFS_PROGRAM, "replay", studio().tape()},
           {"KVT_PHONE=/nowhere"});
}

void tape_show(benchmark::State& state) {
    studio().make_long_tape();
    repeat(state, {KVT_LAB_PROGRAM, "show", studio().long_tape()}, {});
}

BENCHMARK(tape_efs)->UseRealTime();
BENCHMARK(tape_efs_recorded)->UseRealTime();
BENCHMARK(tape_efs_replayed)->UseRealTime();
BENCHMARK(tape_show)->UseRealTime()->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
