// SPDX-License-Identifier: Apache-2.0
/* A command line of kvt as the catalogue knows it: its row and its arguments by name. */
#pragma once

#include <map>

#include "catalogue.h"

namespace lab {

struct CommandLine {
    const Command* row = nullptr;
    std::vector<std::string> words;                              /* as kvt gets it */
    std::map<std::string_view, std::vector<std::string>> values; /* of each argument */
    std::string text() const;                                    /* the words, blanks between */
};

/* Finds the row and checks the arguments against it. False with a message when kvt would not do
 * what was typed. */
bool read_command_line(const std::vector<std::string>& words, CommandLine& line,
                       std::string& error);

/* A number as it is typed: decimal, or hexadecimal where that is taken. Bits of a negative one are
 * those of its two's complement. */
bool read_number(const std::string& text, bool hex, bool& negative, unsigned long long& magnitude);

/* What a command showed, by name, as words of a command line: for {before.NAME}. */
using ShownWords = std::map<std::string, std::vector<std::string>>;

/* A command line of the catalogue with {NAME} and {before.NAME} filled in. */
std::vector<std::string> filled_words(std::string_view form, const CommandLine& line,
                                      const ShownWords& before);

/* A pattern of the catalogue with {NAME} and {NAME:FORM} filled in. */
std::string filled_pattern(std::string_view form, const CommandLine& line);

} // namespace lab
