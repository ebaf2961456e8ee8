// SPDX-License-Identifier: Apache-2.0
/* Reads what people write into the simulated phone's files (phone_files.h): the phone reads by these,
 * and says of what it can't use the same words as whoever checks the files. */
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "phone_files.h"

namespace phone_files {

/* What can't be used, and what would be right. */
struct Complaint {
    int line; /* from 1; 0: the file as a whole */
    std::string text;
};
using Complaints = std::vector<Complaint>;

struct Word {
    std::string text;
    int line; /* from 1 */
};

std::vector<Word> words_of(const std::string& text);

/* Text without blanks around it. */
std::string trimmed(const std::string& text);

/* A whole word as a number, decimal or hexadecimal behind 0x; nothing when it is none. What does
 * not fit is INT64_MIN or MAX. */
std::optional<int64_t> whole_number(const std::string& text);

/* The word as a number within range; out of it the nearest that is within, `fallback` when it is no
 * number. */
int64_t number_within(const Word& word, Range range, int64_t fallback, Complaints& complaints);

/* A setting's value as it counts: one of its words, or a number within its range. */
std::string value_of(const Setting& row, const std::string& text, Complaints& complaints);

/* Milliseconds since the epoch, as state files hold them. */
constexpr Range times = {0, INT64_C(1) << 50};

} // namespace phone_files
