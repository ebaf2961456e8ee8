// SPDX-License-Identifier: Apache-2.0
/* kvt-lab replay: kvt on the tape's answers, with no phone of any kind. */
#include "verbs.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include <sys/mman.h>
#include <unistd.h>

#include "find_kvt.h"
#include "process.h"
#include "tape/compile.h"
#include "tape/libraries.h"

namespace lab {

using namespace tape;

namespace {

/* Beyond what the recorded run took: its waits are kvt's own. */
constexpr std::chrono::seconds spare_time{60};

int failed(const std::string& what) {
    std::fprintf(stderr, "kvt-lab: %s\n", what.c_str());
    return 5;
}

/* A file in memory that a child finds under its descriptor. */
class MemoryFile {
  public:
    MemoryFile() : fd_(::memfd_create("kvt-replay", 0)) {}
    ~MemoryFile() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    bool write(const std::string& bytes) {
        for (size_t at = 0; at < bytes.size();) {
            const ssize_t n = ::write(fd_, bytes.data() + at, bytes.size() - at);
            if (n <= 0)
                return false;
            at += static_cast<size_t>(n);
        }
        return fd_ >= 0;
    }

    std::string read() const {
        std::string bytes;
        char buffer[4096];
        for (off_t at = 0;;) {
            const ssize_t n = ::pread(fd_, buffer, sizeof buffer, at);
            if (n <= 0)
                return bytes;
            bytes.append(buffer, static_cast<size_t>(n));
            at += n;
        }
    }

    std::string name() const { return std::to_string(fd_); }

  private:
    int fd_;
};

struct Replayed {
    ProcessResult process;
    std::string difference; /* of a call; empty: none */
    std::string order;      /* where the order of threads could not be kept; empty: nowhere */
};

/* What stands behind a mark in the replayer's report. */
std::string told_line(const std::string& report, const std::string& mark) {
    const size_t at = ("\n" + report).find("\n" + mark);
    return at == std::string::npos
               ? ""
               : report.substr(at + mark.size(), report.find('\n', at) - at - mark.size());
}

bool replay_run(const std::string& kvt, const std::string& libraries, const Script& script,
                const std::vector<std::string>& args, bool pass_on, Replayed& replayed,
                std::string& error) {
    std::string bytes;
    ScriptWriter writer(bytes);
    pass_script(writer, const_cast<Script&>(script)); /* which a writer leaves as it is */
    MemoryFile file, report;
    if (!file.write(bytes)) {
        error = std::string("no memory for the tape: ") + std::strerror(errno);
        return false;
    }
    ProcessRequest request;
    request.command = args;
    request.command.insert(request.command.begin(), kvt);
    const auto in_front = [](const char* name, const std::string& value) {
        const char* const rest = std::getenv(name);
        return std::string(name) + "=" + value +
               (rest != nullptr && *rest != '\0' ? std::string(":") + rest : "");
    };
    /* Named as one of the platform's libraries, it is also what kvt finds under the other names. */
    static const std::string preloaded = preloadable(libraries + "/libqmi_cci.so");
    request.environment = {in_front("LD_LIBRARY_PATH", libraries),
                           in_front("LD_PRELOAD", preloaded), "KVT_REPLAY=" + file.name(),
                           "KVT_REPLAY_REPORT=" + report.name()};
    request.limit = spare_time;
    for (const ScriptEvent& event : script.events)
        request.limit = std::max<std::chrono::milliseconds>(
            request.limit, spare_time + std::chrono::milliseconds(
                                            std::min<int64_t>(event.at_us, 86'400'000'000) / 1000));
    request.pass_on = pass_on;
    replayed.process = run_process(request);
    const std::string told = report.read();
    replayed.difference = told_line(told, "differs: ");
    replayed.order = told_line(told, "order: ");
    if (const std::string more = told_line(told, "more: "); !more.empty())
        replayed.difference += "; further differences: " + more;
    return true;
}

std::string one_line(const std::string& text) {
    std::string shown = text.substr(0, 100);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; },
        ' ');
    return "\"" + shown + (shown.size() < text.size() ? "..." : "") + "\"";
}

/* Where the outputs part: the line, and both lines. */
std::string output_difference(const std::string& recorded, const std::string& now) {
    const auto place = std::mismatch(recorded.begin(), recorded.end(), now.begin(), now.end());
    const auto at = static_cast<size_t>(place.first - recorded.begin());
    const auto line = 1 + std::count(recorded.begin(), place.first, '\n');
    const size_t from = at == 0 ? 0 : recorded.rfind('\n', at - 1) + 1;
    const auto line_of = [&](const std::string& text) {
        return one_line(text.substr(from, text.find('\n', at) - from));
    };
    return "output line " + std::to_string(line) + ": the tape has " + line_of(recorded) +
           ", the program prints " + line_of(now);
}

/* What is to be said of a replayed run; empty: nothing differs. */
std::string judged(const Script& script, const Replayed& replayed) {
    const std::string order = replayed.order.empty() ? "" : " (" + replayed.order + ")";
    if (!replayed.difference.empty())
        return replayed.difference + order;
    if (replayed.process.output != script.output)
        return output_difference(script.output, replayed.process.output) + order;
    if (replayed.process.how != ProcessResult::exited || replayed.process.status != 0)
        return "kvt " + how_it_ended(replayed.process);
    return "";
}

/* With a command: it alone, against the first run that had the same one. */
int replay_command(const Tape& tape, const std::string& kvt, const std::string& libraries,
                   const ReplayOptions& options) {
    std::string problem = "no recorded run has the command " + command_text(options.command);
    for (const Run& run : tape.runs()) {
        if (run.args != options.command)
            continue;
        Script script;
        std::string error;
        if (!compile(tape, run, script, error)) {
            problem = "the run of " + command_text(run.args) + " is broken: " + error;
            continue;
        }
        script.as_recorded = options.as_recorded ? 1 : 0;
        Replayed replayed;
        if (!replay_run(kvt, libraries, script, options.command, true, replayed, error))
            return failed(error);
        const std::string difference = judged(script, replayed);
        if (difference.empty())
            return 0;
        std::fprintf(stderr, "kvt-lab: %s\n", difference.c_str());
        return 1;
    }
    return failed(problem);
}

} // namespace

int replay(const Common& common, const ReplayOptions& options) {
    std::string error;
    const std::string kvt = find_kvt(common.kvt, error);
    if (kvt.empty())
        return failed(error);
    const std::string libraries = find_library("kvt-replay", error);
    if (libraries.empty())
        return failed(error);
    Tape tape;
    if (!tape.open(options.tape, error))
        return failed(error);
    for (const std::string& stray : tape.strays())
        std::fprintf(stderr, "kvt-lab: %s: %s\n", options.tape.c_str(), stray.c_str());
    if (!options.command.empty())
        return replay_command(tape, kvt, libraries, options);
    if (options.only > tape.runs().size())
        return failed(options.tape + " has " + std::to_string(tape.runs().size()) + " runs");

    bool all_same = tape.strays().empty();
    size_t number = 0;
    for (const Run& run : tape.runs()) {
        if (++number != options.only && options.only != 0)
            continue;
        Script script;
        Replayed replayed;
        std::string verdict = "same";
        if (!compile(tape, run, script, error)) {
            verdict = "broken: " + error;
        } else {
            script.as_recorded = options.as_recorded ? 1 : 0;
            if (!replay_run(kvt, libraries, script, run.args, false, replayed, error))
                return failed(error);
            if (const std::string difference = judged(script, replayed); !difference.empty())
                verdict = "differs: " + difference;
        }
        all_same = all_same && verdict == "same";
        std::printf("%zu: %s: %s\n", number, command_text(run.args).c_str(), verdict.c_str());
        std::fflush(stdout);
    }
    return all_same ? 0 : 1;
}

} // namespace lab
