// SPDX-License-Identifier: Apache-2.0
/* kvt-lab deploy: puts what runs on a phone there, and says what works. */
#include "verbs.h"

#include <cstdio>
#include <filesystem>

#include "find_kvt.h"
#include "phone/adb.h"

namespace lab {

namespace {

namespace fs = std::filesystem;

constexpr int could_not_run = 5;
constexpr std::chrono::seconds limit{60};

struct Program {
    const char* name;
    bool needed;
};
constexpr Program programs[] = {
    {"kvt", true},
    {"kvt-doctor", true},
    {"libkvt_record.so", false},
};

int failed(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return could_not_run;
}

/* The folder given; else a phone build in the source tree that our own program lies in. */
std::vector<fs::path> source_folders(const std::string& given) {
    std::vector<fs::path> roots{given};
    if (given.empty()) {
        const fs::path tree = fs::path(own_folder()) / ".." / "..";
        roots = {tree / "out" / "android", tree / "android"};
    }
    std::vector<fs::path> folders;
    for (const fs::path& root : roots)
        for (const char* const below : {"", "bin", "lib"})
            folders.push_back(root / below);
    return folders;
}

std::string find_program(const std::vector<fs::path>& folders, const char* name) {
    std::error_code ignored;
    for (const fs::path& folder : folders)
        if (fs::is_regular_file(folder / name, ignored))
            return (folder / name).lexically_normal().string();
    return "";
}

ProcessResult on_phone(const adb::Phone& phone, const std::vector<std::string>& words) {
    ProcessRequest request;
    request.command = words;
    request.environment = adb::phone_environment();
    request.limit = limit;
    return adb::run_on_phone(phone, request);
}

/* kvt with a command that does nothing, so that a library which is not there shows. */
bool kvt_starts(const adb::Phone& phone) {
    const ProcessResult result = on_phone(phone, {adb::kvt_on_phone(""), "1", "1"});
    const bool starts = result.how == ProcessResult::exited && result.status == 0 &&
                        result.output == "Not support\n";
    std::printf("kvt starts on phone %s: %s\n", phone.serial.c_str(),
                starts ? "yes" : ("no, it " + how_it_ended(result)).c_str());
    return starts;
}

} // namespace

int deploy(const Common& common, const DeployOptions& options) {
    if (common.on.empty())
        return failed("deploy needs a phone: --on SERIAL, or --on usb"), 2;
    const std::vector<fs::path> folders = source_folders(options.from);
    adb::Phone phone;
    std::string error;
    if (!adb::find_phone(common.on, adb::Rights::if_possible, phone, error))
        return failed(error);
    const std::string target = adb::phone_folder();
    const ProcessResult made = on_phone(phone, {"mkdir", "-p", target, target + "/tapes"});
    if (made.how != ProcessResult::exited || made.status != 0)
        return failed("mkdir " + target + " " + how_it_ended(made));
    for (const Program& program : programs) {
        const std::string here = find_program(folders, program.name);
        if (here.empty() && program.needed)
            return failed(std::string(program.name) +
                          " for phones was not found: build it, and name the build's folder with "
                          "--from");
        if (here.empty()) {
            std::printf("%s: not in the build, left out\n", program.name);
            continue;
        }
        const std::string there = target + "/" + program.name;
        const std::string hash = adb::hash_here(here);
        const bool same = !hash.empty() && adb::hash_on_phone(phone, there) == hash;
        if (!same && !adb::push(phone, here, there, error))
            return failed(error);
        std::printf("%s: %s\n", program.name, same ? "is there already" : "pushed");
    }
    const bool starts = kvt_starts(phone);
    std::fflush(stdout);
    const int found = doctor(common, {false, true});
    return found != 0 ? found : starts ? 0 : 1;
}

} // namespace lab
