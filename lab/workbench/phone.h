// SPDX-License-Identifier: Apache-2.0
/* What "kvt-lab phone" can do: one row for each, which the command line is made of. */
#pragma once

#include <string>
#include <vector>

namespace lab::workbench {

struct Options {
    std::vector<std::string> words;
    std::string from;
    int sub = 0;
    bool list = false, follow = false, clear = false;
};

/* Each returns the exit status. phone.cpp: */
int show_phone(const Options& options);
int set(const Options& options);
int fault(const Options& options);
/* check_phone.cpp: */
int check_phone(const Options& options);
/* copies.cpp: */
int make_new(const Options& options);
int save(const Options& options);
int restore(const Options& options);
/* follow_log.cpp: */
int log(const Options& options);

/* Tells it and returns 2. */
int refuse(const std::string& message);

struct Action {
    const char* name;
    const char* words; /* that it takes; "" for none */
    const char* words_meaning;
    const char* meaning;
    int (*run)(const Options& options);
};

inline constexpr Action actions[] = {
    {"new", "DIRECTORY", "the phone to make", "make a simulated phone", make_new},
    {"show", "NAME", "patterns of names; what is mostly looked at when left out",
     "what the phone's files say, by name", show_phone},
    {"set", "NAME", "a name of --list, and its value or values", "set one thing", set},
    {"fault", "RULE", "CALL[:OBJECT] WHEN ACTION [ARGUMENT]; the rules there are when left out",
     "add a rule that makes calls fail", fault},
    {"check", "", "", "tell what the phone does not understand of its files", check_phone},
    {"save", "DIRECTORY", "where to", "keep a copy of the phone", save},
    {"restore", "DIRECTORY", "a copy", "make the phone what the copy is", restore},
    {"log", "", "", "what crossed, in words", log},
};

} // namespace lab::workbench
