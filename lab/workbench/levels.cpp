// SPDX-License-Identifier: Apache-2.0
#include "workbench/levels.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>

#include "workbench/directory.h"

namespace lab::workbench {

using vs_records::Field;
using vs_records::Kind;
using vs_records::Record;

namespace {

/* What people may mean by a level. */
struct Scale {
    const char* unit;
    double least, most;
};
const std::string unchanged = "-";
constexpr Scale scales[] = {{"dBm", -200, 50}, {"dB", -100, 100}};

const Scale* scale_of(const Field& field) {
    const auto* const scale =
        std::find_if(std::begin(scales), std::end(scales),
                     [&](const Scale& row) { return std::strcmp(row.unit, field.unit) == 0; });
    return scale == std::end(scales) ? nullptr : scale;
}

uint64_t most_of(Kind kind) {
    return vs_records::width(kind) == 8 ? UINT64_MAX
                                        : (UINT64_C(1) << 8 * vs_records::width(kind)) - 1;
}

/* "rsrp" of "rsrp_rx2". */
std::string without_antenna(const std::string& name) {
    const size_t end = name.size() < 4 ? std::string::npos : name.size() - 4;
    return end != std::string::npos && name.compare(end, 3, "_rx") == 0 ? name.substr(0, end)
                                                                        : name;
}

void add_levels(std::vector<Level>& all, const Record& record, bool debug) {
    const size_t first = all.size();
    for (size_t i = 0; i < record.fields.size(); ++i) {
        const std::string name = std::string(debug ? "debug." : "") + record.name + "." +
                                 without_antenna(record.fields[i].name);
        const auto level = std::find_if(all.begin() + static_cast<std::ptrdiff_t>(first), all.end(),
                                        [&](const Level& row) { return row.name == name; });
        if (level != all.end())
            level->fields.push_back(i);
        else
            all.push_back({name, &record, debug, {i}});
    }
}

std::string bytes_file(const Level& level, int sub) {
    return "stats/" + std::to_string(sub) + "." + std::to_string(level.record->id);
}

std::string text_file(const Level& level, int sub) {
    return level.debug ? std::string("stats_debug/") + level.record->name + ".txt"
                       : bytes_file(level, sub) + ".txt";
}

/* Nanoseconds since 1970; nothing when the file is missing. */
std::optional<int64_t> written(const std::string& name) {
    struct stat info {};
    if (::stat((phone_directory() / name).c_str(), &info) != 0)
        return std::nullopt;
    return info.st_mtim.tv_sec * INT64_C(1000000000) + info.st_mtim.tv_nsec;
}

/* The text as far as it counts: not when the bytes are as new. */
std::string text_that_counts(const Level& level, int sub) {
    const std::string file = text_file(level, sub);
    const std::optional<int64_t> text = written(file);
    const std::optional<int64_t> bytes =
        level.debug ? std::nullopt : written(bytes_file(level, sub));
    return text && (!bytes || *text > *bytes) ? read_phone_file(file).value_or("") : "";
}

/* Its time is made later than that of the bytes, however quickly it comes after them. */
bool write_text(const Level& level, int sub, const std::string& text, std::string& error) {
    const std::string file = text_file(level, sub);
    if (!write_phone_file(file, text, error))
        return false;
    const std::optional<int64_t> bytes =
        level.debug ? std::nullopt : written(bytes_file(level, sub));
    if (!bytes || written(file) > bytes)
        return true;
    const int64_t later = *bytes + 1000;
    const timespec time = {later / 1000000000, later % 1000000000};
    const timespec both[] = {time, time};
    ::utimensat(AT_FDCWD, (phone_directory() / file).c_str(), both, 0);
    return true;
}

bool good_value(const Field& field, const std::string& text) {
    const char* const end = text.data() + text.size();
    if (field.kind == Kind::f32) {
        double value = 0;
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        const Scale* const scale = scale_of(field);
        return error == std::errc() && stop == end && std::isfinite(value) &&
               (scale == nullptr || (value >= scale->least && value <= scale->most));
    }
    const bool hex = text.rfind("0x", 0) == 0;
    uint64_t value = 0;
    const auto [stop, error] =
        std::from_chars(text.data() + (hex ? 2 : 0), end, value, hex ? 16 : 10);
    return error == std::errc() && stop == end && value <= most_of(field.kind);
}

std::string range_text(const Field& field) {
    if (const Scale* const scale = scale_of(field)) {
        std::ostringstream text;
        text << scale->least << " to " << scale->most;
        return text.str();
    }
    return "0 to " + std::to_string(most_of(field.kind));
}

std::string range_with_unit(const Field& field) {
    return range_text(field) + (*field.unit == '\0' ? "" : " ") + field.unit;
}

/* The lines of a text, without those of some fields. */
std::string lines_without(const std::string& text, const std::map<std::string, std::string>& set) {
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string name;
        if (!(words >> name) || set.count(name) == 0)
            kept += line + "\n";
    }
    return kept;
}

/* A value as the bytes hold it. */
std::string value_in_bytes(const Record& record, size_t index, const std::string& bytes) {
    const Field& field = record.fields[index];
    const size_t at = vs_records::offset_of(record.fields, index);
    if (at + vs_records::width(field.kind) > bytes.size())
        return "?";
    uint64_t number = 0;
    for (size_t i = vs_records::width(field.kind); i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    if (field.kind != Kind::f32)
        return std::to_string(number);
    const auto bits = static_cast<uint32_t>(number);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

unsigned debug_version() {
    const std::string text = setting_text("stats_debug/version").value_or("4");
    unsigned version = 4;
    std::from_chars(text.data(), text.data() + text.size(), version);
    return version;
}

} // namespace

const std::vector<Level>& levels() {
    static const std::vector<Level> all = [] {
        std::vector<Level> made;
        for (const Record& record : vs_records::items)
            add_levels(made, record, false);
        for (const Record& record : vs_records::debug_blocks)
            add_levels(made, record, true);
        return made;
    }();
    return all;
}

std::string short_name(const Level& level) { return without_antenna(level.field().name); }

std::string range_of(const Level& level) { return range_text(level.field()); }

bool good_values(const Level& level, const std::vector<std::string>& values, std::string& error) {
    if (values.empty() || values.size() > level.fields.size()) {
        error = level.name + " takes " +
                (level.fields.size() == 1 ? "one value"
                                          : "1 to " + std::to_string(level.fields.size()) +
                                                " values, antenna by antenna");
        return false;
    }
    if (level.debug && level.field().since > debug_version()) {
        error = level.name + " came with layout version " + std::to_string(level.field().since) +
                "; the phone's is " + std::to_string(debug_version()) + " (stats_debug.version)";
        return false;
    }
    for (const std::string& value : values)
        if ((value != unchanged || values.size() == 1) && !good_value(level.field(), value)) {
            error = level.name + ": '" + value + "' is not " + range_with_unit(level.field());
            return false;
        }
    return true;
}

bool set_level(const Level& level, int sub, const std::vector<std::string>& values,
               std::string& error) {
    if (!good_values(level, values, error))
        return false;
    std::map<std::string, std::string> set;
    for (size_t i = 0; i < level.fields.size(); ++i) {
        const Field& field = level.record->fields[level.fields[i]];
        const std::string& value = values.size() == 1  ? values[0]
                                   : i < values.size() ? values[i]
                                                       : unchanged;
        if (value != unchanged)
            set[field.name] = value + (*field.unit == '\0' ? "" : " ") + field.unit;
    }
    std::string text = lines_without(text_that_counts(level, sub), set);
    for (const auto& [name, value] : set)
        text.append(name).append(" ").append(value).append("\n");
    return write_text(level, sub, text, error);
}

std::string level_text(const Level& level, int sub) {
    const std::optional<std::string> bytes =
        level.debug ? std::nullopt : read_phone_file(bytes_file(level, sub));
    std::map<std::string, std::string> named;
    std::istringstream lines(text_that_counts(level, sub));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string name, value;
        if (words >> name >> value)
            named[name] = value;
    }
    std::string text;
    bool there = false;
    for (const size_t index : level.fields) {
        const auto value = named.find(level.record->fields[index].name);
        there = there || value != named.end() || bytes;
        text += (text.empty() ? "" : " ") + (value != named.end() ? value->second
                                             : bytes ? value_in_bytes(*level.record, index, *bytes)
                                                     : "?");
    }
    return there ? text : "";
}

std::string wrong_with_level(const Record& record, const std::string& line) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string name, value, unit, more;
    if (!(words >> name))
        return "";
    words >> value >> unit >> more;
    const auto field = std::find_if(record.fields.begin(), record.fields.end(),
                                    [&](const Field& row) { return name == row.name; });
    if (field == record.fields.end())
        return "'" + name + "' is no value of " + record.name;
    if (!good_value(*field, value) || (!unit.empty() && unit != field->unit) || !more.empty())
        return "'" + line + "' can't be used (" + name + ": " + range_with_unit(*field) + ")";
    return "";
}

} // namespace lab::workbench
