// SPDX-License-Identifier: Apache-2.0
#include "verdict.h"

#include <charconv>
#include <cstdint>
#include <iterator>

#include "patterns.h"

namespace lab {

namespace {

struct VerdictRow {
    const char* name;
    int status;
};

/* By Verdict; 2 is for what is not run because of how it was asked for. */
constexpr VerdictRow verdicts[] = {
    {"ok", 0}, {"failed", 1}, {"not told", 3}, {"timed out", 4}, {"not run", 5},
};

constexpr size_t line_max = 300;

/* The length of a UTF-8 character that stands at the beginning, 0 when there is none. */
size_t character_length(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byte(0) < 0x80)
        return byte(0) >= 0x20 && byte(0) != 0x7F ? 1 : 0;
    const size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length)
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    /* Controls above 0x7F, forms that are longer than they need be, and the last of the first
     * 65536, which are no characters in XML. */
    if ((byte(0) == 0xC2 && byte(1) < 0xA0) || (byte(0) == 0xE0 && byte(1) < 0xA0) ||
        (byte(0) == 0xED && byte(1) > 0x9F) || (byte(0) == 0xF0 && byte(1) < 0x90) ||
        (byte(0) == 0xF4 && byte(1) > 0x8F) || text.substr(0, 2) == "\xEF\xBF")
        return 0;
    return length;
}

} // namespace

const char* verdict_name(Verdict verdict) { return verdicts[static_cast<size_t>(verdict)].name; }

int verdict_status(Verdict verdict) { return verdicts[static_cast<size_t>(verdict)].status; }

std::string one_line(std::string_view text) {
    std::string line;
    while (!text.empty() && line.size() < line_max) {
        const size_t length = character_length(text);
        if (length == 0)
            line += '?';
        else
            line += text.substr(0, length);
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return text.empty() ? line : line + "...";
}

namespace {

/* Bytes that are shown as two hexadecimal digits each, with or without 0x. */
std::vector<uint8_t> bytes_of(const std::string& text) {
    std::vector<uint8_t> bytes;
    for (const std::string& word : words_of(text)) {
        const size_t skip = word.size() > 2 && word[0] == '0' && (word[1] | 0x20) == 'x' ? 2 : 0;
        uint8_t byte = 0;
        std::from_chars(word.data() + skip, word.data() + word.size(), byte, 16);
        bytes.push_back(byte);
    }
    return bytes;
}

std::string trimmed(const std::string& text) {
    const size_t start = text.find_first_not_of(' ');
    return start == std::string::npos ? ""
                                      : text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

/* False when the text is not what the value's kind says. */
bool read_shown(const Value& value, const std::string& found, Shown& shown) {
    shown.value = &value;
    shown.text = trimmed(found);
    const char* const start = shown.text.data();
    const char* const end = start + shown.text.size();
    switch (value.kind) {
    case ValueKind::number: {
        const auto [stopped, error] = std::from_chars(start, end, shown.number);
        if (error != std::errc() || stopped != end)
            return false;
        break;
    }
    case ValueKind::integer: {
        const bool hex = shown.text.rfind("0x", 0) == 0;
        const auto [stopped, error] =
            std::from_chars(start + (hex ? 2 : 0), end, shown.integer, hex ? 16 : 10);
        if (error != std::errc() || stopped != end)
            return false;
        break;
    }
    case ValueKind::word: {
        const std::vector<uint8_t> bytes = bytes_of(found);
        const auto at = static_cast<size_t>(value.at), size = static_cast<size_t>(value.size);
        if (at + size > bytes.size())
            return false;
        uint64_t word = 0;
        for (size_t i = size; i-- > 0;)
            word = word << 8 | bytes[at + i];
        shown.integer = static_cast<long long>(word);
        shown.text = std::to_string(word);
        break;
    }
    case ValueKind::bytes:
        for (const uint8_t byte : bytes_of(found))
            shown.as_arguments.push_back(std::to_string(byte));
        return true;
    case ValueKind::text:
        break;
    }
    shown.as_arguments = {shown.text};
    if (value.kind == ValueKind::number || value.kind == ValueKind::text)
        return true;
    shown.number = static_cast<double>(shown.integer);
    for (const Name& name : value.names)
        if (name.number == shown.integer)
            shown.name = name.text;
    return true;
}

/* The rule's own words, with its groups, or the line. */
std::string reason(const Rule& rule, const std::vector<std::string>& groups) {
    if (rule.why.empty())
        return one_line(groups[0]);
    std::string text;
    for (size_t i = 0; i < rule.why.size(); ++i) {
        const char next = i + 1 < rule.why.size() ? rule.why[i + 1] : '\0';
        if (rule.why[i] == '\\' && next >= '1' && next <= '9' &&
            static_cast<size_t>(next - '0') < groups.size())
            text += groups[static_cast<size_t>(rule.why[++i] - '0')];
        else
            text += rule.why[i];
    }
    return one_line(text);
}

std::string leaves(const Command& row) {
    return row.leaves.empty() ? "" : ". " + std::string(row.leaves);
}

/* Status of a shell or loader that found no program, or could not start it. */
constexpr int could_not_start = 126;
constexpr int no_program = 127;

} // namespace

std::vector<Shown> read_values(const Command& row, std::string_view output) {
    std::vector<Shown> values;
    std::vector<std::string> groups;
    for (const Value& value : row.values) {
        Shown shown;
        if (find_pattern(value.find, output, &groups) && read_shown(value, groups[1], shown))
            values.push_back(std::move(shown));
    }
    return values;
}

Judgement judge(const CommandLine& line, const ProcessResult& result) {
    const Command& row = *line.row;
    Judgement judgement;
    const std::string how = "kvt " + how_it_ended(result);
    if (result.how == ProcessResult::not_started ||
        (result.how == ProcessResult::exited &&
         (result.status == could_not_start || result.status == no_program))) {
        judgement.why = how;
        return judgement;
    }
    judgement.values = read_values(row, result.output);
    if (result.how == ProcessResult::timed_out) {
        judgement.verdict = Verdict::timed_out;
        judgement.why = how + leaves(row);
        return judgement;
    }
    judgement.verdict = Verdict::failed;
    std::vector<std::string> groups;
    for (const Rule& rule : row.failed)
        if (find_pattern(rule.find, result.output, &groups)) {
            judgement.why = reason(rule, groups);
            return judgement;
        }
    if (result.how != ProcessResult::exited || result.status != 0) {
        judgement.why = how + leaves(row);
        return judgement;
    }
    bool all = !row.ok.empty() && !result.cut;
    for (const std::string_view pattern : row.ok)
        all = all && find_pattern(filled_pattern(pattern, line), result.output);
    judgement.verdict = all ? Verdict::ok : Verdict::not_told;
    if (!all)
        judgement.why = result.cut       ? "kvt printed too much to be read"
                        : row.ok.empty() ? "kvt's output shows no failure, and can't tell success"
                                         : "kvt's output shows neither failure nor success";
    return judgement;
}

} // namespace lab
