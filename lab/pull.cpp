// SPDX-License-Identifier: Apache-2.0
/* kvt-lab pull: gets tapes from a phone. */
#include "verbs.h"

#include <cstdio>
#include <filesystem>
#include <sstream>

#include "phone/adb.h"

namespace lab {

namespace {

namespace fs = std::filesystem;

constexpr int could_not_run = 5;

int failed(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return could_not_run;
}

ProcessResult on_phone(const adb::Phone& phone, const std::vector<std::string>& words) {
    ProcessRequest request;
    request.command = words;
    return adb::run_on_phone(phone, request);
}

} // namespace

int pull(const Common& common, const PullOptions& options) {
    if (common.on.empty())
        return failed("pull needs a phone: --on SERIAL, or --on usb"), 2;
    adb::Phone phone;
    std::string error;
    if (!adb::find_phone(common.on, adb::Rights::if_possible, phone, error))
        return failed(error);
    const std::string folder = adb::phone_folder() + "/tapes/";
    std::vector<std::string> names = options.tapes;
    if (names.empty()) {
        const ProcessResult listed = on_phone(phone, {"ls", folder});
        if (listed.how != ProcessResult::exited || listed.status != 0)
            return failed("ls " + folder + " " + how_it_ended(listed));
        std::istringstream lines(listed.output);
        for (std::string line; std::getline(lines, line);)
            if (!line.empty())
                names.push_back(line);
    }
    if (names.empty())
        std::printf("no tapes on phone %s\n", phone.serial.c_str());
    for (const std::string& name : names) {
        if (name.find('/') != std::string::npos)
            return failed(name + " is not the name of a tape"), 2;
        /* A tape that root wrote may be closed to the user that adb copies as. */
        on_phone(phone, {"chmod", "a+r", folder + name});
        const std::string to = (fs::path(options.to) / name).string();
        if (!adb::pull(phone, folder + name, to, error))
            return failed(error);
        std::printf("%s\n", to.c_str());
    }
    return 0;
}

} // namespace lab
