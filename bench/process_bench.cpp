// SPDX-License-Identifier: Apache-2.0
/* Whole processes: a run of "kvt 1" against a program that prints the same line and is linked with the
 * same libraries; and kvt-lab, which tells how a read went, against the read alone. */
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

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

void run(benchmark::State& state, const char* program, std::initializer_list<const char*> words) {
    static Phone phone;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    std::vector<char*> argv = {const_cast<char*>(program)};
    for (const char* const word : words)
        argv.push_back(const_cast<char*>(word));
    argv.push_back(nullptr);
    char* const envp[] = {phone.setting.data(), nullptr};
    for (auto _ : state) {
        pid_t pid = 0;
        int status = -1;
        if (posix_spawn(&pid, program, &actions, nullptr, argv.data(), envp) != 0 ||
            waitpid(pid, &status, 0) != pid || status != 0) {
            state.SkipWithError("did not run");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

void process_one_line(benchmark::State& state) { run(state, ONE_LINE_PROGRAM, {"1"}); }
void process_kvt(benchmark::State& state) { run(state, KVT_PROGRAM, {"1"}); }

BENCHMARK(process_one_line)->UseRealTime();
BENCHMARK(process_kvt)->UseRealTime();

#ifdef KVT_LAB_PROGRAM
void process_read(benchmark::State& state) { run(state, KVT_PROGRAM, {"4", "1", "0", "550"}); }
void process_check(benchmark::State& state) {
    run(state, KVT_LAB_PROGRAM, {"check", "4", "1", "0", "550"});
}

BENCHMARK(process_read)->UseRealTime();
BENCHMARK(process_check)->UseRealTime();
#endif

} // namespace
