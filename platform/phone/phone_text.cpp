// SPDX-License-Identifier: Apache-2.0
#include "phone_text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace phone_files {

namespace {

/* "0 to 3600000", "present absent error", "0 to 16 or none". */
std::string what_would_be_right(Range range, const std::string& words) {
    std::string text;
    if (range.least <= range.most)
        text = std::to_string(range.least) + " to " + std::to_string(range.most);
    if (!words.empty())
        text += (text.empty() ? "one of: " : " or ") + words;
    return text;
}

int64_t clamped(const Word& word, Range range, int64_t number, Complaints& complaints) {
    const int64_t near = std::clamp(number, range.least, range.most);
    if (near != number)
        complaints.push_back({word.line, word.text + " is out of range (" +
                                             what_would_be_right(range, "") + "), taken for " +
                                             std::to_string(near)});
    return near;
}

} // namespace

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

std::string trimmed(const std::string& text) {
    constexpr const char* blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    return first == std::string::npos
               ? ""
               : text.substr(first, text.find_last_not_of(blanks) - first + 1);
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

int64_t number_within(const Word& word, Range range, int64_t fallback, Complaints& complaints) {
    if (const std::optional<int64_t> number = whole_number(word.text))
        return clamped(word, range, *number, complaints);
    complaints.push_back({word.line, "'" + word.text + "' is no number (" +
                                         what_would_be_right(range, "") + "), taken for " +
                                         std::to_string(fallback)});
    return fallback;
}

std::string value_of(const Setting& row, const std::string& text, Complaints& complaints) {
    const std::vector<Word> words = words_of(text);
    const Word first = words.empty() ? Word{"", 1} : words[0];
    if (words.size() <= 1) {
        for (const Word& word : words_of(row.words))
            if (word.text == first.text)
                return first.text;
        const std::optional<int64_t> number = whole_number(first.text);
        if (number && row.range.least <= row.range.most)
            return std::to_string(clamped(first, row.range, *number, complaints));
    }
    complaints.push_back({first.line, "'" + text + "' can't be used (" +
                                          what_would_be_right(row.range, row.words) +
                                          "), taken for " + row.fallback});
    return row.fallback;
}

} // namespace phone_files
