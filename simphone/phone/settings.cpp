// SPDX-License-Identifier: Apache-2.0
#include "phone/settings.h"

#include <cerrno>

#include "phone/complaint.h"
#include "phone/lock.h"
#include "phone/phone.h"

namespace simphone {

namespace {

using phone_files::Setting;

const Setting& row_of(const std::string& name) {
    for (const Setting& row : phone_files::settings)
        if (name == row.file)
            return row;
    static constexpr Setting unknown = {"", "0", {INT64_MIN, INT64_MAX}, "", "", ""};
    return unknown;
}

/* The setting as it counts. */
std::string checked(const std::string& name) {
    const Setting& row = row_of(name);
    phone_files::Complaints complaints;
    std::string value = phone_files::value_of(row, setting_text(name, row.fallback), complaints);
    complain(name, complaints);
    return value;
}

} // namespace

bool is_setting(const std::string& name) { return *row_of(name).file != '\0'; }

int64_t setting_number(const std::string& name) { return whole_number(checked(name)).value_or(0); }

std::string setting(const std::string& name) { return checked(name); }

std::string setting_text(const std::string& name, const std::string& default_text) {
    std::optional<Bytes> bytes = read_file(name);
    if (!bytes && errno == ENOENT && ensure_phone()) {
        constexpr int64_t patience_ms = 50; /* it can be made the next time */
        const Lock lock(patience_ms);
        bytes = read_file(name); /* another may just have made it */
        if (!bytes && errno == ENOENT && lock.held())
            note_text(name, default_text);
    }
    if (!bytes)
        return default_text;
    return phone_files::trimmed(std::string(bytes->begin(), bytes->end()));
}

std::vector<Word> setting_words(const std::string& name, const std::string& default_text) {
    return words_of(setting_text(name, default_text));
}

int64_t number_within(const std::string& file, const Word& word, Range range, int64_t fallback) {
    phone_files::Complaints complaints;
    const int64_t number = phone_files::number_within(word, range, fallback, complaints);
    complain(file, complaints);
    return number;
}

} // namespace simphone
