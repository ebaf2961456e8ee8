#include "phone/faults.h"

#include <cstdlib>
#include <map>
#include <mutex>
#include <sstream>

#include <fnmatch.h>

#include "phone/phone.h"

namespace simphone {

namespace {

constexpr std::pair<const char*, Fault::Kind> kinds[] = {
    {"error", Fault::Kind::error},     {"timeout", Fault::Kind::timeout},
    {"gone", Fault::Kind::gone},       {"late", Fault::Kind::late},
    {"empty", Fault::Kind::empty},     {"short", Fault::Kind::cut},
    {"long", Fault::Kind::lengthy},    {"garbage", Fault::Kind::garbage},
    {"restart", Fault::Kind::restart}, {"reply", Fault::Kind::reply},
};

std::optional<Fault::Kind> kind_of(const std::string& word) {
    for (const auto& [name, kind] : kinds)
        if (word == name)
            return kind;
    return std::nullopt;
}

bool matches(const std::string& pattern, const std::string& call, const std::string& name) {
    return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0 ||
           (pattern.find(':') == std::string::npos &&
            ::fnmatch(pattern.c_str(), call.c_str(), 0) == 0);
}

/* Calls that matched each rule so far in this process, by the rule's line and place. Never
 * destroyed: framework threads may still count when the process ends. */
struct Counts {
    std::mutex mutex;
    std::map<std::pair<size_t, std::string>, long> seen;
};

Counts& counts() {
    static Counts& instance = *new Counts;
    return instance;
}

} // namespace

long Fault::number_or(long fallback) const {
    return argument.empty() ? fallback : std::strtol(argument.c_str(), nullptr, 0);
}

long Fault::number() const { return number_or(0); }

std::optional<Fault> platform_call(const std::string& call, const std::string& what) {
    const std::string name = what.empty() ? call : call + ":" + what;
    log_line("call", name);
    const std::optional<Bytes> rules = read_file("faults");
    if (!rules)
        return std::nullopt;

    std::optional<Fault> found;
    std::istringstream lines(std::string(rules->begin(), rules->end()));
    const std::lock_guard guard(counts().mutex);
    size_t place = 0;
    for (std::string line; std::getline(lines, line); ++place) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string pattern, when, action;
        if (!(words >> pattern >> when >> action) || !matches(pattern, call, name))
            continue;
        const std::optional<Fault::Kind> kind = kind_of(action);
        const long nth = ++counts().seen[{place, line}];
        if (!kind || found || (when != "*" && std::strtol(when.c_str(), nullptr, 10) != nth))
            continue;
        std::string argument;
        std::getline(words >> std::ws, argument);
        found = Fault{*kind, argument};
    }
    if (found)
        log_line("fault", name);
    return found;
}

} // namespace simphone
