// SPDX-License-Identifier: Apache-2.0
/* Reads tapes: JSON Lines, one event a line, any number of runs, whose lines may stand between one
 * another's. lab/schema/tape.json describes a line.
 *
 * A tape is given as what it is: whatever stands in it, reading it ends with runs that are whole,
 * runs that are told to be broken, and lines that are told to be none. */
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lab::tape {

/* A member of "in" or "out". Views live as long as the parsed line. */
struct Field {
    std::string_view name;
    std::string_view text; /* bytes as they are */
    int64_t number = 0;
    bool is_text = false;
};

struct Service {
    std::string name;
    int64_t id, library, major, minor;
};

/* One line, parsed. Which members count depends on the kind. */
struct Event {
    enum Kind { head, call, open, back, done, printed, waited, clock, end };
    Kind kind = head;
    std::string_view run;
    int64_t n = 0;
    int64_t at_us = 0;
    int64_t took_us = 0;
    int64_t thread = 0;
    std::string_view name; /* of a call, or the kind of a callback or wait */
    int64_t from = -1;     /* number of the event that came next when the call began; -1: its own */
    int64_t number = 0;    /* done: the callback's line; printed: bytes; waited: past; clock: ns */
    int64_t result = 0;
    int64_t error = 0;       /* errno */
    std::string_view output; /* end: all that was printed */
    std::vector<Field> in, out;

    /* head */
    int64_t time = 0;
    std::vector<std::string> args;
    std::vector<Service> services;
    std::string_view build, machine, model;

    const Field* input(std::string_view name) const;
    const Field* output_named(std::string_view name) const;
    /* The number of an input, or `otherwise` when there is none of that name. */
    int64_t input_number(std::string_view name, int64_t otherwise = -1) const;
    /* Bytes of a buffer in hex, filled up with zeros to NAME_len. False: no such member. */
    bool bytes(const std::vector<Field>& fields, std::string_view name, std::string& out) const;
};

/* Parses lines, one at a time: what an event views is gone with the next. */
class LineParser {
  public:
    LineParser();
    ~LineParser();
    /* At least `padding` bytes behind the line must be readable. False, with a message, when it is
     * no line of a tape. */
    bool parse(std::string_view line, Event& event, std::string& error);
    static constexpr size_t padding = 64;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

struct LineRef {
    size_t offset;
    uint32_t length;
    uint32_t number; /* in the file, from 1 */
};

struct Run {
    std::string id;
    std::vector<LineRef> lines; /* in their order */
    std::vector<std::string> args;
    std::string problem; /* why it can't be replayed; empty: it is whole */
    bool ended = false;
};

/* "4 1 0 550" */
std::string command_text(const std::vector<std::string>& args);

class Tape {
  public:
    /* False, with a message, when the file can't be read or holds no run at all. */
    bool open(const std::string& path, std::string& error);
    /* The same from memory. */
    bool read(std::string text, std::string& error);

    const std::vector<Run>& runs() const { return runs_; }
    /* Lines that belong to no run: "line 7: ...". */
    const std::vector<std::string>& strays() const { return strays_; }
    /* With enough behind it for a parser. */
    std::string_view line(const LineRef& ref) const {
        return std::string_view(text_).substr(ref.offset, ref.length);
    }

  private:
    void index();
    std::string text_;
    std::vector<Run> runs_;
    std::vector<std::string> strays_;
};

/* A file's bytes. False, with a message, when it can't be read. */
bool read_file(const std::string& path, std::string& bytes, std::string& error);

/* Hex digits to bytes; false when they are none or not in pairs. */
bool from_hex(std::string_view hex, std::string& bytes);

} // namespace lab::tape
