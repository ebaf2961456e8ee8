// SPDX-License-Identifier: Apache-2.0
#include "phone/record_on_phone.h"

#include <cstdio>

#include "phone/adb.h"

namespace lab::adb {

int record_on_phone(const Common& common, const RecordOptions& options) {
    const auto failed = [](const std::string& message, int status) {
        std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
        return status;
    };
    constexpr int usage = 2, could_not_run = 5;
    if (options.redact)
        return failed("a tape on a phone is not redacted there: pull it, and kvt-lab redact",
                      usage);
    if (options.tape.find('/') != std::string::npos)
        return failed("on a phone a tape has a name without slashes: " + options.tape, usage);
    Phone phone;
    std::string error;
    if (!find_phone(common.on, Rights::root, phone, error))
        return failed(error, could_not_run);
    const std::string folder = phone_folder();
    const std::string library = folder + "/libkvt_record.so";
    if (hash_on_phone(phone, library).empty())
        return failed("the recorder is not on phone " + phone.serial +
                          ": kvt-lab deploy puts it there",
                      could_not_run);
    ProcessRequest request;
    request.command = options.command;
    request.command.insert(request.command.begin(), kvt_on_phone(common.kvt));
    request.environment = phone_environment();
    request.environment.push_back("LD_PRELOAD=" + library);
    request.environment.push_back("KVT_TAPE=" + folder + "/tapes/" + options.tape);
    request.limit = std::chrono::hours(1); /* a recording takes as long as its command */
    const ProcessResult result = run_on_phone(phone, request);
    std::fwrite(result.output.data(), 1, result.output.size(), stdout);
    std::fflush(stdout);
    if (result.how == ProcessResult::exited && result.status == 0)
        return 0;
    return failed("kvt " + how_it_ended(result), could_not_run);
}

} // namespace lab::adb
