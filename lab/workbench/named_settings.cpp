// SPDX-License-Identifier: Apache-2.0
#include "workbench/named_settings.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>

#include <fnmatch.h>

#include "names.h"
#include "phone_text.h"
#include "workbench/directory.h"
#include "workbench/identity.h"
#include "workbench/levels.h"

namespace lab::workbench {

using phone_files::Setting;

namespace {

constexpr size_t longest_property = 91;
constexpr size_t longest_address = 200;

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

bool wrong(std::string& error, const std::string& message) {
    error = message;
    return false;
}

/* ---- what a file holds other than one setting ---- */

using Words = const std::vector<std::string>&;

bool to_eid(Words values, std::string& text, std::string&) {
    text = values.size() == 1 ? checked_eid(values[0]) : "";
    return !text.empty();
}

bool to_imei(Words values, std::string& text, std::string&) {
    text = values.size() == 1 ? imei_item(values[0]) : "";
    return !text.empty();
}

std::string from_imei(const std::string& item) {
    const std::string digits = imei_digits(item);
    return digits.empty() ? "no IMEI" : digits;
}

bool is_service(const std::string& word) {
    return std::any_of(std::begin(names::services), std::end(names::services),
                       [&](const names::Service& row) { return word == row.name; });
}

bool to_services(Words values, std::string& text, std::string&) {
    text = values == std::vector<std::string>{"none"} ? "" : joined(values);
    return !values.empty() &&
           (text.empty() || std::all_of(values.begin(), values.end(), is_service));
}

bool to_address(Words values, std::string& text, std::string&) {
    text = joined(values);
    return values.size() == 1 && text.size() <= longest_address;
}

/* A file, and what a person writes for what stands in it. */
struct Special {
    const char* name;
    const char* file;
    const char* range;
    const char* meaning;
    bool (*to_file)(Words values, std::string& text, std::string& error);
    std::string (*from_file)(const std::string& text); /* null: as it stands there */
    bool is_text;                                      /* a line, not bytes */
};

constexpr Special specials[] = {
    {"eid", "euicc/eid", "32 digits, or the 30 before the check digits", "the eUICC's EID", to_eid,
     nullptr, true},
    {"imei", "nv/0/550", "14 digits, or 15 with the check digit", "IMEI of the first subscription",
     to_imei, from_imei, false},
    {"imei2", "nv/1/550", "14 digits, or 15 with the check digit",
     "IMEI of the second subscription", to_imei, from_imei, false},
    {"services", "services", "vendor uim sar nas vs, or none", "services that are up", to_services,
     nullptr, true},
    {"smdp", "euicc/smdp", "an address of up to 200 characters", "default SM-DP+ address",
     to_address, nullptr, true},
};

constexpr const char* property_prefix = "prop.";

bool set_property(const std::string& key, Words values, std::string& error) {
    const std::string text = joined(values);
    if (key.empty() || key[0] == '.' || key.find('/') != std::string::npos || key.size() > 200)
        return wrong(error, "'" + key + "' can't be the key of a property");
    if (text.size() > longest_property || text.find('\n') != std::string::npos)
        return wrong(error, "a property is a line of up to 91 characters");
    return write_phone_file("prop/" + key, text + "\n", error);
}

/* ---- settings ---- */

std::string range_of(const Setting& row) {
    std::string text;
    if (row.range.least <= row.range.most)
        text = std::to_string(row.range.least) + " to " + std::to_string(row.range.most);
    for (std::istringstream words(row.words); words;) {
        std::string word;
        if (words >> word)
            text += (text.empty() ? "" : " or ") + word;
    }
    return text;
}

/* The value as the file holds it; empty when it can't be used. Seconds count where milliseconds do:
 * "3 s". */
std::string setting_value(const Setting& row, std::vector<std::string> values) {
    long long factor = 1;
    if (values.size() == 2 && *row.unit != '\0') {
        const bool seconds = std::strcmp(row.unit, "ms") == 0 && values[1] == "s";
        if (!seconds && values[1] != row.unit)
            return "";
        factor = seconds ? 1000 : 1;
        values.pop_back();
    }
    if (values.size() != 1)
        return "";
    std::istringstream words(row.words);
    for (std::string word; words >> word;)
        if (word == values[0])
            return word;
    const std::optional<int64_t> number = phone_files::whole_number(values[0]);
    const auto within = [&](long long least, long long most) {
        return number && *number >= least && *number <= most;
    };
    if (!within(row.range.least / factor, row.range.most / factor))
        return "";
    return factor == 1 ? values[0] : std::to_string(*number * factor);
}

bool set_setting(const Setting& row, Words values, std::string& error) {
    const std::string text = setting_value(row, values);
    if (text.empty())
        return wrong(error, name_of_file(row.file) + ": '" + joined(values) + "' is not " +
                                range_of(row) + (*row.unit == '\0' ? "" : " ") + row.unit);
    return write_phone_file(row.file, text + "\n", error);
}

bool set_levels(const std::vector<const Level*>& found, Words values, int sub, std::string& error) {
    return std::all_of(found.begin(), found.end(),
                       [&](const Level* level) { return good_values(*level, values, error); }) &&
           std::all_of(found.begin(), found.end(),
                       [&](const Level* level) { return set_level(*level, sub, values, error); });
}

/* A level by its whole name, or those of every carrier that have it: "rsrp". */
std::vector<const Level*> levels_named(const std::string& name) {
    std::vector<const Level*> found;
    for (const Level& level : levels())
        if (level.name == name || (*level.field().unit == 'd' && short_name(level) == name))
            found.push_back(&level);
    return found;
}

std::string with_unit(const std::string& text, const char* unit) {
    return text + (*unit == '\0' ? "" : " ") + unit;
}

} // namespace

std::string name_of_file(const std::string& file) {
    if (file == "sim/1" || file == "sim/2")
        return "sim" + file.substr(4);
    std::string name = file;
    std::replace(name.begin(), name.end(), '/', '.');
    return name == "sim.2.kind" ? "sim2.kind" : name;
}

std::string wrong_with_services(const std::string& text) {
    std::istringstream words(text);
    for (std::string word; words >> word;)
        if (!is_service(word))
            return "no service is named '" + word + "'; those there are: vendor uim sar nas vs";
    return "";
}

std::vector<Name> all_names() {
    std::vector<Name> all;
    for (const Special& row : specials)
        all.push_back({row.name, "", row.range, row.meaning});
    all.push_back({"prop.KEY", "", "up to 91 characters", "an Android property"});
    for (const Setting& row : phone_files::settings)
        all.push_back({name_of_file(row.file), row.unit, range_of(row), row.meaning});
    for (const char* const name : {"rsrp", "rsrq", "rssi", "snr"}) {
        const std::vector<const Level*> found = levels_named(name);
        all.push_back({name, found[0]->field().unit, workbench::range_of(*found[0]),
                       "that level of every carrier"});
    }
    for (const Level& level : levels())
        all.push_back({level.name, level.field().unit, workbench::range_of(level),
                       level.fields.size() == 1
                           ? ""
                           : "one for all antennas, or up to " +
                                 std::to_string(level.fields.size()) + ", - to leave one"});
    return all;
}

bool set_name(const std::string& name, const std::vector<std::string>& values, int sub,
              std::string& error) {
    if (name.rfind(property_prefix, 0) == 0)
        return set_property(name.substr(std::strlen(property_prefix)), values, error);
    for (const Special& row : specials)
        if (name == row.name) {
            std::string text;
            if (!row.to_file(values, text, error))
                return wrong(error, name + ": '" + joined(values) + "' is not " + row.range);
            return write_phone_file(row.file, text + (row.is_text ? "\n" : ""), error);
        }
    for (const Setting& row : phone_files::settings)
        if (name == name_of_file(row.file))
            return set_setting(row, values, error);
    const std::vector<const Level*> found = levels_named(name);
    if (found.empty())
        return wrong(error, "'" + name + "' can't be set; kvt-lab phone set --list shows what can");
    return set_levels(found, values, sub, error);
}

std::vector<std::string> current_values(const std::vector<std::string>& patterns) {
    std::vector<std::string> lines;
    const auto wanted = [&](const std::string& name, bool mostly) {
        return patterns.empty()
                   ? mostly
                   : std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
                         return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
                     });
    };
    for (const Special& row : specials)
        if (const auto text =
                row.from_file != nullptr ? read_phone_file(row.file) : setting_text(row.file);
            text && wanted(row.name, true))
            lines.push_back(std::string(row.name) + " " +
                            (row.from_file != nullptr ? row.from_file(*text) : *text));
    std::error_code failed;
    std::vector<std::string> keys;
    for (std::filesystem::directory_iterator entry(phone_directory() / "prop", failed), end;
         !failed && entry != end; entry.increment(failed))
        keys.push_back(entry->path().filename().string());
    std::sort(keys.begin(), keys.end());
    for (const std::string& key : keys)
        if (wanted(property_prefix + key, true))
            lines.push_back(property_prefix + key + " " +
                            setting_text("prop/" + key).value_or("can't be read"));
    for (const Setting& row : phone_files::settings)
        if (const auto text = setting_text(row.file);
            text && wanted(name_of_file(row.file),
                           *text != row.fallback || std::strncmp(row.file, "sim/", 4) == 0))
            lines.push_back(name_of_file(row.file) + " " + with_unit(*text, row.unit));
    for (int sub = 0; sub < 2; ++sub)
        for (const Level& level : levels()) {
            if (level.debug && sub > 0)
                continue;
            const std::string text = level_text(level, sub);
            if (!text.empty() && wanted(level.name, *level.field().unit == 'd'))
                lines.push_back((sub == 0 ? "" : "--sub 1 ") + level.name + " " +
                                with_unit(text, level.field().unit));
        }
    return lines;
}

} // namespace lab::workbench
