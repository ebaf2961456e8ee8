// SPDX-License-Identifier: Apache-2.0
/* Fault sweep: runs every command once undisturbed and counts its platform calls, then once for
 * each call and each kind of failure, once for each allocation that fails and once for each thread
 * that does not start. A run must end with status 0 within its time and without a sanitizer's
 * report; it must tell the failure, or not be touched by it; its last word must not be a success
 * when a request failed that it needs; and what it was to change must be as before or as it would
 * have been.
 *
 *     sweep KVT PRELOAD [--short] [--jobs N]
 *     sweep KVT PRELOAD --soak RUNS       (commands beside one another on one phone)
 *
 * PRELOAD is preload.cpp's library, or "" to run without it (under a sanitizer, at full length).
 * Prints a table: command, calls, runs, failures; status 1 when there was one. */
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <re2/re2.h>

#include "process.h"
#include "scratch.h"

namespace {

namespace fs = std::filesystem;

/* A command and the file of the phone that it changes, if any. */
struct Command {
    std::vector<std::string> arguments;
    std::string changes = "";
    bool soaks = false; /* prints the same beside others that soak */
};

const std::vector<Command> commands = {
    {{"3", "0", "1", "2"}, "efs/0/nv/item_files/modem/orvik/rf_ant_port_config"},
    {{"3", "1"}},
    {{"3", "2"}, "efs/0/nv/item_files/modem/orvik/rf_ant_port_config"},
    {{"3", "3", "1", "4", "255"}, "efs/0/nv/item_files/modem/antenna/ant_tx_config"},
    {{"3", "4"}},
    {{"3", "5"}, "efs/0/nv/item_files/modem/antenna/ant_tx_config"},
    {{"4", "1", "0", "550"}, "", true},
    {{"4", "2", "0", "550", "1", "2"}, "nv/0/550"},
    {{"4", "3", "0", "550"}, "nv/0/550"},
    {{"4", "4", "0", "/sweep/file"}, "", true},
    {{"4", "5", "0", "/sweep/file", "7", "8", "9"}, "efs/0/sweep/file", true},
    {{"4", "6", "0", "/sweep/file"}, "efs/0/sweep/file"},
    {{"5", "0", "0", "0", "500", "0x7c"}, "", true},
    {{"5", "0", "1", "0", "500", "0x7c"}, "", true},
    {{"5", "0", "1", "0", "500", "0x10"}}, /* an answer in two chunks */
    {{"5", "0", "0", "1", "0", "0x7c"}},
    {{"5", "0", "1", "1", "0", "0x7c"}},
    {{"5", "1"}, "", true},
    {{"5", "2", "0"}, "", true},
    {{"5", "3", "0", "1", "1"}},
    {{"5", "4"}},
    {{"5", "5"}, "", true},
    {{"5", "6", "1", "1", "1", "2"}},
    {{"5", "6", "0"}},
    {{"5", "10", "1", "1"}},
    {{"5", "10", "2", "1"}},
    {{"5", "10", "3", "1"}},
    {{"5", "10", "4", "1"}, "", true},
    {{"5", "10", "5", "1"}},
    {{"5", "10", "3", "0"}, "", true},
    {{"6", "1", "1", "2", "3"}, "", true},
    {{"7", "0", "1"}, "", true},
    {{"7", "1", "0"}},
    {{"7", "1", "1"}},
    {{"9", "0", "0"}, "", true},
    {{"9", "7", "1"}},
    {{"9", "9", "0"}},
    {{"9", "20", "0"}},
    {{"9", "30", "0"}, "", true},
    {{"10", "0", "1"}, "", true},
    {{"11", "0"}},
    {{"11", "1"}, "efs/0/nv/item_files/modem/orvik/ssr_update_count"},
    {{"11", "2"}, "nv_syncs", true},
    {{"11", "3", "1"}, "prop/persist.vendor.radio.print_stats", true},
    {{"11", "4", "1"}, "efs/0/ravex/ravex_print_mask"},
    {{"11", "5", "0"}, "efs/0/nv/item_files/modem/orvik/qmi_print_flag"},
};

const std::vector<std::string> failures = {
    "error -16", "error -1", "gone", "timeout", "late 30",
    "empty",     "short",    "long", "garbage", "restart",
};
const std::vector<std::string> short_failures = {"error -16", "empty", "garbage", "restart"};
const std::vector<std::string> shortest_failures = {"garbage"}; /* at full length, sleeps and all */

/* Words that tell a failure; no level, and no duration. */
const RE2 told("[Ff]ail|FAIL|[Ee]rror|[Ii]nvalid|not |Unable|Could|time ?out|-[0-9]+([^0-9.]|$)|"
               "UNKNOWN|DOWN|empty|stoped|stop waiting|vailid = 0|conf = [1-9]",
               RE2::Latin1);
/* The line that tells a success, where a command has one. */
const RE2 success("^(success|value=SUCCEED|eID=|data len|rsp data|SAR DSI: [0-9])", RE2::Latin1);

/* Requests whose failure ends no command: from that request of its kind on the command goes on, and
 * may still tell a success. */
struct Passed {
    const char* command;
    const char* call;
    size_t from;
    const char* failure = nullptr; /* null: any */
};
constexpr Passed passed_over[] = {
    {"11 4", "qmi_client_send_msg_sync:vendor", 2}, /* after the write: sync and restart */
    {"11 5", "qmi_client_send_msg_sync:vendor", 2},
    {"5 10 1", "qmi_client_send_msg_sync:vendor", 1}, /* the switch's answer, the copy of the EID */
    {"5 10 2", "qmi_client_send_msg_sync:vendor", 1},
    {"5 10 1", "qmi_client_send_msg_sync:uim.0x65", 1}, /* asked again */
    {"5 10 3", "qmi_client_send_msg_sync:uim.0x65", 1},
    {"5 10 5", "qmi_client_send_msg_sync:uim.0x3f", 1}, /* closing the channel */
    /* Published: after "service gone" the answer counts, and one that never came says success. */
    {"9", "qmi_client_send_msg_sync:vs.0x03", 1, "gone"},
};

constexpr unsigned time_limit_s = 40;

std::string kvt_program, preload;
fs::path work;

/* What does not differ between two good runs: no line numbers, addresses, lines of the thread that
 * counts the wait, nor how often and how many services were seen until the client was open; and
 * lines in whatever order their threads wrote them. */
std::string steady(const std::string& text) {
    static const RE2 moving(
        R"(handle = \d+|ORVIK_QMI_NV: .*\n|num_(entries|services) = \d+|:\d+\]|0x[0-9a-f]{6,}|)"
        R"(RIL.orvik_diag_cmd_send_with_result_wait_thread_proc.*\n|client ID = \d+)",
        RE2::Latin1);
    std::string still = text;
    RE2::GlobalReplace(&still, moving, "");
    std::istringstream in(still);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line + "\n");
    std::sort(lines.begin(), lines.end());
    std::string all;
    for (const std::string& line : lines)
        all += line;
    return all;
}

/* True when the output has a line of its own that tells a failure. */
bool tells_failure(const std::string& output, const std::string& good) {
    const std::string expected = steady(good);
    std::istringstream lines(steady(output));
    for (std::string line; std::getline(lines, line);)
        if (expected.find(line + "\n") == std::string::npos && RE2::PartialMatch(line, told))
            return true;
    return false;
}

bool tells_success(const std::string& output) {
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
        if (RE2::PartialMatch(line, success))
            return true;
    return false;
}

bool begins(const std::string& text, const std::string& with) { return text.rfind(with, 0) == 0; }

/* True when no run can do its work after this failure of its Nth such call. */
bool needed(const std::string& command, const std::string& call, size_t nth,
            const std::string& failure) {
    if (!begins(call, "qmi_client_send_msg_sync") ||
        (!begins(failure, "error") && failure != "timeout" && failure != "gone"))
        return false;
    return std::none_of(std::begin(passed_over), std::end(passed_over), [&](const Passed& row) {
        return begins(command + " ", std::string(row.command) + " ") && begins(call, row.call) &&
               nth >= row.from && (row.failure == nullptr || failure == row.failure);
    });
}

/* Calls whose failure the tool has no words for: it goes on, and what follows tells. What a DIAG
 * packet is answered with is shown as it comes, wrong or right. */
bool has_words(const std::string& call, const std::string& failure) {
    if (begins(call, "diag_callback_send_data") || begins(call, "diag_send_dci_async_req"))
        return begins(failure, "error") || failure == "gone";
    static const char* const silent[] = {
        "property_",
        "diag_register_callback",
        "diag_has_remote_device",
        "diag_register_remote_callback",
        "diag_switch_logging",
        "Diag_LSM_DeInit",
    };
    return std::none_of(std::begin(silent), std::end(silent),
                        [&](const char* prefix) { return begins(call, prefix); });
}

struct Outcome {
    std::string output;
    std::string trouble; /* empty: none */
};

/* A fresh phone in the state that every run begins with. */
void make_phone(const fs::path& phone) {
    fs::remove_all(phone);
    for (const char* folder :
         {"prop", "nv/0", "nv/1", "efs/0/sweep", "efs/0/nv/item_files/modem/orvik",
          "efs/0/nv/item_files/modem/antenna", "efs/1", "diag"})
        fs::create_directories(phone / folder);
    std::ofstream(phone / "prop/persist.radio.ssr_wait_s") << "0";
    std::ofstream(phone / "nv/0/550") << "nv item";
    std::ofstream(phone / "efs/0/sweep/file") << "contents";
    std::ofstream(phone / "efs/0/nv/item_files/modem/orvik/qmi_print_flag") << "1";
    std::ofstream(phone / "efs/0/nv/item_files/modem/orvik/rf_ant_port_config") << "gpio";
    std::ofstream(phone / "efs/0/nv/item_files/modem/antenna/ant_tx_config") << "antenna";
    std::ofstream(phone / "restart_ms") << "60";
    std::ofstream(phone / "diag/10") << std::string(5000, '\x10');
}

Outcome run(const Command& command, const fs::path& folder, const std::string& fault,
            const std::vector<std::string>& environment) {
    const fs::path phone = folder / "phone";
    make_phone(phone);
    if (!fault.empty())
        std::ofstream(phone / "faults") << fault << "\n";
    const std::string report = "log_path=" + (folder / "report").string();
    std::vector<std::string> settings = {
        "KVT_PHONE=" + phone.string(),
        "ASAN_OPTIONS=" + report + ":verify_asan_link_order=0",
        "UBSAN_OPTIONS=" + report,
        "TSAN_OPTIONS=" + report + ":atexit_sleep_ms=0",
        "KVT_FASTER=20",
    };
    if (!preload.empty())
        settings.push_back("LD_PRELOAD=" + preload);
    settings.insert(settings.end(), environment.begin(), environment.end());
    const ProcessResult result =
        run_process(kvt_program, command.arguments, settings, folder / "output", time_limit_s);
    Outcome outcome{result.output, ""};
    if (result.timed_out)
        outcome.trouble = "did not end";
    else if (result.status != 0)
        outcome.trouble = "status " + std::to_string(result.status);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (begins(entry.path().filename().string(), "report")) {
            outcome.trouble = file_contents(entry.path()).substr(0, 3000);
            fs::remove(entry.path());
        }
    if (fs::exists(phone / ".aside"))
        outcome.trouble = "left a file behind";
    return outcome;
}

std::vector<std::string> calls_of(const fs::path& phone) {
    std::vector<std::string> calls;
    std::ifstream log(phone / "log");
    for (std::string line; std::getline(log, line);) {
        std::istringstream words(line);
        std::string date, time, pid, kind, text;
        words >> date >> time >> pid >> kind >> text;
        if (kind == "call")
            calls.push_back(text);
    }
    return calls;
}

struct Row {
    std::string name;
    size_t calls = 0;
    size_t allocations = 0;
    size_t runs = 0;
    std::vector<std::string> troubles;
};

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

Row sweep(const Command& command, const fs::path& folder, bool brief) {
    Row row;
    row.name = joined(command.arguments);
    fs::create_directories(folder);
    make_phone(folder / "phone");
    const std::string before = file_contents(folder / "phone" / command.changes);
    const fs::path counted = folder / "counted";
    const Outcome good = run(command, folder, "", {"KVT_COUNT=" + counted.string()});
    const std::vector<std::string> calls = calls_of(folder / "phone");
    const std::string after = file_contents(folder / "phone" / command.changes);
    const std::string good_steady = steady(good.output);
    row.calls = calls.size();
    size_t threads = 0;
    if (!preload.empty())
        std::istringstream(file_contents(counted)) >> row.allocations >> threads;
    row.runs = 1;
    if (!good.trouble.empty())
        row.troubles.push_back("undisturbed: " + good.trouble);

    const auto check = [&](const std::string& what, bool has_words, bool needed,
                           const Outcome& outcome) {
        ++row.runs;
        std::string trouble = outcome.trouble;
        if (trouble.empty() && has_words && (needed || steady(outcome.output) != good_steady) &&
            !tells_failure(outcome.output, good.output))
            trouble = "tells no failure:\n" + outcome.output;
        if (trouble.empty() && needed && tells_success(outcome.output))
            trouble = "tells a success:\n" + outcome.output;
        if (trouble.empty() && !command.changes.empty()) {
            const std::string now = file_contents(folder / "phone" / command.changes);
            if (now != before && now != after)
                trouble = command.changes + " is neither old nor new";
        }
        if (!trouble.empty())
            row.troubles.push_back(what + ": " + trouble);
    };
    const std::vector<std::string>& tried = !brief            ? failures
                                            : preload.empty() ? shortest_failures
                                                              : short_failures;
    std::map<std::string, size_t> seen;
    for (size_t i = 0; i < calls.size(); ++i) {
        const size_t nth = ++seen[calls[i].substr(0, calls[i].rfind('.'))];
        for (const std::string& failure : tried)
            check("call " + std::to_string(i + 1) + " " + calls[i] + " " + failure,
                  has_words(calls[i], failure), needed(row.name, calls[i], nth, failure),
                  run(command, folder, "* " + std::to_string(i + 1) + " " + failure, {}));
    }
    for (size_t i = 1; i <= row.allocations; ++i)
        check("allocation " + std::to_string(i), true, false,
              run(command, folder, "", {"KVT_FAIL_ALLOCATION=" + std::to_string(i)}));
    for (size_t i = 1; i <= threads; ++i)
        check("thread " + std::to_string(i), true, false,
              run(command, folder, "", {"KVT_FAIL_THREAD=" + std::to_string(i)}));
    return row;
}

/* Many runs of the commands that bear company, eight at a time, on one phone: each must print what
 * it prints alone, leave nothing behind and need no more memory than the first. */
int soak(size_t runs) {
    const fs::path phone = work / "phone";
    make_phone(phone);
    const std::string setting = "KVT_PHONE=" + phone.string();
    std::vector<const Command*> soaking;
    for (const Command& command : commands)
        if (command.soaks)
            soaking.push_back(&command);
    const auto run_one = [&](size_t which, const fs::path& output) {
        return run_process(kvt_program, soaking[which]->arguments, {setting}, output, time_limit_s);
    };
    std::vector<ProcessResult> alone(soaking.size());
    for (int round = 0; round < 2;
         ++round) /* the first changes what others see; the second counts */
        for (size_t i = 0; i < soaking.size(); ++i)
            alone[i] = run_one(i, work / "output");
    const auto names = [&] {
        std::set<std::string> all;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(phone))
            all.insert(entry.path().string());
        all.erase((phone / "log.1").string());
        return all;
    };
    const std::set<std::string> names_alone = names();

    std::atomic<size_t> taken{0}, troubles{0};
    std::atomic<long> growth{0};
    std::vector<std::thread> threads;
    for (int job = 0; job < 8; ++job)
        threads.emplace_back([&, job] {
            for (size_t i = 0; (i = taken++) < runs;) {
                const size_t which = i % soaking.size();
                const ProcessResult result =
                    run_one(which, work / ("output" + std::to_string(job)));
                if ((result.status != 0 || steady(result.output) != steady(alone[which].output)) &&
                    troubles++ < 5)
                    std::printf("kvt %s: status %d\n%s\n",
                                joined(soaking[which]->arguments).c_str(), result.status,
                                result.output.c_str());
                const long more = result.max_resident_kb - alone[which].max_resident_kb;
                for (long most = growth;
                     more > most && !growth.compare_exchange_weak(most, more);) {
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    const bool clean = names() == names_alone;
    std::printf("%zu runs: %zu failures, %s, memory of a run at most %ld KiB above its first\n",
                runs, troubles.load(), clean ? "nothing left behind" : "files left behind",
                growth.load());
    return troubles == 0 && clean && growth < 1024 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    bool brief = false;
    size_t soak_runs = 0;
    unsigned jobs = 4 * std::max(1u, std::thread::hardware_concurrency()); /* most runs wait */
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--short") == 0)
            brief = true;
        else if (std::strcmp(argv[i], "--jobs") == 0 && i + 1 < argc)
            jobs = static_cast<unsigned>(std::max(1, std::atoi(argv[++i])));
        else if (std::strcmp(argv[i], "--soak") == 0 && i + 1 < argc)
            soak_runs = std::strtoul(argv[++i], nullptr, 10);
        else
            words.push_back(argv[i]);
    }
    if (words.size() != 2)
        return 2;
    kvt_program = words[0];
    preload = words[1];
    work = new_scratch_folder();
    if (soak_runs > 0) {
        const int status = soak(soak_runs);
        fs::remove_all(work);
        return status;
    }

    std::vector<Row> rows(commands.size());
    std::atomic<size_t> taken{0};
    std::vector<std::thread> threads;
    for (unsigned j = 0; j < jobs; ++j)
        threads.emplace_back([&] {
            for (size_t i = 0; (i = taken++) < commands.size();)
                rows[i] = sweep(commands[i], work / std::to_string(i), brief);
        });
    for (std::thread& thread : threads)
        thread.join();
    fs::remove_all(work);

    std::printf("%-28s %6s %6s %6s %9s\n", "command", "calls", "allocs", "runs", "failures");
    size_t calls = 0, runs = 0, troubles = 0;
    for (const Row& row : rows) {
        std::printf("%-28s %6zu %6zu %6zu %9zu\n", row.name.c_str(), row.calls, row.allocations,
                    row.runs, row.troubles.size());
        calls += row.calls;
        runs += row.runs;
        troubles += row.troubles.size();
    }
    std::printf("%-28s %6zu %6s %6zu %9zu\n", "all", calls, "", runs, troubles);
    for (const Row& row : rows)
        for (const std::string& trouble : row.troubles)
            std::printf("\nkvt %s: %s\n", row.name.c_str(), trouble.c_str());
    return troubles == 0 && calls > 0 ? 0 : 1;
}
