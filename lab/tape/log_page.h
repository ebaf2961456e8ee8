// SPDX-License-Identifier: Apache-2.0
/* A simulated phone's log in words. */
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "tape/describe.h"

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

/* Lines one after the other: an answer is told by what was asked before. */
class LogPage {
  public:
    /* Appends what a person reads, without newline. False when it is no line of a log. */
    bool show(std::string_view line, std::string& out);

  private:
    std::map<std::string, Exchange> exchanges_; /* by process */
};

} // namespace lab::tape
