// SPDX-License-Identifier: Apache-2.0
/* kvt-doctor: holds what a phone has against what kvt is compiled for. It sends the modem nothing.
 */
#pragma once

#include <string>
#include <vector>

#include "needs.h"

namespace doctor {

/* Beside the needs that the catalogue knows: a program that does not start can do nothing. */
inline constexpr unsigned need_start = 1U << 31;

struct Check {
    enum State { good, bad, note };
    State state;
    std::string name;  /* what was looked at: "libdiag.so", "uim object" */
    std::string found; /* what was there */
    std::string remedy;
    unsigned lost = 0; /* of a bad one: the needs that are not met, Need bits and need_start */
};

struct Report {
    std::vector<Check> checks;
};

struct Options {
    bool services = false; /* ask the QMI framework which services are up: a look-up */
};

Report examine(const Options& options);

/* The AT channel at `path`; `phone`: this is Android, so that a missing device is a fault. */
Check check_at_channel(const char* path, bool phone);

bool can_work(const Report& report, const CommandNeeds& command);
/* No check failed, so that every command can work. */
bool all_good(const Report& report);
/* Commands that a check costs, for a person: "5 5, 9" (all of group 9), "every command, kvt does
 * not start". */
std::string lost_commands(const Check& check);

/* Behind the last row of the first one's group. */
const CommandNeeds* group_end(const CommandNeeds* first);

void print_text(const Report& report);
void print_json(const Report& report);

} // namespace doctor
