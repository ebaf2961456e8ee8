// SPDX-License-Identifier: Apache-2.0
/* kvt-lab doctor: runs kvt-doctor, here or on a phone. */
#include "verbs.h"

#include <cstdio>

#include "find_kvt.h"
#include "phone/adb.h"

namespace lab {

namespace {

constexpr int could_not_run = 5;
constexpr std::chrono::seconds limit{60};

int failed(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return could_not_run;
}

} // namespace

int doctor(const Common& common, const DoctorOptions& options) {
    ProcessRequest request;
    request.limit = limit;
    if (options.json)
        request.command.emplace_back("--json");
    if (options.services)
        request.command.emplace_back("--services");
    const auto program = [&](const std::string& folder) {
        request.command.insert(request.command.begin(), folder + "/kvt-doctor");
    };
    ProcessResult result;
    if (common.on.empty()) {
        program(own_folder());
        result = run_process(request);
    } else {
        /* It looks at a phone without root too, and says so. */
        adb::Phone phone;
        std::string error;
        if (!adb::find_phone(common.on, adb::Rights::if_possible, phone, error))
            return failed(error);
        program(adb::phone_folder());
        request.environment = adb::phone_environment();
        result = adb::run_on_phone(phone, request);
    }
    std::fwrite(result.output.data(), 1, result.output.size(), stdout);
    std::fflush(stdout);
    if (result.how == ProcessResult::exited && (result.status == 0 || result.status == 1))
        return result.status;
    return failed("kvt-doctor " + how_it_ended(result));
}

} // namespace lab
