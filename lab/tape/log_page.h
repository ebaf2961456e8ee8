// SPDX-License-Identifier: Apache-2.0
/* A simulated phone's log: what crossed in it, and its lines in words. */
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <string_view>

#include "tape/crossing.h"
#include "tape/diag_links.h"

namespace lab::tape {

/* A line of the log, taken apart. Views live as long as the line. */
struct LogLine {
    std::string_view date, time, process, kind, text;
};

/* False when it is no line of a log. */
bool read_log_line(std::string_view line, LogLine& parts);

/* The next word of a text, which begins behind it then. */
std::string_view take_word(std::string_view& text);

/* True for a text that begins with a line of a log. */
bool is_log(std::string_view text);

/* Lines one after the other. */
class LogCrossings {
  public:
    /* `crossing` is to be the same one for all lines. */
    void read(const LogLine& line, Crossing& crossing);

  private:
    void message(std::string_view text, Crossing& crossing);
    void packet(std::string_view text, Crossing& crossing);

    std::map<std::string, uint32_t> asked_; /* exchange, by process, service and transaction */
    std::map<uint32_t, DiagLinks> diag_;    /* by process */
    uint32_t exchanges_ = 0;
};

class LogPage {
  public:
    /* Appends what a person reads, without newline. False when it is no line of a log. */
    bool show(std::string_view line, std::string& out);

  private:
    LogCrossings log_;
    Teller teller_;
    Crossing crossing_;
    std::string words_;
};

/* Calls take(LINE) for each line; tells, on standard error, those for which it returns false.
 * False when there were any. */
template <typename Take> bool each_log_line(std::string_view text, Take take) {
    bool whole = true;
    for (size_t number = 1; !text.empty(); ++number) {
        const size_t end = text.find('\n');
        if (!take(text.substr(0, end))) {
            std::fprintf(stderr, "kvt-lab: line %zu: not a line of a phone's log\n", number);
            whole = false;
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return whole;
}

} // namespace lab::tape
