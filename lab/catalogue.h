// SPDX-License-Identifier: Apache-2.0
/* What kvt's commands mean, as data: the rows of catalogue.toml. They are read and checked at build
 * time (catalogue_load.h) and become tables of the program, so that nothing is parsed at its start.
 * catalogue.toml's head tells what each field holds. */
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

using Texts = std::span<const std::string_view>;

enum class Effect { none, until_restart, kept };
enum class ArgumentKind { integer, path, text };
enum class ValueKind { integer, number, text, bytes, word };

/* A number and what it stands for. */
struct Name {
    long long number;
    std::string_view text;
};

struct Argument {
    std::string_view name, meaning, outside;
    ArgumentKind kind;
    bool hex, optional;
    bool has_range;     /* of an integer */
    long long min, max; /* a text's or path's length, an integer's value */
    size_t most;        /* how many words it takes; 1 unless it repeats */
    std::span<const Name> names;
};

struct Value {
    std::string_view name, meaning, unit, find;
    ValueKind kind;
    int at, size; /* of a word: its place among the bytes */
    std::span<const Name> names;
};

/* A line that tells something, and what it tells; \1 in `why` stands for the first group. */
struct Rule {
    std::string_view find, why;
};

/* A way to read back; the first that fits is used. */
struct Verify {
    std::string_view when_argument, when_value; /* "": always */
    std::string_view seen;                      /* in the command's own output; "": always */
    std::string_view run, also, unless;
    double within_s; /* it is read again and again as long as that */
    Texts ok;
};

/* A way back; the first whose `seen` was found when `read` was run before the command. */
struct Undo {
    std::string_view read, seen, unless, run;
};

struct Command {
    std::string_view words, title, does, danger, leaves, example, adds_ms;
    Effect effect;
    bool reboot, in_help, asks;
    double ordinary_s, longest_s;
    Texts needs;
    std::span<const Argument> arguments;
    std::span<const Value> values;
    std::span<const Rule> failed;
    Texts ok;
    std::span<const Verify> verify;
    std::span<const Undo> undo;
    int line; /* of its row in catalogue.toml */
};

/* A group of commands: the first word of their rows. */
struct Group {
    int number;
    std::string_view title, about;
};

/* The rows and the groups, in the catalogue's order. */
std::span<const Command> catalogue();
std::span<const Group> groups();

/* The row whose words begin the command line, the longest if several do; null when there is none.
 * `count` gets how many words of the command line it takes. */
const Command* find_command(std::span<const Command> rows, const std::vector<std::string>& line,
                            size_t& count);

/* The words of a text, which blanks separate. */
std::vector<std::string> words_of(std::string_view text);

} // namespace lab
