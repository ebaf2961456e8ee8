// SPDX-License-Identifier: Apache-2.0
/* The names that "kvt-lab phone set" takes. */
#pragma once

#include <string>
#include <vector>

#include "phone_files.h"

namespace lab::workbench {

struct Name {
    std::string name, unit, range, meaning;
};

/* All of them; of "prop.KEY" any key is one. */
std::vector<Name> all_names();

/* Sets what the name stands for in the phone; levels in that subscription. False with a message,
 * and the phone is as it was. */
bool set_name(const std::string& name, const std::vector<std::string>& values, int sub,
              std::string& error);

/* "NAME VALUE UNIT", of everything that the phone has a file for and whose name matches a pattern;
 * without patterns what people mostly look at. */
std::vector<std::string> current_values(const std::vector<std::string>& patterns);

/* What is wrong with the text of "services", and what would be right; empty: nothing. */
std::string wrong_with_services(const std::string& text);

/* People's name of a setting's file: "sim1" of "sim/1", "diag.silent" of "diag/silent". */
std::string name_of_file(const std::string& file);

} // namespace lab::workbench
