// SPDX-License-Identifier: Apache-2.0
#include "verbs.h"

#include <cstdio>

#include "find_kvt.h"
#include "phone/adb.h"

namespace lab {

namespace {

int failed(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return 5;
}

} // namespace

int run(const Common& common, const RunOptions& options) {
    std::string error;
    adb::Phone phone;
    const bool here = common.on.empty();
    if (!here && !adb::find_phone(common.on, adb::Rights::root, phone, error))
        return failed(error);
    const std::string kvt = here ? find_kvt(common.kvt, error) : adb::kvt_on_phone(common.kvt);
    if (kvt.empty())
        return failed(error);
    ProcessRequest request;
    request.command = options.command;
    request.command.insert(request.command.begin(), kvt);
    request.limit = std::chrono::milliseconds(static_cast<long>(options.timeout_s * 1000));
    request.pass_on = here;
    if (!here)
        request.environment = adb::phone_environment();
    const ProcessResult result = here ? run_process(request) : adb::run_on_phone(phone, request);
    if (!here) {
        std::fwrite(result.output.data(), 1, result.output.size(), stdout);
        std::fflush(stdout);
    }
    if (result.how == ProcessResult::exited && result.status == 0)
        return 0;
    std::fprintf(stderr, "kvt-lab: kvt %s\n", how_it_ended(result).c_str());
    return result.how == ProcessResult::timed_out ? 4 : 5;
}

} // namespace lab
