// SPDX-License-Identifier: Apache-2.0
#include "modem/stats_debug_info.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <span>
#include <sstream>
#include <string>

#include "modem/named_values.h"
#include "phone/complaint.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace {

/* The data of a reply: 512 bytes less the record's kind and result. */
constexpr size_t data_max = 504;

std::vector<uint16_t> log_codes() {
    static const std::string name = "stats_debug/log_codes";
    std::vector<uint16_t> codes;
    for (const Word& word : setting_words(name, "")) {
        const std::optional<int64_t> code = whole_number("0x" + word.text);
        if (code && *code >= 0 && *code <= UINT16_MAX)
            codes.push_back(static_cast<uint16_t>(*code));
        else
            complain(name, word.line,
                     "'" + word.text + "' is no log code (hexadecimal, up to FFFF); left out");
    }
    return codes;
}

/* What the fields count, the same for every field of a kind but the rate. */
struct State {
    uint64_t version;
    uint64_t enabled;
    uint64_t queries;
    uint64_t bad_logs;
};

enum class Kind {
    fixed,    /* the number itself */
    counter,  /* the number for each query */
    enabled,  /* 1 while the feature is on */
    bad_logs, /* grows while there are logs that can't be parsed */
};

/* What a field of the debug information tells. */
struct Value {
    Kind kind;
    uint64_t number;
};

using enum Kind;

// clang-format off
constexpr Value main_values[] = {
    /* feature enabled; unknown record versions; commands done and failed */
    {enabled, 0}, {bad_logs, 1}, {counter, 7}, {fixed, 0},
    /* heap in use, most ever and now; commands queued and free */
    {fixed, 4096}, {fixed, 1536}, {fixed, 0}, {fixed, 16},
    /* log masks */
    {fixed, 0x0F}, {fixed, 0x03},
};

constexpr Value diag_values[] = {
    /* state; events listened to, state, calls, parsed */
    {enabled, 0}, {fixed, 5}, {enabled, 0}, {counter, 3}, {counter, 3},
    /* logs listened to, state, calls, parsed; polls, parsed */
    {fixed, 12}, {enabled, 0}, {counter, 41}, {counter, 40},
    {counter, 2}, {counter, 2},
    /* event and log callbacks; invalid cells of 4G and 5G */
    {counter, 3}, {counter, 41}, {fixed, 1}, {fixed, 0},
    /* longest durations of event, log, work in ms; debug calls, parsed */
    {fixed, 2}, {fixed, 6}, {fixed, 9}, {counter, 1}, {counter, 1},
    /* customer events, parsed */
    {counter, 1}, {counter, 1},
};

constexpr Value cm_values[] = {
    /* states; calls and parsed of call, subscription, supplementary-service, statistics events */
    {enabled, 0}, {enabled, 0}, {counter, 1}, {counter, 1},
    {counter, 2}, {counter, 2}, {counter, 11}, {counter, 11},
    {counter, 5}, {counter, 5},
    /* polls of rf, 4G, 5G and parsed */
    {counter, 10}, {counter, 10}, {counter, 8}, {counter, 8},
    {counter, 6}, {counter, 6},
};

constexpr Value uim_values[] = {
    /* states; events, parsed */
    {enabled, 0}, {enabled, 0}, {counter, 1}, {counter, 1},
};
// clang-format on

/* By block, in the order of vs_records::debug_blocks. */
constexpr std::span<const Value> values[] = {main_values, diag_values, cm_values, uim_values};

constexpr bool each_field_has_a_value() {
    for (size_t i = 0; i < std::size(values); ++i)
        if (values[i].size() != vs_records::debug_blocks[i].fields.size())
            return false;
    return std::size(values) == std::size(vs_records::debug_blocks);
}
static_assert(each_field_has_a_value());

uint64_t number_of(const Value& value, const State& state) {
    switch (value.kind) {
    case fixed:
        return value.number;
    case counter:
        return value.number * state.queries;
    case enabled:
        return state.enabled;
    case bad_logs:
        return value.number * state.bad_logs * state.queries;
    }
    return 0;
}

/* Each line behind a newline and "# ". */
std::string commented(const std::string& text) {
    std::string all;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        all += "\n# " + line;
    return all;
}

/* A block as the modem counts, but for the values that its text names. */
Bytes block(size_t index, const State& state) {
    const vs_records::Record& record = vs_records::debug_blocks[index];
    const auto version = static_cast<unsigned>(state.version);
    Bytes bytes;
    for (size_t i = 0; i < record.fields.size(); ++i)
        if (record.fields[i].since <= version)
            put_le(bytes, number_of(values[index][i], state),
                   vs_records::width(record.fields[i].kind));
    const std::string name = std::string("stats_debug/") + record.name + ".txt";
    const std::optional<Bytes> text = read_file(name);
    if (text)
        apply_text(name, std::string(text->begin(), text->end()), record, version, bytes);
    else if (errno == ENOENT)
        note_text(name, "# A value without # in front counts instead of the modem's own." +
                            commented(text_of_record(record, version, bytes)));
    return bytes;
}

} // namespace

int32_t stats_debug_info(ByteView, Bytes& reply) {
    const State state = {
        .version = static_cast<uint8_t>(setting_number("stats_debug/version")),
        .enabled = setting_number("stats_debug/enabled") != 0 ? 1U : 0U,
        .queries = static_cast<uint64_t>(setting_number("stats_debug/queries")) + 1,
        .bad_logs = log_codes().size(),
    };
    note_text("stats_debug/queries", std::to_string(state.queries));
    if (const std::optional<Bytes> kept =
            read_file("stats_debug/reply." + std::to_string(state.queries))) {
        reply.insert(reply.end(), kept->begin(), kept->end());
        return 0;
    }
    put_le(reply, state.version, 1);
    for (size_t i = 0; i < std::size(values); ++i) {
        const Bytes bytes = block(i, state);
        reply.insert(reply.end(), bytes.begin(), bytes.end());
    }
    return 0;
}

int32_t stats_not_supported_logs(ByteView, Bytes& reply) {
    const std::vector<uint16_t> codes = log_codes();
    put_le(reply, std::min<size_t>(codes.size(), UINT16_MAX), 2);
    for (const uint16_t code : codes)
        put_le(reply, code, 2);
    reply.resize(std::min(reply.size(), data_max));
    return 0;
}

} // namespace simphone
