#include "phone/faults.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <sstream>
#include <vector>

#include <fnmatch.h>

#include "phone/complaint.h"
#include "phone/guarded.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace {

constexpr const char* file = "faults";

struct Action {
    const char* name;
    Fault::Kind kind;
    enum Takes { nothing, result, milliseconds, answer } takes;
};

constexpr Action actions[] = {
    {"error", Fault::Kind::error, Action::result},
    {"timeout", Fault::Kind::timeout, Action::nothing},
    {"gone", Fault::Kind::gone, Action::nothing},
    {"late", Fault::Kind::late, Action::milliseconds},
    {"empty", Fault::Kind::empty, Action::nothing},
    {"short", Fault::Kind::cut, Action::nothing},
    {"long", Fault::Kind::lengthy, Action::nothing},
    {"garbage", Fault::Kind::garbage, Action::nothing},
    {"restart", Fault::Kind::restart, Action::nothing},
    {"reply", Fault::Kind::reply, Action::answer},
};

/* Every call that a rule can name. */
constexpr const char* calls[] = {
    "qmi_client_notifier_init",
    "qmi_client_get_service_list",
    "qmi_client_init",
    "qmi_client_init_instance",
    "qmi_client_send_msg_sync",
    "qmi_client_message_decode",
    "qmi_client_register_error_cb",
    "qmi_client_register_notify_cb",
    "qmi_client_release",
    "qmi_cci_os_signal_wait",
    "Diag_LSM_Init",
    "Diag_LSM_DeInit",
    "diag_switch_logging",
    "diag_register_callback",
    "diag_register_remote_callback",
    "diag_has_remote_device",
    "diag_callback_send_data",
    "diag_register_dci_client",
    "diag_register_dci_signal_data",
    "diag_get_dci_support_list_proc",
    "diag_register_dci_stream_proc",
    "diag_send_dci_async_req",
    "diag_release_dci_client",
    "property_get",
    "property_set",
    "at_open",
    "at_command",
};

struct Rule {
    int line;
    std::string text;
    std::string pattern;
    int64_t nth; /* the call that it is for; 0: each */
    Fault fault;
};

bool matches(const std::string& pattern, const std::string& call, const std::string& name) {
    return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0 ||
           (pattern.find(':') == std::string::npos &&
            ::fnmatch(pattern.c_str(), call.c_str(), 0) == 0);
}

/* False when no call can ever match. A pattern without ":" may match across call and object. */
bool can_match(const std::string& pattern) {
    const size_t colon = pattern.find(':');
    if (colon == std::string::npos && pattern.find_first_of("*?[") != std::string::npos)
        return true;
    const std::string call = pattern.substr(0, colon);
    return std::any_of(std::begin(calls), std::end(calls),
                       [&](const char* name) { return ::fnmatch(call.c_str(), name, 0) == 0; });
}

const Action* find_action(const std::string& name) {
    const auto* const found = std::find_if(std::begin(actions), std::end(actions),
                                           [&](const Action& row) { return name == row.name; });
    return found == std::end(actions) ? nullptr : found;
}

std::string action_names() {
    std::string text;
    for (const Action& action : actions)
        text += std::string(text.empty() ? "" : " ") + action.name;
    return text;
}

/* Reads what stands behind the action, and tells what makes no sense there. */
void read_argument(const Action& action, Fault& fault) {
    const std::string& text = fault.argument;
    const Word word{text, fault.line};
    switch (action.takes) {
    case Action::nothing:
        if (!text.empty())
            complain(file, fault.line, std::string(action.name) + " takes no argument");
        return;
    case Action::result:
        if (!text.empty() && whole_number(text))
            fault.number = number_within(file, word, {INT32_MIN, INT32_MAX}, 0);
        else if (!text.empty())
            complain(file, fault.line,
                     "'" + text + "' is no result: error takes a number, or nothing");
        return;
    case Action::milliseconds:
        fault.number = number_within(file, word, {0, 60 * 60 * 1000}, 0);
        return;
    case Action::answer:
        return;
    }
}

std::optional<Rule> read_rule(const std::string& text, int line) {
    std::istringstream words(text.substr(0, text.find('#')));
    std::string pattern, when, name, argument;
    if (!(words >> pattern))
        return std::nullopt;
    if (!(words >> when >> name)) {
        complain(file, line, "'" + text + "' is no rule: CALL[:OBJECT] WHEN ACTION [ARGUMENT]");
        return std::nullopt;
    }
    std::getline(words >> std::ws, argument);
    argument.erase(argument.find_last_not_of(" \t\r") + 1);
    const int64_t nth = when == "*" ? 0 : whole_number(when).value_or(-1);
    if (nth < 0 || (nth == 0 && when != "*")) {
        complain(file, line,
                 "'" + when + "' is no call's number: * for each, or the number, from 1");
        return std::nullopt;
    }
    const Action* const action = find_action(name);
    if (action == nullptr) {
        complain(file, line, "'" + name + "' is no action; one of: " + action_names());
        return std::nullopt;
    }
    if (!can_match(pattern))
        complain(file, line,
                 "no call is named '" + pattern + "'; the log's lines \"call\" show their names");
    Rule rule{line, text, pattern, nth, {action->kind, argument, std::nullopt, line}};
    read_argument(*action, rule.fault);
    return rule;
}

std::vector<Rule> read_rules() {
    std::vector<Rule> rules;
    const std::optional<Bytes> bytes = read_file(file);
    if (!bytes)
        return rules;
    std::istringstream lines(std::string(bytes->begin(), bytes->end()));
    int number = 0;
    for (std::string line; std::getline(lines, line);)
        if (std::optional<Rule> rule = read_rule(line, ++number))
            rules.push_back(std::move(*rule));
    return rules;
}

/* What became of each rule in this process, by its line and text. */
struct Use {
    int64_t matched = 0;
    int64_t applied = 0;
};

/* Never destroyed: framework threads may still count when the process ends. */
struct Uses {
    std::mutex mutex;
    std::map<std::pair<int, std::string>, Use> of;
};

Uses& uses() {
    static Uses& instance = *new Uses;
    return instance;
}

/* Notes the rules that did nothing in this run, when the process ends. */
struct Closing {
    ~Closing() {
        guarded(false, [] {
            const std::lock_guard guard(uses().mutex);
            for (const auto& [rule, use] : uses().of)
                if (use.applied == 0)
                    log_line("fault", std::string(file) + ":" + std::to_string(rule.first) +
                                          ": not applied, " + std::to_string(use.matched) +
                                          " calls matched: " + rule.second);
            return true;
        });
    }
};

} // namespace

std::optional<Fault> platform_call(const std::string& call, const std::string& what,
                                   std::optional<int64_t> timeout_ms) {
    static const Closing closing;
    const std::string name = what.empty() ? call : call + ":" + what;
    log_line("call", name + (timeout_ms ? " " + std::to_string(*timeout_ms) + " ms" : ""));
    std::optional<Fault> found;
    const std::vector<Rule> rules = read_rules();
    {
        const std::lock_guard guard(uses().mutex);
        for (const Rule& rule : rules) {
            Use& use = uses().of[{rule.line, rule.text}];
            if (!matches(rule.pattern, call, name))
                continue;
            const int64_t nth = ++use.matched;
            if (found || (rule.nth != 0 && rule.nth != nth))
                continue;
            ++use.applied;
            found = rule.fault;
        }
    }
    if (found)
        log_line("fault", name);
    return found;
}

Bytes reply_bytes(const Fault& fault) {
    std::string digits = fault.argument;
    std::erase(digits, ' ');
    const Bytes bytes = from_hex(digits);
    if (bytes.size() * 2 != digits.size())
        complain(file, fault.line,
                 "'" + fault.argument + "' is not hexadecimal throughout: two digits a byte");
    return bytes;
}

void spoil(const Fault& fault, Bytes& answer) {
    switch (fault.kind) {
    case Fault::Kind::empty:
        answer.clear();
        break;
    case Fault::Kind::cut:
        answer.resize(answer.size() / 2);
        break;
    case Fault::Kind::lengthy:
        answer.resize(answer.size() + lengthy_by, 0xA5);
        break;
    case Fault::Kind::garbage:
        for (size_t i = 0; i < answer.size(); ++i)
            answer[i] = static_cast<uint8_t>(i * 167 + 13);
        break;
    default:
        break;
    }
}

} // namespace simphone
