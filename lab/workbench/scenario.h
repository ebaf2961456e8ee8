// SPDX-License-Identifier: Apache-2.0
/* Scenarios: what a phone is like, as data.
 *
 *     title = "Weak signal"
 *     about = "..."
 *     set = ["rsrp -122", "sim2 absent"]   # as kvt-lab phone set takes them; both subscriptions
 *     faults = ["qmi_client_send_msg_sync:vs.* * timeout"]
 *     remove = ["nv/0/550"]                # files of a fresh phone
 *     plan = "phone"                       # of the scenarios' folder plans
 *     [files]                              # other files of the phone, text
 *     "euicc/channels" = "1 0"
 *     [verdicts]                           # of each step of the plan, by its name: as kvt-lab plan tells
 *     "signal" = "failed, ok" */
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace lab::workbench {

struct Scenario {
    std::string title, about;
    std::vector<std::string> set, faults, remove;
    std::vector<std::pair<std::string, std::string>> files;
};

/* The folder that scenarios lie in. */
std::string scenario_folder();

/* A file, or a name of that folder's. False with a message when it is none, or not right. */
bool load_scenario(const std::string& name, Scenario& scenario, std::string& error);

} // namespace lab::workbench
