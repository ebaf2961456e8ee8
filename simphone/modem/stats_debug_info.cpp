#include "modem/stats_debug_info.h"

#include <algorithm>
#include <optional>
#include <string>

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

/* A field, little-endian; there from a layout version on. */
struct Field {
    uint64_t since;
    size_t width;
    Kind kind;
    uint64_t number;
};

using enum Kind;

// clang-format off
constexpr Field fields[] = {
    /* main: feature enabled; unknown record versions; commands done and failed */
    {0, 1, enabled, 0}, {0, 8, bad_logs, 1}, {0, 8, counter, 7}, {0, 8, fixed, 0},
    /* heap in use, most ever and now; commands queued and free */
    {2, 8, fixed, 4096}, {2, 8, fixed, 1536}, {2, 4, fixed, 0}, {2, 4, fixed, 16},
    /* log masks */
    {4, 4, fixed, 0x0F}, {4, 4, fixed, 0x03},

    /* diag: state; events listened to, state, calls, parsed */
    {0, 1, enabled, 0}, {0, 4, fixed, 5}, {0, 1, enabled, 0}, {0, 4, counter, 3}, {0, 4, counter, 3},
    /* logs listened to, state, calls, parsed; polls, parsed */
    {0, 4, fixed, 12}, {0, 1, enabled, 0}, {0, 8, counter, 41}, {0, 8, counter, 40},
    {0, 4, counter, 2}, {0, 4, counter, 2},
    /* event and log callbacks; invalid cells of 4G and 5G */
    {1, 8, counter, 3}, {1, 8, counter, 41}, {1, 4, fixed, 1}, {1, 4, fixed, 0},
    /* longest durations of event, log, work in ms; debug calls, parsed */
    {2, 4, fixed, 2}, {2, 4, fixed, 6}, {2, 4, fixed, 9}, {2, 4, counter, 1}, {2, 4, counter, 1},
    /* customer events, parsed */
    {3, 4, counter, 1}, {3, 4, counter, 1},

    /* cm: states; calls and parsed of call, subscription, supplementary-service, statistics events */
    {0, 1, enabled, 0}, {0, 1, enabled, 0}, {0, 4, counter, 1}, {0, 4, counter, 1},
    {0, 4, counter, 2}, {0, 4, counter, 2}, {0, 4, counter, 11}, {0, 4, counter, 11},
    {0, 4, counter, 5}, {0, 4, counter, 5},
    /* polls of rf, 4G, 5G and parsed */
    {0, 4, counter, 10}, {0, 4, counter, 10}, {0, 4, counter, 8}, {0, 4, counter, 8},
    {0, 4, counter, 6}, {0, 4, counter, 6},

    /* uim: states; events, parsed */
    {0, 1, enabled, 0}, {0, 1, enabled, 0}, {0, 4, counter, 1}, {0, 4, counter, 1},
};
// clang-format on

uint64_t value(const Field& field, const State& state) {
    switch (field.kind) {
    case fixed:
        return field.number;
    case counter:
        return field.number * state.queries;
    case enabled:
        return state.enabled;
    case bad_logs:
        return field.number * state.bad_logs * state.queries;
    }
    return 0;
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
    for (const Field& field : fields)
        if (state.version >= field.since)
            put_le(reply, value(field, state), field.width);
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
