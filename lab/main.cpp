// SPDX-License-Identifier: Apache-2.0
/* kvt-lab: reads the command line and hands it to the verb. */
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>

#include <CLI/CLI.hpp>

#include "kvt_version.h"
#include "pages/pages.h"
#include "verbs.h"
#include "workbench/phone.h"

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

/* What stood behind the first "--", and whether there was one. */
std::vector<std::string> g_behind_mark;
bool g_marked;

constexpr const char* as_kvt_takes_them =
    "group, sub-command and arguments, as kvt takes them; after -- whatever they are";

/* The words of a command of kvt; our own options may stand behind them too, unless "--" was before. */
void takes_words(CLI::App& app, std::vector<std::string>& words, const char* meaning) {
    app.add_option("COMMAND", words, meaning);
    app.callback([&] { words.insert(words.end(), g_behind_mark.begin(), g_behind_mark.end()); });
}

/* CLI11's own check would complain before a word that is no subcommand is named. */
void needs_subcommand(CLI::App& app) {
    app.final_callback([&] {
        if (app.get_subcommands().empty())
            throw CLI::RequiredError("A subcommand");
    });
}

/* CLI11's own ranges tell their bounds with three hundred digits. */
CLI::Validator number(const char* what, double least, double most) {
    return CLI::Validator(
        [=](const std::string& text) {
            double value = 0;
            const bool good =
                CLI::detail::lexical_cast(text, value) && value >= least && value <= most;
            return good ? std::string() : "'" + text + "' is not " + what;
        },
        "");
}
const CLI::Validator positive = number("a number of seconds", 0.001, 1e9);
const CLI::Validator whole = number("a number of times", 0, 4e9);
const CLI::Validator up_to_a_day = number("a number of seconds up to 86400", 0, 86400);

void read_run(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    RunOptions& options = kept<RunOptions>();
    app.add_option("--timeout", options.timeout_s, "seconds until kvt is ended")
        ->type_name("SECONDS");
    takes_words(app, options.command, as_kvt_takes_them);
    chosen = [&] { return run(common, options); };
}

void read_describe(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    DescribeOptions& options = kept<DescribeOptions>();
    takes_words(app, options.words, "group, and sub-command: all of them when left out");
    chosen = [&] { return describe(common, options); };
}

void read_check(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    CheckOptions& options = kept<CheckOptions>();
    app.add_flag("--json", options.json, "one JSON object instead of a line");
    app.add_flag("--verify", options.verify, "read back where the catalogue says how");
    app.add_flag("--yes", options.yes, "run it although something can be lost");
    app.add_flag("--output", options.output, "kvt's own output, to standard error");
    app.add_option("--timeout", options.timeout_s, "seconds until kvt is ended")
        ->type_name("SECONDS")
        ->check(positive);
    takes_words(app, options.command, as_kvt_takes_them);
    chosen = [&] { return check(common, options); };
}

void read_doctor(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    DoctorOptions& options = kept<DoctorOptions>();
    app.add_flag("--json", options.json, "for a machine");
    app.add_flag("--services", options.services, "also look the modem's services up");
    chosen = [&] { return doctor(common, options); };
}

void read_deploy(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    DeployOptions& options = kept<DeployOptions>();
    app.add_option("--from", options.from, "folder of a phone build")->type_name("FOLDER");
    chosen = [&] { return deploy(common, options); };
}

void read_pull(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    PullOptions& options = kept<PullOptions>();
    app.add_option("--to", options.to, "folder that gets them (the current one)")
        ->type_name("FOLDER");
    app.add_option("TAPE", options.tapes, "names; all of them when left out");
    chosen = [&] { return pull(common, options); };
}

void read_plan(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    PlanOptions& options = kept<PlanOptions>();
    app.add_option("FILE", options.file, "the plan, TOML")->required();
    app.add_option("--junit", options.junit, "write the result as JUnit XML to this file")
        ->type_name("FILE");
    app.add_flag("--json", options.json, "one JSON object instead of TAP");
    chosen = [&] { return plan(common, options); };
}

void read_watch(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    WatchOptions& options = kept<WatchOptions>();
    app.add_option("--every", options.every_s, "seconds from one asking to the next (1)")
        ->type_name("SECONDS")
        ->check(up_to_a_day);
    app.add_option("--count", options.count, "ends after so many (until Ctrl-C)")
        ->type_name("N")
        ->check(whole);
    app.add_option("--sub", options.sub, "subscription (0)")->type_name("SUB");
    app.add_option("--out", options.out, "keep the levels in this file: FILE.svg, or else CSV")
        ->type_name("FILE");
    takes_words(app, options.words, "9, and one or more of its sub-commands");
    chosen = [&] { return watch(common, options); };
}

/* What a person is told of a verb, or of an action of it, under that name. */
VerbText verb_text(const CLI::App& verb, const std::string& name) {
    const auto not_help = [](const CLI::Option* option) { return option->get_name() != "--help"; };
    VerbText text{name, "", verb.get_description(), {}};
    for (const CLI::Option* const option : verb.get_options(not_help)) {
        std::string type = option->get_items_expected_max() > 0 ? option->get_type_name() : "";
        type.erase(std::min(type.find(':'), type.size())); /* what it checks */
        if (option->get_positional())
            text.usage += (text.usage.empty() ? "" : " ") + option->get_name();
        else
            text.options.push_back(
                {option->get_name() + (type.empty() ? "" : " " + type), option->get_description()});
    }
    return text;
}

/* The verbs and options that a person is shown. */
std::vector<VerbText> verb_texts(const CLI::App& all) {
    std::vector<VerbText> verbs;
    for (const CLI::App* const verb : all.get_subcommands(nullptr)) {
        if (verb->get_group().empty())
            continue;
        verbs.push_back(verb_text(*verb, verb->get_name()));
        for (const CLI::App* const action : verb->get_subcommands(nullptr))
            verbs.push_back(verb_text(*action, verb->get_name() + " " + action->get_name()));
    }
    return verbs;
}

void read_pages(CLI::App& app, const Common&, std::function<int()>& chosen) {
    PagesOptions& options = kept<PagesOptions>();
    app.group(""); /* for the source tree, not for people */
    app.add_flag("--check", options.check, "tell which are stale");
    app.add_option("FOLDER", options.folder, "the source tree")->required();
    chosen = [&] { return pages(options, verb_texts(*app.get_parent())); };
}

void read_record(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    RecordOptions& options = kept<RecordOptions>();
    app.add_option("TAPE", options.tape, "the file that the run is added to")->required();
    app.add_flag("--redact", options.redact, "keep nothing private, as redact does");
    takes_words(app, options.command, as_kvt_takes_them);
    chosen = [&] {
        /* With the tape's name forgotten, the next word would be the group. */
        const bool is_number = options.tape.find_first_not_of("0123456789") == std::string::npos;
        if (g_marked || (!is_number && !options.command.empty()))
            return record(common, options);
        std::fprintf(stderr, "kvt-lab: record takes a tape's name and then a command: "
                             "kvt-lab record first.tape 4 1 0 550\n");
        return 2;
    };
}

void read_replay(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    ReplayOptions& options = kept<ReplayOptions>();
    app.add_option("TAPE", options.tape, "the recorded runs")->required();
    app.add_option("--only", options.only, "this run alone, from 1");
    app.add_flag("--as-recorded", options.as_recorded, "let the platform take its time again");
    takes_words(app, options.command, as_kvt_takes_them);
    chosen = [&] { return replay(common, options); };
}

void read_show(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    ShowOptions& options = kept<ShowOptions>();
    app.add_option("FILE", options.file, "a tape, or a simulated phone's log")->required();
    chosen = [&] { return show(common, options); };
}

void read_pcap(CLI::App& app, const Common& common, std::function<int()>& chosen) {
    PcapOptions& options = kept<PcapOptions>();
    app.add_option("FILE", options.in, "a tape, or a simulated phone's log")->required();
    app.add_option("OUT", options.out, "the capture to write")->required();
    chosen = [&] { return pcap(common, options); };
}

/* One more level: an action, and what it takes. */
void read_phone(CLI::App& app, const Common&, std::function<int()>& chosen) {
    workbench::Options& options = kept<workbench::Options>();
    needs_subcommand(app);
    for (const workbench::Action& action : workbench::actions) {
        CLI::App& sub = *app.add_subcommand(action.name, action.meaning);
        if (*action.words != '\0')
            sub.add_option(action.words, options.words, action.words_meaning);
        sub.callback([&] {
            options.words.insert(options.words.end(), g_behind_mark.begin(), g_behind_mark.end());
            chosen = [&] { return action.run(options); };
        });
    }
    app.get_subcommand("new")
        ->add_option("--from", options.from, "what it is like: a scenario's name or file")
        ->type_name("SCENARIO");
    app.get_subcommand("set")->add_flag("--list", options.list, "every name, unit and range");
    app.get_subcommand("set")
        ->add_option("--sub", options.sub, "subscription of a level (0)")
        ->type_name("SUB")
        ->check(CLI::Range(0, 1));
    app.get_subcommand("fault")->add_flag("--clear", options.clear, "remove the rules there are");
    app.get_subcommand("log")->add_flag("-f", options.follow, "and what is added, until Ctrl-C");
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
    {"describe", "what kvt's commands do, take, tell and cost", read_describe},
    {"check", "run a command and tell whether it worked", read_check},
    {"plan", "run the steps of a file, and undo what they set", read_plan},
    {"watch", "show levels as they move, and keep them as CSV or picture", read_watch},
    {"run", "run kvt as it is", read_run},
    {"doctor", "hold a phone against what kvt needs", read_doctor},
    {"deploy", "put kvt, kvt-doctor and the recorder on a phone", read_deploy},
    {"pull", "get tapes from a phone", read_pull},
    {"record", "run kvt and add what crossed to a tape", read_record},
    {"replay", "run kvt on a tape's answers, without a phone", read_replay},
    {"show", "what crossed in a tape or a phone's log", read_show},
    {"pcap", "what crossed as a capture, for Wireshark", read_pcap},
    {"phone", "set up and look at the simulated phone", read_phone},
    {"twin", "make a simulated phone from a tape", read_twin},
    {"redact", "take what is private out of a tape", read_redact},
    {"pages", "renew the pages that are made from the catalogue", read_pages},
};

int run(int argc, char** argv) {
    CLI::App app{"The lab around kvt, the modem test tool.", "kvt-lab"};
    needs_subcommand(app);
    app.set_version_flag("--version", "kvt-lab " KVT_VERSION " (" KVT_GIT ")");
    app.failure_message([](const CLI::App* asked, const CLI::Error& error) {
        return std::string("kvt-lab: ") + error.what() + "\n" + asked->help();
    });
    Common common;
    app.add_option("--kvt", common.kvt,
                   "path of kvt (otherwise KVT_PROGRAM, beside kvt-lab, PATH)");
    app.add_option("--on", common.on, "phone to run on, by serial number, or \"usb\"")
        ->envname("KVT_ON");
    std::function<int()> actions[std::size(verbs)];
    CLI::App* apps[std::size(verbs)];
    for (size_t i = 0; i < std::size(verbs); ++i) {
        apps[i] = app.add_subcommand(verbs[i].name, verbs[i].meaning);
        apps[i]->fallthrough(); /* the options above may stand behind the verb too */
        verbs[i].read(*apps[i], common, actions[i]);
    }
    const auto mark = std::find_if(argv, argv + argc,
                                   [](const char* word) { return std::strcmp(word, "--") == 0; });
    g_marked = mark != argv + argc;
    if (g_marked)
        g_behind_mark.assign(mark + 1, argv + argc);
    try {
        app.parse(static_cast<int>(mark - argv), argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    int status = 2;
    for (size_t i = 0; i < std::size(verbs); ++i)
        if (apps[i]->parsed())
            status = actions[i]();
    errno = 0;
    if ((std::fflush(stdout) == 0 && std::ferror(stdout) == 0) || errno == EPIPE)
        return status;
    std::fprintf(stderr, "kvt-lab: standard output: %s\n",
                 errno != 0 ? std::strerror(errno) : "not all could be written");
    return status != 0 ? status : 5;
}

} // namespace

int main(int argc, char** argv) {
    /* A file that may not grow is a failed write, not the end of us. */
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const std::exception& error) { /* no memory, or a folder that can't be read */
        std::fprintf(stderr, "kvt-lab: %s\n", error.what());
        return 5;
    }
}
