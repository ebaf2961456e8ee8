// SPDX-License-Identifier: Apache-2.0
#include "modem/named_values.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <optional>
#include <sstream>

#include "phone/complaint.h"

namespace simphone {

using vs_records::Field;
using vs_records::Kind;
using vs_records::Record;

namespace {

std::string value_text(const Field& field, ByteView bytes) {
    const uint64_t number = get_le(bytes, vs_records::width(field.kind));
    char text[64];
    const std::to_chars_result result =
        field.kind == Kind::f32 ? std::to_chars(text, text + sizeof text,
                                                std::bit_cast<float>(static_cast<uint32_t>(number)))
                                : std::to_chars(text, text + sizeof text, number);
    return std::string(text, result.ptr);
}

/* The value as its field holds it; nothing when it is no number, or one that does not fit. */
std::optional<uint64_t> parsed(const Field& field, const std::string& text) {
    const char* const end = text.data() + text.size();
    if (field.kind == Kind::f32) {
        float value = 0;
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        return error == std::errc() && stop == end ? std::optional(std::bit_cast<uint32_t>(value))
                                                   : std::nullopt;
    }
    uint64_t value = 0;
    const bool hex = text.rfind("0x", 0) == 0;
    const auto [stop, error] =
        std::from_chars(text.data() + (hex ? 2 : 0), end, value, hex ? 16 : 10);
    const size_t bits = 8 * vs_records::width(field.kind);
    const bool fits = bits == 64 || value >> bits == 0;
    return error == std::errc() && stop == end && fits ? std::optional(value) : std::nullopt;
}

std::string what_would_be_right(const Field& field) {
    const size_t bits = 8 * vs_records::width(field.kind);
    const std::string number = field.kind == Kind::f32 ? "a number"
                               : bits == 64            ? "0 to 18446744073709551615"
                                            : "0 to " + std::to_string((UINT64_C(1) << bits) - 1);
    return *field.unit == '\0' ? number : number + ", in " + field.unit;
}

size_t find_field(const Record& record, unsigned version, const std::string& name) {
    size_t index = 0;
    while (index < record.fields.size() &&
           (name != record.fields[index].name || record.fields[index].since > version))
        ++index;
    return index;
}

void apply_line(const std::string& file, int number, const std::string& line, const Record& record,
                unsigned version, Bytes& bytes) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string name, value, unit, more;
    if (!(words >> name))
        return;
    words >> value >> unit >> more;
    const size_t index = find_field(record, version, name);
    if (index == record.fields.size()) {
        std::string names;
        for (const Field& field : record.fields)
            if (field.since <= version)
                names += std::string(names.empty() ? "" : " ") + field.name;
        complain(file, number, "'" + name + "' is no value of this record; those are: " + names);
        return;
    }
    const Field& field = record.fields[index];
    const std::optional<uint64_t> parsed_value = parsed(field, value);
    if (!parsed_value || !more.empty() || (!unit.empty() && unit != field.unit)) {
        complain(file, number,
                 "'" + line + "' can't be used (" + name + ": " + what_would_be_right(field) +
                     "), left out");
        return;
    }
    set_le(bytes, vs_records::offset_of(record.fields, index, version), *parsed_value,
           vs_records::width(field.kind));
}

} // namespace

std::string text_of_record(Record record, unsigned version, ByteView bytes) {
    std::string text;
    for (size_t i = 0; i < record.fields.size(); ++i) {
        const Field& field = record.fields[i];
        const size_t offset = vs_records::offset_of(record.fields, i, version);
        if (field.since > version || offset + vs_records::width(field.kind) > bytes.size())
            continue;
        text += std::string(field.name) + " " + value_text(field, bytes.subspan(offset)) +
                (*field.unit == '\0' ? "" : " ") + field.unit + "\n";
    }
    return text;
}

void apply_text(const std::string& file, const std::string& text, Record record, unsigned version,
                Bytes& bytes) {
    bytes.resize(vs_records::size_of(record.fields, version));
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);)
        apply_line(file, ++number, line, record, version, bytes);
}

} // namespace simphone
