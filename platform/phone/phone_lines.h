// SPDX-License-Identifier: Apache-2.0
/* The phone's files that hold more than one value. Each reader takes a file's text without blanks
 * around it, gives what counts, and complains of the rest. */
#pragma once

#include "phone_text.h"

namespace phone_files {

/* "faults": CALL[:OBJECT] WHEN ACTION [ARGUMENT] */
struct Rule {
    int line;
    std::string text;
    std::string pattern;
    int64_t nth = 0;     /* the call of that number alone; 0: each */
    int64_t every_n = 0; /* each call whose number that divides; 0: no such */
    const Action* action = nullptr;
    std::string argument;
    std::optional<int64_t> number;
};
std::vector<Rule> read_rules(const std::string& text, Complaints& complaints);

/* "at/commands": PATTERN ANSWER [-> ACTION] */
struct AtRow {
    std::string pattern;
    std::string answer;
    std::vector<std::string> action;
};
std::vector<AtRow> read_at_rows(const std::string& text, Complaints& complaints);

/* "sim/SLOT.power": on [when], off [restarts when it was switched off] */
struct Power {
    bool on = true;
    std::optional<int64_t> number;
};
Power read_power(const std::string& text, Complaints& complaints);

/* "sim/SLOT.detect": auto, or LEVEL [WHO] */
struct Detect {
    bool forced = false;
    bool high = false;
    bool for_sim_driver = false;
};
Detect read_detect(const std::string& text, Complaints& complaints);

/* "sim/hotswap": stop, or the numbers of a running test; times in milliseconds */
struct HotSwap {
    bool running = false;
    int64_t after_push = 0, after_pull = 0, count = 0, since = 0;
};
HotSwap read_hotswap(const std::string& text, Complaints& complaints);

/* "euicc/profiles": ICCID KIND [NAME] */
struct Profile {
    std::string line;
    bool is_test;
};
std::vector<Profile> read_profiles(const std::string& text, Complaints& complaints);

/* "euicc/channels": CHANNEL RESTARTS, each open channel and when it was opened */
struct OpenChannel {
    int64_t channel, restarts;
};
std::vector<OpenChannel> read_channels(const std::string& text, Complaints& complaints);

} // namespace phone_files
