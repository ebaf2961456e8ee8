#include "verbs.h"

#include <cstdio>

#include "find_kvt.h"
#include "process.h"

namespace lab {

int run(const Common& common, const RunOptions& options) {
    std::string error;
    const std::string kvt = find_kvt(common.kvt, error);
    if (kvt.empty()) {
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
        return 5;
    }
    ProcessRequest request;
    request.command = options.command;
    request.command.insert(request.command.begin(), kvt);
    request.limit = std::chrono::milliseconds(static_cast<long>(options.timeout_s * 1000));
    request.pass_on = true;
    const ProcessResult result = run_process(request);
    if (result.how == ProcessResult::exited && result.status == 0)
        return 0;
    std::fprintf(stderr, "kvt-lab: kvt %s\n", how_it_ended(result).c_str());
    return result.how == ProcessResult::timed_out ? 4 : 5;
}

} // namespace lab
