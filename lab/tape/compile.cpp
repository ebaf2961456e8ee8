// SPDX-License-Identifier: Apache-2.0
#include "compile.h"

#include <algorithm>
#include <map>

namespace lab::tape {

namespace {

/* Events of the script, and for each the numbers of the lines between which it lay. */
struct Span {
    int64_t from; /* number of the event that came next when it began */
    int64_t to;   /* its own line, or the line of its end; -1: none */
};

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
        place();
        nest();
        uint64_t printed = 0;
        for (const ScriptEvent& event : script_.events)
            if (event.kind == ScriptKind::printed)
                printed += event.length;
        if (printed != script_.output.size()) {
            error = "the run's output has " + std::to_string(script_.output.size()) +
                    " bytes, its lines tell of " + std::to_string(printed);
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
            if (it == backs_.end() || spans_[it->second].to >= 0) {
                why = "the end of a callback that did not begin";
                return false;
            }
            spans_[it->second].to = event_.n;
            return true;
        }
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
        Span span{event_.from >= 0 ? event_.from : event_.n, event_.n};
        switch (event_.kind) {
        case Event::call:
        case Event::open:
            event.kind = event_.kind == Event::call ? ScriptKind::call : ScriptKind::open;
            if (event_.kind == Event::open)
                span.to = -1;
            for (const Field& field : event_.in)
                add_input(event.inputs, field.name,
                          field.is_text ? field.text : std::to_string(field.number));
            add_values(event_.out, event);
            break;
        case Event::back:
            event.kind = ScriptKind::back;
            span = {event_.n, -1};
            backs_[event_.n] = script_.events.size();
            add_values(event_.in, event);
            break;
        case Event::slept:
            event.kind = ScriptKind::pause;
            break;
        case Event::locked:
            event.kind = ScriptKind::lock;
            event.length = static_cast<uint64_t>(event_.number);
            event.behind_thread = event_.behind_thread;
            event.behind = event_.behind;
            break;
        default:
            event.kind = ScriptKind::printed;
            event.length = static_cast<uint64_t>(event_.number);
            break;
        }
        script_.events.push_back(std::move(event));
        spans_.push_back(span);
        return true;
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

    /* Gives the points their order. */
    void place() {
        const auto lines = static_cast<int64_t>(run_.lines.size());
        std::vector<std::vector<size_t>> begins(static_cast<size_t>(lines) + 1);
        std::vector<std::vector<size_t>> ends(static_cast<size_t>(lines) + 1);
        for (size_t i = 0; i < spans_.size(); ++i) {
            begins[static_cast<size_t>(std::min(spans_[i].from, lines))].push_back(i);
            if (spans_[i].to >= 0)
                ends[static_cast<size_t>(spans_[i].to)].push_back(i);
        }
        uint32_t point = 0;
        for (size_t line = 0; line <= static_cast<size_t>(lines); ++line) {
            /* A call that nothing came into has one point for both. Calls begin before the callback
             * of the same line, which may come out of one of them. */
            for (const bool callbacks : {false, true})
                for (const size_t i : begins[line])
                    if ((script_.events[i].kind == ScriptKind::back) == callbacks &&
                        spans_[i].to != static_cast<int64_t>(line))
                        script_.events[i].begin = point++;
            for (const size_t i : ends[line]) {
                if (spans_[i].from == static_cast<int64_t>(line))
                    script_.events[i].begin = point;
                script_.events[i].end = point++;
            }
        }
        script_.points = point + 1;
    }

    /* A callback that came while its own thread was in a call came out of that call. */
    void nest() {
        std::vector<uint32_t> beginning(script_.points, no_event), ending = beginning;
        for (uint32_t i = 0; i < script_.events.size(); ++i) {
            const ScriptEvent& event = script_.events[i];
            if (event.kind == ScriptKind::printed || event.begin == event.end)
                continue;
            beginning[event.begin] = i;
            if (event.end != no_point)
                ending[event.end] = i;
        }
        std::map<uint32_t, std::vector<uint32_t>> inside; /* calls that have begun, by thread */
        for (uint32_t point = 0; point < script_.points; ++point) {
            if (const uint32_t i = ending[point]; i != no_event)
                std::erase(inside[script_.events[i].thread], i);
            if (const uint32_t i = beginning[point]; i != no_event) {
                ScriptEvent& event = script_.events[i];
                std::vector<uint32_t>& calls = inside[event.thread];
                if (event.kind == ScriptKind::call || event.kind == ScriptKind::open)
                    calls.push_back(i);
                else if (event.kind == ScriptKind::back && !calls.empty())
                    event.inside = calls.back();
            }
        }
    }

    const Tape& tape_;
    const Run& run_;
    Script& script_;
    LineParser parser_;
    Event event_;
    std::vector<Span> spans_; /* of the script's events */
    std::map<int64_t, size_t> backs_;
};

} // namespace

bool compile(const Tape& tape, const Run& run, Script& script, std::string& error) {
    script = {};
    return Compiler(tape, run, script).compile(error);
}

} // namespace lab::tape
