// SPDX-License-Identifier: Apache-2.0
/* The pages that are made from the catalogue. Each function gives a whole page as text. */
#pragma once

#include <string>
#include <vector>

namespace lab {

/* A verb of kvt-lab as its command line knows it. */
struct VerbText {
    struct Option {
        std::string name; /* "--timeout SECONDS" */
        std::string meaning;
    };
    std::string name, usage, meaning;
    std::vector<Option> options;
};

std::string kvt_man_page();
std::string lab_man_page(const std::vector<VerbText>& verbs);
std::string bash_completion();
std::string zsh_completion();
std::string doctor_needs();

/* Puts the head of each command between its marks, "<!-- kvt 4 1 -->" and "<!-- end -->". False
 * with a message when a command has no marks, or marks have no command. */
bool fill_command_heads(std::string& text, std::string& error);

/* "What they are (unit)" of an argument: meaning, range, and what is done with others. */
std::string argument_text(const struct Argument& argument);

} // namespace lab
