#include "runner.h"

#include "find_kvt.h"

namespace lab {

Runner make_runner(const Common& common, std::string& error, const std::atomic<int>* stop) {
    const std::string kvt = find_kvt(common.kvt, error);
    if (kvt.empty())
        return nullptr;
    return [kvt, stop](const std::vector<std::string>& words, std::chrono::milliseconds limit) {
        ProcessRequest request;
        request.command = words;
        request.command.insert(request.command.begin(), kvt);
        request.limit = limit;
        request.stop = stop;
        return run_process(request);
    };
}

} // namespace lab
