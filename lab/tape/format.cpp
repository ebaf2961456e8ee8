// SPDX-License-Identifier: Apache-2.0
#include "format.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <unordered_map>

#include <simdjson.h>
#include <sys/stat.h>

namespace lab::tape {

namespace dom = simdjson::dom;

static_assert(LineParser::padding >= simdjson::SIMDJSON_PADDING);

namespace {

constexpr size_t max_strays = 20;
/* More than any buffer of the platform's interface; a number above it is nonsense. */
constexpr int64_t max_buffer = 1 << 24;
constexpr int64_t max_threads = 100000000;
constexpr int64_t known_version = 2;

int nibble(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool set(std::string& error, std::string text) {
    error = std::move(text);
    return false;
}

std::string quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

} // namespace

bool from_hex(std::string_view hex, std::string& bytes) {
    bytes.clear();
    if (hex.size() % 2 != 0)
        return false;
    bytes.resize(hex.size() / 2);
    for (size_t i = 0; i < bytes.size(); ++i) {
        const int high = nibble(hex[2 * i]), low = nibble(hex[2 * i + 1]);
        if (high < 0 || low < 0)
            return false;
        bytes[i] = static_cast<char>(high << 4 | low);
    }
    return true;
}

std::string command_text(const std::vector<std::string>& args) {
    std::string text;
    for (const std::string& arg : args)
        text += (text.empty() ? "" : " ") + arg;
    return text;
}

/* ---- an event's members ---- */

namespace {

const Field* find(const std::vector<Field>& fields, std::string_view name) {
    for (const Field& field : fields)
        if (field.name == name)
            return &field;
    return nullptr;
}

} // namespace

const Field* Event::input(std::string_view wanted) const { return find(in, wanted); }
const Field* Event::output_named(std::string_view wanted) const { return find(out, wanted); }

int64_t Event::input_number(std::string_view wanted, int64_t otherwise) const {
    const Field* const field = find(in, wanted);
    return field != nullptr && !field->is_text ? field->number : otherwise;
}

bool Event::bytes(const std::vector<Field>& fields, std::string_view wanted,
                  std::string& bytes) const {
    const Field* const field = find(fields, wanted);
    if (field == nullptr || !field->is_text || !from_hex(field->text, bytes))
        return false;
    const Field* const length = find(fields, std::string(wanted) + "_len");
    if (length != nullptr && !length->is_text)
        bytes.resize(static_cast<size_t>(length->number));
    return true;
}

/* ---- one line ---- */

struct LineParser::State {
    dom::parser parser;
    std::vector<std::unique_ptr<std::string>> decoded; /* texts that stand as hex */

    bool text(dom::element element, std::string_view& text) {
        if (element.get(text) == simdjson::SUCCESS)
            return true;
        std::string_view hex;
        auto bytes = std::make_unique<std::string>();
        if (element["hex"].get(hex) != simdjson::SUCCESS || !from_hex(hex, *bytes))
            return false;
        text = *bytes;
        decoded.push_back(std::move(bytes));
        return true;
    }

    bool fields(dom::element element, std::vector<Field>& fields, std::string& error) {
        dom::object object;
        if (element.get(object) != simdjson::SUCCESS)
            return set(error, "\"in\" or \"out\" is no object");
        for (const auto& [name, value] : object) {
            Field field;
            field.name = name;
            field.is_text = text(value, field.text);
            if (!field.is_text && value.get(field.number) != simdjson::SUCCESS)
                return set(error, quoted(name) + " is neither a text nor a number in range");
            fields.push_back(field);
        }
        for (const Field& length : fields) {
            constexpr std::string_view suffix = "_len";
            if (length.name.size() <= suffix.size() ||
                length.name.substr(length.name.size() - suffix.size()) != suffix)
                continue;
            const std::string_view name = length.name.substr(0, length.name.size() - suffix.size());
            const Field* const bytes = find(fields, name);
            if (bytes == nullptr)
                continue; /* an address that was null: only its length is told */
            std::string decoded_bytes;
            if (!bytes->is_text || !from_hex(bytes->text, decoded_bytes))
                return set(error, quoted(name) + " is not hexadecimal");
            if (length.is_text || length.number < static_cast<int64_t>(decoded_bytes.size()) ||
                length.number > max_buffer)
                return set(error, quoted(length.name) + " is out of range");
        }
        return true;
    }
};

LineParser::LineParser() : state_(std::make_unique<State>()) {}
LineParser::~LineParser() = default;

bool LineParser::parse(std::string_view line, Event& event, std::string& error) {
    event = {};
    state_->decoded.clear();
    dom::element document;
    if (const auto code = state_->parser.parse(line.data(), line.size(), false).get(document);
        code != simdjson::SUCCESS)
        return set(error, "not a line of a tape: it is no whole JSON text");
    dom::object object;
    if (document.get(object) != simdjson::SUCCESS)
        return set(error, "not a line of a tape: it is no JSON object");

    bool has_run = false, has_n = false;
    int kinds = 0;
    const auto is = [&](Event::Kind kind) {
        event.kind = kind;
        ++kinds;
    };
    for (const dom::key_value_pair& member : object) {
        const std::string_view name = member.key;
        const dom::element value = member.value;
        const auto number = [&](int64_t& out, int64_t least, int64_t most) {
            return value.get(out) == simdjson::SUCCESS && out >= least && out <= most;
        };
        constexpr int64_t huge = std::numeric_limits<int64_t>::max();
        bool good = true;
        if (name == "run") {
            good = has_run = value.get(event.run) == simdjson::SUCCESS && !event.run.empty() &&
                             event.run.size() < 100;
        } else if (name == "n") {
            good = has_n = number(event.n, 0, UINT32_MAX - 1);
        } else if (name == "at") {
            good = number(event.at_us, 0, huge);
        } else if (name == "took") {
            good = number(event.took_us, 0, huge);
        } else if (name == "thread") {
            good = number(event.thread, 0, max_threads);
        } else if (name == "from") {
            good = number(event.from, 0, UINT32_MAX - 1);
        } else if (name == "past") {
            good = number(event.number, 0, huge);
        } else if (name == "result") {
            good = number(event.result, INT32_MIN, INT32_MAX);
        } else if (name == "errno") {
            good = number(event.error, INT32_MIN, INT32_MAX);
        } else if (name == "call") {
            is(Event::call);
            good = value.get(event.name) == simdjson::SUCCESS;
        } else if (name == "open") {
            is(Event::open);
            good = value.get(event.name) == simdjson::SUCCESS;
        } else if (name == "back") {
            is(Event::back);
            good = value.get(event.name) == simdjson::SUCCESS;
        } else if (name == "done") {
            is(Event::done);
            good = number(event.number, 0, UINT32_MAX - 1);
        } else if (name == "printed") {
            is(Event::printed);
            good = number(event.number, 1, huge);
        } else if (name == "waited") {
            is(Event::waited);
            good = value.get(event.name) == simdjson::SUCCESS;
        } else if (name == "clock") {
            is(Event::clock);
            good = number(event.number, 0, huge);
        } else if (name == "end") {
            is(Event::end);
            good = state_->text(value, event.output);
        } else if (name == "in" || name == "out") {
            if (!state_->fields(value, name == "in" ? event.in : event.out, error))
                return false;
        } else if (name == "tape") {
            is(Event::head);
            int64_t version = 0;
            if (!number(version, 1, huge))
                return set(error, "not a line of a tape");
            if (version != known_version)
                return set(error, "a tape of version " + std::to_string(version) +
                                      ", which this program does not know");
        } else if (name == "time") {
            good = number(event.time, 0, huge);
        } else if (name == "args") {
            dom::array list;
            good = value.get(list) == simdjson::SUCCESS;
            if (good) {
                for (const dom::element item : list) {
                    std::string_view word;
                    good = good && state_->text(item, word);
                    event.args.emplace_back(word);
                }
            }
        } else if (name == "build") {
            good = value.get(event.build) == simdjson::SUCCESS;
        } else if (name == "machine") {
            good = value.get(event.machine) == simdjson::SUCCESS;
        } else if (name == "model") {
            good = state_->text(value, event.model);
        } else if (name == "services") {
            dom::object rows;
            good = value.get(rows) == simdjson::SUCCESS;
            if (good) {
                for (const auto& [service, numbers] : rows) {
                    Service row{std::string(service), 0, 0, 0, 0};
                    int64_t* const parts[] = {&row.id, &row.library, &row.major, &row.minor};
                    for (size_t i = 0; i < 4; ++i)
                        good = good && numbers.at(i).get(*parts[i]) == simdjson::SUCCESS &&
                               *parts[i] >= 0 && *parts[i] <= UINT32_MAX;
                    event.services.push_back(std::move(row));
                }
            }
        }
        if (!good)
            return set(error, quoted(name) + " is not what it should be, or out of range");
    }
    if (!has_run || !has_n || kinds != 1)
        return set(error, "not a line of a tape");
    return true;
}

/* ---- a whole tape ---- */

bool read_file(const std::string& path, std::string& bytes, std::string& error) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return set(error, path + ": " + std::strerror(errno));
    struct stat info {};
    if (::fstat(::fileno(file), &info) == 0 && S_ISREG(info.st_mode))
        bytes.reserve(static_cast<size_t>(info.st_size) + LineParser::padding);
    bytes.clear();
    char buffer[1 << 16];
    while (const size_t n = std::fread(buffer, 1, sizeof buffer, file))
        bytes.append(buffer, n);
    const bool failed = std::ferror(file) != 0;
    const int number = errno;
    std::fclose(file);
    return failed ? set(error, path + ": " + std::strerror(number)) : true;
}

bool Tape::open(const std::string& path, std::string& error) {
    std::string bytes;
    if (!read_file(path, bytes, error))
        return false;
    if (!read(std::move(bytes), error))
        return set(error, path + ": " + error);
    return true;
}

bool Tape::read(std::string text, std::string& error) {
    text_ = std::move(text);
    text_.reserve(text_.size() + LineParser::padding);
    index();
    if (!runs_.empty())
        return true;
    return set(error, strays_.empty() ? "it is empty" : strays_.front());
}

void Tape::index() {
    LineParser parser;
    Event event;
    std::string error;
    std::unordered_map<std::string, size_t> known;
    size_t at = 0, strays = 0, last = 0;
    uint32_t number = 0;
    while (at < text_.size()) {
        size_t end = text_.find('\n', at);
        if (end == std::string::npos)
            end = text_.size();
        const LineRef ref{at, static_cast<uint32_t>(end - at), ++number};
        at = end + 1;
        const std::string where = "line " + std::to_string(number) + ": ";
        if (!parser.parse(line(ref), event, error)) {
            if (++strays <= max_strays)
                strays_.push_back(where + error);
            continue;
        }
        /* Lines of one run mostly follow one another. */
        if (runs_.empty() || runs_[last].id != event.run) {
            const auto [it, added] = known.try_emplace(std::string(event.run), runs_.size());
            if (added) {
                runs_.emplace_back();
                runs_.back().id = event.run;
            }
            last = it->second;
        }
        Run& run = runs_[last];
        const auto expected = static_cast<int64_t>(run.lines.size());
        const auto broken = [&](const std::string& why) {
            if (run.problem.empty())
                run.problem = where + why;
        };
        if (event.n > expected && run.problem.empty())
            broken(std::to_string(event.n - expected) + " lines of the run are missing before it");
        else if (event.n < expected)
            broken("number " + std::to_string(event.n) + " of the run is there twice");
        else if ((event.n == 0) != (event.kind == Event::head))
            broken(event.n == 0 ? "the run does not begin with its head" : "a second head");
        if (run.ended)
            broken("it comes behind the run's end");
        run.lines.push_back(ref);
        if (event.kind == Event::head)
            run.args = event.args;
        run.ended |= event.kind == Event::end;
    }
    if (strays > max_strays)
        strays_.push_back("and " + std::to_string(strays - max_strays) + " lines more");
    for (Run& run : runs_)
        if (!run.ended && run.problem.empty())
            run.problem = "it was broken off: its end is missing";
}

} // namespace lab::tape
