/* Soak: many runs of mixed commands, several at a time, on one phone. Each must end with status 0
 * and print what it prints alone; nothing may be left behind, and no run's memory may grow.
 *
 *     soak KVT [RUNS [JOBS]]        (10000 runs, 8 at a time) */
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <regex>
#include <set>
#include <thread>

#include "process.h"
#include "scratch.h"

namespace {

namespace fs = std::filesystem;

struct Command {
    std::vector<std::string> arguments;
    const char* expected; /* in the output */
};

/* Commands that do not disturb one another. Each job writes a file of its own and all write one. */
const std::vector<Command> commands = {
    {{"4", "1", "0", "550"}, "data len(9)"},
    {{"4", "5", "0", "/soak/shared", "1", "1", "1", "1"}, "send_count = 1"},
    {{"4", "5", "0", "/soak/shared", "2", "2", "2", "2", "2", "2"}, "send_count = 1"},
    {{"4", "4", "0", "/soak/shared"}, "data len("},
    {{"4", "2", "1", "6000", "1", "2", "3"}, "rsp.result = 0"},
    {{"6", "1", "1", "2"}, "result = 0"},
    {{"7", "0", "0"}, "scs 0"},
    {{"7", "1", "0"}, "SUCCES"},
    {{"5", "1"}, "rsp.result = 0"},
    {{"5", "2", "0"}, "rsp.result = 0"},
    {{"5", "5"}, "SAR DSI: "},
    {{"5", "10", "3", "1"}, "eID="},
    {{"5", "10", "4", "0"}, ","},
    {{"5", "0", "0", "0", "1000", "0x7c"}, "rsp data len("},
    {{"5", "0", "1", "0", "1000", "0x7c"}, "rsp data len("},
    {{"9", "0", "0"}, "ASDIV DATA"},
    {{"9", "30", "0"}, "ANT INFO"},
    {{"10", "0", "1"}, "do nothing"},
    {{"11", "2"}, "result:0"},
    {{"11", "3", "1"}, "success"},
};

std::set<std::string> names_in(const fs::path& folder) {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        names.insert(entry.path().lexically_relative(folder).string());
    return names;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return 2;
    const std::string program = argv[1];
    const size_t runs = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 10000;
    const size_t jobs = argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 8;
    const fs::path work = new_scratch_folder();
    const std::vector<std::string> environment = {"KVT_PHONE=" + (work / "phone").string()};

    /* Once each, alone: makes every file that a run makes, and shows each run's memory. */
    std::vector<long> first(commands.size());
    for (size_t i = 0; i < commands.size(); ++i)
        first[i] = run_process(program, commands[i].arguments, environment, work / "output", 60)
                       .max_resident_kb;
    fs::remove(work / "output");
    std::set<std::string> expected_names = names_in(work);
    expected_names.insert("phone/log.1");

    std::atomic<size_t> next{0}, failures{0};
    std::vector<std::atomic<long>> most(commands.size());
    std::vector<std::thread> threads;
    for (size_t job = 0; job < jobs; ++job)
        threads.emplace_back([&, job] {
            const fs::path output = work / ("output" + std::to_string(job));
            for (size_t i = 0; (i = next++) < runs;) {
                const size_t which = i % commands.size();
                const ProcessResult result =
                    run_process(program, commands[which].arguments, environment, output, 60);
                if (result.timed_out || result.status != 0 ||
                    result.output.find(commands[which].expected) == std::string::npos) {
                    if (failures++ < 5)
                        std::printf("run %zu (%s %s): status %d\n%s\n", i,
                                    commands[which].arguments[0].c_str(),
                                    commands[which].arguments[1].c_str(), result.status,
                                    result.output.c_str());
                }
                long seen = most[which];
                while (result.max_resident_kb > seen &&
                       !most[which].compare_exchange_weak(seen, result.max_resident_kb)) {
                }
            }
            fs::remove(output);
        });
    for (std::thread& thread : threads)
        thread.join();

    size_t left = 0;
    for (const std::string& found : names_in(work))
        if (expected_names.count(found) == 0 && ++left < 5)
            std::printf("left behind: %s\n", found.c_str());
    long growth = 0;
    for (size_t i = 0; i < commands.size(); ++i)
        growth = std::max(growth, most[i] - first[i]);
    std::printf(
        "%zu runs, %zu at a time: %zu failures, %zu files left behind, memory of a run at most "
        "%ld KiB above its first\n",
        runs, jobs, failures.load(), left, growth);
    fs::remove_all(work);
    return failures == 0 && left == 0 && growth < 1024 ? 0 : 1;
}
