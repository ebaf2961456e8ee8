// SPDX-License-Identifier: Apache-2.0
/* A recorded run in the form in which the replayer takes it: what `kvt-lab replay` makes of the
 * tape's lines once they are checked, so that the library in the replayed program needs no reader
 * of its own for JSON. Both sides are built together: nothing outside of them sees it. */
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace lab::tape {

constexpr uint32_t no_event = 0xFFFFFFFF;

struct ScriptValue {
    std::string name;
    std::string text;   /* bytes, or text */
    int64_t number = 0; /* or a number; of bytes their length, which zeros fill up */
    uint8_t is_text = 0;
};

/* In the order in which the program's threads went on: calls as they came back, callbacks as they
 * began, waits as they were over. Between one of these and its own next one no thread was held up,
 * and none other ran. A call that never came back and a clock's reading are no such points. */
enum class ScriptKind : uint8_t { call, open, back, wait, clock };

struct ScriptEvent {
    ScriptKind kind = ScriptKind::call;
    uint32_t line = 0; /* in the tape, for messages */
    uint32_t thread = 0;
    uint32_t inside = no_event; /* of a callback: the call of the same thread that it came in */
    int64_t at_us = 0;
    int64_t took_us = 0;
    std::string name;                /* of the call, the kind of callback or wait */
    std::string inputs;              /* of a call, as input_text makes them */
    std::vector<ScriptValue> values; /* a call's outputs; what a callback brings */
    int64_t result = 0;
    int64_t error = 0;  /* errno */
    int64_t number = 0; /* a wait: how many of its kind the thread came past; a clock: ns */

    bool is_point() const { return kind != ScriptKind::open && kind != ScriptKind::clock; }
};

struct ScriptService {
    std::string name;
    uint32_t id = 0;
    uint32_t library = 0;
    uint32_t major = 0;
    uint32_t minor = 0;
};

struct Script {
    uint8_t as_recorded = 0;
    std::string output;
    std::vector<ScriptService> services;
    std::vector<ScriptEvent> events;
};

/* Inputs are compared as text: NAME=VALUE and a separator each. */
constexpr char input_separator = '\x1F';

inline void add_input(std::string& inputs, std::string_view name, std::string_view value) {
    inputs.append(name).append(1, '=').append(value).append(1, input_separator);
}

/* Calls that concern nothing in particular; of the others the first input is the object, and each
 * object has a sequence of its own. */
inline bool has_object(std::string_view call) {
    static constexpr std::string_view without[] = {
        "Diag_LSM_Init",
        "Diag_LSM_DeInit",
        "diag_switch_logging",
        "diag_register_callback",
        "diag_has_remote_device",
        "system",
        "_ZN8qtimutex14QtiSharedMutexC1Ev",
        "_ZN8qtimutex14QtiSharedMutexD1Ev",
    };
    for (const std::string_view name : without)
        if (name == call)
            return false;
    return true;
}

/* The sequence that a call belongs to. */
inline std::string sequence_of(const std::string& call, const std::string& inputs) {
    return has_object(call)
               ? call + input_separator + inputs.substr(0, inputs.find(input_separator))
               : call;
}

/* ---- as bytes ---- */

class ScriptWriter {
  public:
    explicit ScriptWriter(std::string& bytes) : bytes_(bytes) {}
    template <typename Number> void number(Number value) {
        char raw[sizeof value];
        std::memcpy(raw, &value, sizeof value);
        bytes_.append(raw, sizeof raw);
    }
    void text(const std::string& value) {
        number(static_cast<uint64_t>(value.size()));
        bytes_ += value;
    }
    void count(size_t value) { number(static_cast<uint64_t>(value)); }
    static constexpr bool reads = false;

  private:
    std::string& bytes_;
};

/* Bytes that end too early give zeros, and good() is false. */
class ScriptReader {
  public:
    explicit ScriptReader(std::string_view bytes) : bytes_(bytes) {}
    template <typename Number> void number(Number& value) {
        if (!take(sizeof value)) {
            value = {};
            return;
        }
        std::memcpy(&value, bytes_.data() - sizeof value, sizeof value);
    }
    void text(std::string& value) {
        uint64_t length = 0;
        number(length);
        const char* const from = bytes_.data();
        if (length <= bytes_.size() && take(static_cast<size_t>(length)))
            value.assign(from, static_cast<size_t>(length));
        else
            good_ = false;
    }
    /* Never more than there are bytes. */
    size_t count() {
        uint64_t value = 0;
        number(value);
        good_ = good_ && value <= bytes_.size();
        return good_ ? static_cast<size_t>(value) : 0;
    }
    bool good() const { return good_; }
    static constexpr bool reads = true;

  private:
    bool take(size_t length) {
        good_ = good_ && length <= bytes_.size();
        if (good_)
            bytes_.remove_prefix(length);
        return good_;
    }

    std::string_view bytes_;
    bool good_ = true;
};

template <typename Stream, typename Item, typename Each>
void pass_list(Stream& stream, std::vector<Item>& list, Each each) {
    if constexpr (Stream::reads)
        list.resize(stream.count());
    else
        stream.count(list.size());
    for (Item& item : list)
        each(item);
}

/* Writes the script, or reads it: the one description of its bytes. */
template <typename Stream> void pass_script(Stream& stream, Script& script) {
    stream.number(script.as_recorded);
    stream.text(script.output);
    pass_list(stream, script.services, [&](ScriptService& service) {
        stream.text(service.name);
        stream.number(service.id);
        stream.number(service.library);
        stream.number(service.major);
        stream.number(service.minor);
    });
    pass_list(stream, script.events, [&](ScriptEvent& event) {
        stream.number(event.kind);
        stream.number(event.line);
        stream.number(event.thread);
        stream.number(event.inside);
        stream.number(event.at_us);
        stream.number(event.took_us);
        stream.text(event.name);
        stream.text(event.inputs);
        pass_list(stream, event.values, [&](ScriptValue& value) {
            stream.text(value.name);
            stream.text(value.text);
            stream.number(value.number);
            stream.number(value.is_text);
        });
        stream.number(event.result);
        stream.number(event.error);
        stream.number(event.number);
    });
}

} // namespace lab::tape
