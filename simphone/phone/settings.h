// SPDX-License-Identifier: Apache-2.0
/* The settings among the phone's files: text, one value a file or a few words a line. What can't be
 * used is told (complaint.h), and its default is used; a number out of range becomes the nearest
 * that is in it. A missing file is made with its default; one that is there but can't be read
 * counts as the default and stays. */
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "phone/complaint.h"
#include "phone_text.h"

namespace simphone {

/* A setting of the table in phone_files.h: a number, decimal or hexadecimal behind 0x, or one of a
 * few words. setting_number() is for those that have no words. */
int64_t setting_number(const std::string& name);
std::string setting(const std::string& name);

/* The settings that hold other than one value. */

/* Text without blanks around it. */
std::string setting_text(const std::string& name, const std::string& default_text);

/* The same, read by one of phone_lines.h. */
template <typename Value>
Value setting_read(const std::string& name, const std::string& default_text,
                   Value (*read)(const std::string&, phone_files::Complaints&)) {
    phone_files::Complaints complaints;
    Value value = read(setting_text(name, default_text), complaints);
    complain(name, complaints);
    return value;
}

/* True for a name of the table. */
bool is_setting(const std::string& name);

using phone_files::whole_number;
using phone_files::Word;
using phone_files::words_of;

std::vector<Word> setting_words(const std::string& name, const std::string& default_text);

using phone_files::Range;

/* The word as a number within range, told when it is none or out of it; fallback when it is none.
 */
int64_t number_within(const std::string& file, const Word& word, Range range, int64_t fallback);

using phone_files::day_ms;
using phone_files::times;

} // namespace simphone
