// SPDX-License-Identifier: Apache-2.0
#include "compile.h"

#include <algorithm>
#include <map>
#include <set>

namespace lab::tape {

namespace {

class Compiler {
  public:
    Compiler(const Tape& tape, const Run& run, Script& script)
        : tape_(tape), run_(run), script_(script) {}

    bool compile(std::string& error) {
        if (!run_.problem.empty()) {
            error = run_.problem;
            return false;
        }
        for (const LineRef& ref : run_.lines) {
            error = "line " + std::to_string(ref.number) + ": ";
            std::string why;
            if (!parser_.parse(tape_.line(ref), event_, why) || !add(ref, why)) {
                error += why;
                return false;
            }
        }
        if (printed_ != script_.output.size()) {
            error = "the run's output has " + std::to_string(script_.output.size()) +
                    " bytes, its lines tell of " + std::to_string(printed_);
            return false;
        }
        return true;
    }

  private:
    bool add(const LineRef& ref, std::string& why) {
        switch (event_.kind) {
        case Event::head:
            for (const Service& service : event_.services)
                script_.services.push_back({service.name, static_cast<uint32_t>(service.id),
                                            static_cast<uint32_t>(service.library),
                                            static_cast<uint32_t>(service.major),
                                            static_cast<uint32_t>(service.minor)});
            return true;
        case Event::end:
            script_.output = event_.output;
            return true;
        case Event::done: {
            const auto it = backs_.find(event_.number);
            if (it == backs_.end()) {
                why = "the end of a callback that did not begin";
                return false;
            }
            backs_.erase(it);
            return true;
        }
        case Event::printed:
            printed_ += static_cast<uint64_t>(event_.number);
            return true;
        default:
            return add_event(ref, why);
        }
    }

    bool add_event(const LineRef& ref, std::string& why) {
        if (event_.from > event_.n) {
            why = "a call that began after its end";
            return false;
        }
        ScriptEvent event;
        event.line = ref.number;
        event.thread = static_cast<uint32_t>(event_.thread);
        event.at_us = event_.at_us;
        event.took_us = event_.took_us;
        event.name = event_.name;
        event.result = event_.result;
        event.error = event_.error;
        switch (event_.kind) {
        case Event::back:
            event.kind = ScriptKind::back;
            backs_.insert(event_.n);
            came_[event_.thread].push_back({event_.n, script_.events.size()});
            add_values(event_.in, event);
            break;
        case Event::waited:
            event.kind = ScriptKind::wait;
            event.number = event_.number;
            break;
        case Event::clock:
            event.kind = ScriptKind::clock;
            event.number = event_.number;
            break;
        default:
            event.kind = event_.kind == Event::call ? ScriptKind::call : ScriptKind::open;
            for (const Field& field : event_.in)
                add_input(event.inputs, field.name,
                          field.is_text ? field.text : std::to_string(field.number));
            add_values(event_.out, event);
            nest();
            break;
        }
        script_.events.push_back(std::move(event));
        return true;
    }

    /* A callback that came while its own thread was in a call came out of that call. */
    void nest() {
        std::vector<Came>& came = came_[event_.thread];
        for (; event_.from >= 0 && !came.empty() && came.back().n >= event_.from; came.pop_back())
            script_.events[came.back().event].inside = static_cast<uint32_t>(script_.events.size());
    }

    /* Buffers as bytes: a text that a length belongs to. */
    void add_values(const std::vector<Field>& fields, ScriptEvent& event) const {
        for (const Field& field : fields) {
            ScriptValue value;
            value.name = field.name;
            value.is_text = field.is_text ? 1 : 0;
            value.number = field.number;
            value.text = field.text;
            if (std::string bytes; field.is_text && has(fields, value.name + "_len") &&
                                   event_.bytes(fields, field.name, bytes)) {
                value.number = static_cast<int64_t>(bytes.size());
                value.text = std::move(bytes);
            }
            event.values.push_back(std::move(value));
        }
    }

    static bool has(const std::vector<Field>& fields, const std::string& name) {
        return std::any_of(fields.begin(), fields.end(),
                           [&](const Field& field) { return field.name == name; });
    }

    const Tape& tape_;
    const Run& run_;
    Script& script_;
    LineParser parser_;
    Event event_;
    uint64_t printed_ = 0;
    std::set<int64_t> backs_; /* that have not ended yet */
    struct Came {
        int64_t n;
        size_t event;
    };
    std::map<int64_t, std::vector<Came>> came_; /* callbacks of each thread in no call yet */
};

} // namespace

bool compile(const Tape& tape, const Run& run, Script& script, std::string& error) {
    script = {};
    return Compiler(tape, run, script).compile(error);
}

} // namespace lab::tape
