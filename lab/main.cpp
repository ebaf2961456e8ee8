/* kvt-lab: reads the command line and hands it to the verb. */
#include <algorithm>
#include <cstring>
#include <functional>

#include <CLI/CLI.hpp>

#include "kvt_version.h"
#include "verbs.h"

namespace {

using namespace lab;

/* What a verb's row adds to the command line. `chosen` is what runs when the verb was named. */
struct Verb {
    const char* name;
    const char* meaning;
    void (*read)(CLI::App& app, const Common& common, std::function<int()>& chosen);
};

/* The options of a verb, kept for the process's life: the command line is read into them. */
template <typename Options> Options& kept() {
    static Options options;
    return options;
}

/* What stood behind the first "--". */
std::vector<std::string> g_behind_mark;

/* Everything behind the options, or behind "--", is kvt's own command line. */
void takes_command(CLI::App& app, std::vector<std::string>& command) {
    app.prefix_command();
    app.callback([&] {
        command = app.remaining();
        command.insert(command.end(), g_behind_mark.begin(), g_behind_mark.end());
    });
}

void read_run(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    RunOptions& options = kept<RunOptions>();
    app.add_option("--timeout", options.timeout_s, "seconds until kvt is ended");
    takes_command(app, options.command);
    chosen = [&] { return run(common, options); };
}

void read_record(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    RecordOptions& options = kept<RecordOptions>();
    app.add_option("TAPE", options.tape, "the file that the run is added to")->required();
    app.add_flag("--redact", options.redact, "keep nothing private, as redact does");
    takes_command(app, options.command);
    chosen = [&] { return record(common, options); };
}

void read_replay(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    ReplayOptions& options = kept<ReplayOptions>();
    app.add_option("TAPE", options.tape, "the recorded runs")->required();
    app.add_option("--only", options.only, "this run alone, from 1");
    app.add_flag("--as-recorded", options.as_recorded, "let the platform take its time again");
    takes_command(app, options.command);
    chosen = [&] { return replay(common, options); };
}

void read_show(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    ShowOptions& options = kept<ShowOptions>();
    app.add_option("FILE", options.file, "a tape, or a simulated phone's log")->required();
    chosen = [&] { return show(common, options); };
}

void read_twin(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    TwinOptions& options = kept<TwinOptions>();
    app.add_option("TAPE", options.tape, "the recorded runs")->required();
    app.add_option("DIRECTORY", options.directory, "the phone to make")->required();
    chosen = [&] { return twin(common, options); };
}

void read_redact(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    RedactOptions& options = kept<RedactOptions>();
    app.add_option("IN", options.in, "the recorded runs")->required();
    app.add_option("OUT", options.out, "the tape to write")->required();
    chosen = [&] { return redact(common, options); };
}

constexpr Verb verbs[] = {
    {"run", "run kvt as it is", read_run},
    {"record", "run kvt and add what crossed to a tape", read_record},
    {"replay", "run kvt on a tape's answers, without a phone", read_replay},
    {"show", "what crossed in a tape or a phone's log", read_show},
    {"twin", "make a simulated phone from a tape", read_twin},
    {"redact", "take what is private out of a tape", read_redact},
};

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"The lab around kvt, the modem test tool.", "kvt-lab"};
    app.require_subcommand(1);
    app.set_version_flag("--version", "kvt-lab " KVT_VERSION " (" KVT_GIT ")");
    app.failure_message(CLI::FailureMessage::help);
    Common common;
    app.add_option("--kvt", common.kvt,
                   "path of kvt (otherwise KVT_PROGRAM, beside kvt-lab, PATH)");
    std::function<int()> actions[std::size(verbs)];
    CLI::App* apps[std::size(verbs)];
    for (size_t i = 0; i < std::size(verbs); ++i) {
        apps[i] = app.add_subcommand(verbs[i].name, verbs[i].meaning);
        verbs[i].read(*apps[i], common, actions[i]);
    }
    const auto mark = std::find_if(argv, argv + argc,
                                   [](const char* word) { return std::strcmp(word, "--") == 0; });
    if (mark != argv + argc)
        g_behind_mark.assign(mark + 1, argv + argc);
    try {
        app.parse(static_cast<int>(mark - argv), argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    for (size_t i = 0; i < std::size(verbs); ++i)
        if (apps[i]->parsed())
            return actions[i]();
    return 2;
}
