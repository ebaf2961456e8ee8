// SPDX-License-Identifier: Apache-2.0
/* The report for a machine. */
#include "doctor.h"

#include <cstdio>

#include <nlohmann/json.hpp>

namespace doctor {

void print_json(const Report& report) {
    using nlohmann::ordered_json;
    static constexpr const char* states[] = {"ok", "bad", "note"};
    ordered_json checks = ordered_json::array(), commands = ordered_json::array();
    for (const Check& check : report.checks) {
        ordered_json row{
            {"name", check.name}, {"state", states[check.state]}, {"found", check.found}};
        if (!check.remedy.empty())
            row["do"] = check.remedy;
        checks.push_back(row);
    }
    for (const CommandNeeds& command : command_needs) {
        ordered_json why = ordered_json::array();
        for (const Check& check : report.checks)
            if ((check.lost & (command.needs | need_start)) != 0)
                why.push_back(check.name);
        commands.push_back({{"words", command.words},
                            {"title", command.title},
                            {"can", why.empty()},
                            {"why", why}});
    }
    const ordered_json all{
        {"all_good", all_good(report)}, {"checks", checks}, {"commands", commands}};
    /* A name in the phone's own bytes may be no UTF-8. */
    std::puts(all.dump(2, ' ', false, ordered_json::error_handler_t::replace).c_str());
}

} // namespace doctor
