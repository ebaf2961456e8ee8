// SPDX-License-Identifier: Apache-2.0
#include "phone/faults.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <sstream>
#include <vector>

#include <fnmatch.h>

#include "phone_lines.h"

#include "phone/complaint.h"
#include "phone/guarded.h"
#include "phone/lock.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace {

constexpr const char* file = "faults";
constexpr const char* counts_file = "faults.counts";

using phone_files::Action;
using phone_files::Rule;

/* What an action of the table does. */
Fault::Kind kind_of(const Action& action) {
    return static_cast<Fault::Kind>(&action - phone_files::actions);
}
static_assert(std::size(phone_files::actions) == static_cast<size_t>(Fault::Kind::reply) + 1);

Fault fault_of(const Rule& rule) {
    return {kind_of(*rule.action), rule.argument, rule.number, rule.line};
}

bool matches(const std::string& pattern, const std::string& call, const std::string& name) {
    return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0 ||
           (pattern.find(':') == std::string::npos &&
            ::fnmatch(pattern.c_str(), call.c_str(), 0) == 0);
}

std::vector<Rule> read_rules() {
    const std::optional<Bytes> bytes = read_file(file);
    if (!bytes)
        return {};
    phone_files::Complaints complaints;
    std::vector<Rule> rules =
        phone_files::read_rules(std::string(bytes->begin(), bytes->end()), complaints);
    complain(file, complaints);
    return rules;
}

/* Counts a call that a rule matches, over all processes: the file holds a line for each such rule,
 * the number and the rule. */
int64_t count_for_all(const std::string& rule) {
    const Lock lock;
    std::string kept;
    int64_t count = 1;
    const Bytes bytes = read_file(counts_file).value_or(Bytes());
    std::istringstream lines(std::string(bytes.begin(), bytes.end()));
    for (std::string line; std::getline(lines, line);) {
        const size_t blank = line.find(' ');
        if (blank != std::string::npos && line.substr(blank + 1) == rule)
            count += whole_number(line.substr(0, blank)).value_or(0);
        else
            kept += line + "\n";
    }
    if (lock.held())
        note_text(counts_file, kept + std::to_string(count) + " " + rule);
    return count;
}

/* Whether a rule that matches its nth call in this process applies to it. */
bool is_due(const Rule& rule, int64_t nth) {
    if (rule.every_n > 0)
        return count_for_all(rule.text) % rule.every_n == 0;
    return rule.nth == 0 || rule.nth == nth;
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
            if (found || !is_due(rule, nth))
                continue;
            ++use.applied;
            found = fault_of(rule);
        }
    }
    if (found)
        log_line("fault", name);
    return found;
}

Bytes reply_bytes(const Fault& fault) {
    std::string digits = fault.argument;
    std::erase(digits, ' ');
    Bytes bytes = from_hex(digits);
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
