// SPDX-License-Identifier: Apache-2.0
#include "runner.h"

#include "find_kvt.h"
#include "phone/adb.h"

namespace lab {

using std::chrono::milliseconds;

Runner make_runner(const Common& common, std::string& error, const std::atomic<int>* stop) {
    if (!common.on.empty()) {
        adb::Phone phone;
        if (!adb::find_phone(common.on, adb::Rights::root, phone, error))
            return nullptr;
        const std::string program = adb::kvt_on_phone(common.kvt);
        return [phone, program, stop](const std::vector<std::string>& words, milliseconds limit) {
            ProcessRequest request;
            request.command = words;
            request.command.insert(request.command.begin(), program);
            request.environment = adb::phone_environment();
            request.limit = limit;
            request.stop = stop;
            return adb::run_on_phone(phone, request);
        };
    }
    const std::string kvt = find_kvt(common.kvt, error);
    if (kvt.empty())
        return nullptr;
    return [kvt, stop](const std::vector<std::string>& words, milliseconds limit) {
        ProcessRequest request;
        request.command = words;
        request.command.insert(request.command.begin(), kvt);
        request.limit = limit;
        request.stop = stop;
        return run_process(request);
    };
}

} // namespace lab
