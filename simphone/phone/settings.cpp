// SPDX-License-Identifier: Apache-2.0
#include "phone/settings.h"

#include <algorithm>
#include <cerrno>
#include <charconv>

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

/* "0 to 3600000", "present absent error", "0 to 16 or none". */
std::string what_would_be_right(Range range, const std::string& words) {
    std::string text;
    if (range.least <= range.most)
        text = std::to_string(range.least) + " to " + std::to_string(range.most);
    if (!words.empty())
        text += (text.empty() ? "one of: " : " or ") + words;
    return text;
}

int64_t clamped(const std::string& file, const Word& word, Range range, int64_t number) {
    const int64_t near = std::clamp(number, range.least, range.most);
    if (near != number)
        complain(file, word.line,
                 word.text + " is out of range (" + what_would_be_right(range, "") +
                     "), taken for " + std::to_string(near));
    return near;
}

/* The setting as it counts: one of its words, or a number within its range. */
std::string checked(const std::string& name) {
    const Setting& row = row_of(name);
    const std::string text = setting_text(name, row.fallback);
    const std::vector<Word> words = words_of(text);
    const Word first = words.empty() ? Word{"", 1} : words[0];
    if (words.size() <= 1) {
        for (const Word& word : words_of(row.words))
            if (word.text == first.text)
                return first.text;
        const std::optional<int64_t> number = whole_number(first.text);
        if (number && row.range.least <= row.range.most)
            return std::to_string(clamped(name, first, row.range, *number));
    }
    complain(name, first.line,
             "'" + text + "' can't be used (" + what_would_be_right(row.range, row.words) +
                 "), taken for " + row.fallback);
    return row.fallback;
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
    const std::string text(bytes->begin(), bytes->end());
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::vector<Word> setting_words(const std::string& name, const std::string& default_text) {
    return words_of(setting_text(name, default_text));
}

std::vector<Word> words_of(const std::string& text) {
    std::vector<Word> words;
    int line = 1;
    bool within = false;
    for (const char c : text) {
        const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!blank && !within)
            words.push_back({"", line});
        if (!blank)
            words.back().text += c;
        within = !blank;
        line += c == '\n' ? 1 : 0;
    }
    return words;
}

std::optional<int64_t> whole_number(const std::string& text) {
    const bool minus = !text.empty() && text[0] == '-';
    const size_t start = minus ? 1 : 0;
    const bool hex = text.compare(start, 2, "0x") == 0 || text.compare(start, 2, "0X") == 0;
    const std::string digits = (minus ? "-" : "") + text.substr(start + (hex ? 2 : 0));
    int64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, hex ? 16 : 10);
    if (error == std::errc::invalid_argument || stop != end)
        return std::nullopt;
    if (error == std::errc::result_out_of_range)
        return minus ? INT64_MIN : INT64_MAX;
    return number;
}

int64_t number_within(const std::string& file, const Word& word, Range range, int64_t fallback) {
    const std::optional<int64_t> number = whole_number(word.text);
    if (number)
        return clamped(file, word, range, *number);
    complain(file, word.line,
             "'" + word.text + "' is no number (" + what_would_be_right(range, "") +
                 "), taken for " + std::to_string(fallback));
    return fallback;
}

} // namespace simphone
