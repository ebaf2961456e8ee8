// SPDX-License-Identifier: Apache-2.0
/* What the modem's statistics hold, by people's names: items and blocks of the debug information,
 * a text file each, one named value a line (docs/phone.md). */
#pragma once

#include <string>
#include <vector>

#include "qmi_vs_records.h"

namespace lab::workbench {

/* One value, or that of every antenna: "lte.pcc.rsrp", "nr.pcc.rsrq", "debug.cm.init_state". */
struct Level {
    std::string name;
    const vs_records::Record* record;
    bool debug;                 /* of the debug information, not of an item */
    std::vector<size_t> fields; /* of the record, antenna by antenna */
    const vs_records::Field& field() const { return record->fields[fields[0]]; }
};

const std::vector<Level>& levels();

/* Its part behind the record's name: "rsrp". */
std::string short_name(const Level& level);

/* "-200 to 50", of a value. */
std::string range_of(const Level& level);

/* False with a message when set_level() would not take them. */
bool good_values(const Level& level, const std::vector<std::string>& values, std::string& error);

/* Sets its values in that subscription: one for all antennas, or one for each from the first on,
 * "-" to leave one as it is. False with a message, and nothing is changed then. */
bool set_level(const Level& level, int sub, const std::vector<std::string>& values,
               std::string& error);

/* The values as they count, blanks between; empty when the phone has no file of it. */
std::string level_text(const Level& level, int sub);

/* What is wrong with the text of a record, by line; "" where nothing is. */
std::string wrong_with_level(const vs_records::Record& record, const std::string& line);

} // namespace lab::workbench
