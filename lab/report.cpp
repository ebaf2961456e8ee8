// SPDX-License-Identifier: Apache-2.0
#include "report.h"

#include <nlohmann/json.hpp>

namespace lab {

using nlohmann::json;

namespace {

json value_json(const Shown& shown) {
    json value = {{"unit", shown.value->unit}, {"meaning", shown.value->meaning}};
    switch (shown.value->kind) {
    case ValueKind::number:
        value["value"] = shown.number;
        break;
    case ValueKind::integer:
        value["value"] = shown.integer;
        break;
    case ValueKind::word:
        value["value"] = static_cast<unsigned long long>(shown.integer);
        break;
    case ValueKind::text:
    case ValueKind::bytes:
        value["value"] = shown.text;
        break;
    }
    if (!shown.name.empty())
        value["name"] = shown.name;
    return value;
}

} // namespace

std::string outcome_json(const CommandLine& line, const Outcome& outcome) {
    json values = json::object();
    for (const Shown& shown : outcome.values)
        values[std::string(shown.value->name)] = value_json(shown);
    const json report = {
        {"command", line.text()},
        {"title", line.row->title},
        {"verdict", verdict_name(outcome.verdict)},
        {"status", verdict_status(outcome.verdict)},
        {"why", outcome.why},
        {"verified", outcome.verified},
        {"values", std::move(values)},
        {"took_ms", outcome.took.count()},
    };
    return report.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace lab
