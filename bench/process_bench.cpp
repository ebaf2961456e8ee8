/* A run of "kvt 1" against a program that prints the same line and is linked with the same
 * libraries. */
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

void run(benchmark::State& state, const char* program) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    char name[] = "kvt", group[] = "1";
    char* const argv[] = {name, group, nullptr};
    char* const envp[] = {nullptr};
    for (auto _ : state) {
        pid_t pid = 0;
        int status = -1;
        if (posix_spawn(&pid, program, &actions, nullptr, argv, envp) != 0 ||
            waitpid(pid, &status, 0) != pid || status != 0) {
            state.SkipWithError("did not run");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

void process_one_line(benchmark::State& state) { run(state, ONE_LINE_PROGRAM); }
void process_kvt(benchmark::State& state) { run(state, KVT_PROGRAM); }

BENCHMARK(process_one_line)->UseRealTime();
BENCHMARK(process_kvt)->UseRealTime();

} // namespace
