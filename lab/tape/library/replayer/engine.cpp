// SPDX-License-Identifier: Apache-2.0
/* The run's begin and end. */
#include "engine.h"

#include <cstdlib>
#include <thread>

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "objects.h"
#include "state.h"
#include "threads.h"

namespace engine {

using namespace lab::tape;

/* Never destroyed: threads may still call while the process ends. */
State& g_state = *new State;

namespace {

void order_lost(uint32_t event) {
    if (event == g_state.script.events.size())
        tell("order: the program goes on where the tape ends");
    else
        tell("order: nobody came to what line " + std::to_string(g_state.event(event).line) +
             " of the tape tells");
}

/* A thread of the platform's own, with the callbacks that came on it. */
void platform_thread(int64_t number, const std::vector<uint32_t>& callbacks) {
    threads::set_current(static_cast<int>(number));
    Order::Lock lock(g_state.order.mutex());
    g_state.order.came();
    for (const uint32_t callback : callbacks) {
        g_state.order.take_callback(lock, callback);
        leave_behind(number, callback);
        run_callback(lock, g_state.event(callback));
    }
    g_state.order.give();
}

bool load_script(const char* descriptor) {
    const int fd = std::atoi(descriptor);
    struct stat status = {};
    if (::fstat(fd, &status) != 0 || status.st_size <= 0)
        return false;
    const auto size = static_cast<size_t>(status.st_size);
    void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    if (bytes == MAP_FAILED)
        return false;
    ScriptReader reader(std::string_view(static_cast<const char*>(bytes), size));
    pass_script(reader, g_state.script);
    ::munmap(bytes, size);
    return reader.good();
}

/* Each call, callback, wait and clock where it is looked for. Returns the callbacks of each thread
 * of the platform. */
std::map<int64_t, std::vector<uint32_t>> sort_events() {
    const Script& script = g_state.script;
    std::map<int64_t, std::vector<uint32_t>> platform_threads;
    g_state.came.resize(script.events.size());
    for (uint32_t i = 0; i < script.events.size(); ++i) {
        const ScriptEvent& event = script.events[i];
        if (event.kind != ScriptKind::back)
            g_state.own[event.thread].push_back(i);
        else if (event.inside < script.events.size())
            g_state.came[event.inside].push_back(i);
        else
            platform_threads[event.thread].push_back(i);
        if (event.kind == ScriptKind::call || event.kind == ScriptKind::open)
            g_state.sequences[sequence_of(event.name, event.inputs)].push_back(i);
    }
    return platform_threads;
}

bool load() {
    /* A shell that only starts the program is not it. */
    g_state.active = ::dlopen("libqmi_cci.so", RTLD_NOLOAD | RTLD_LAZY) != nullptr;
    if (!g_state.active)
        return false;
    const threads::Aside aside;
    const char* const descriptor = std::getenv("KVT_REPLAY");
    const char* const report = std::getenv("KVT_REPLAY_REPORT");
    if (report != nullptr)
        g_state.report = std::atoi(report);
    if (descriptor == nullptr || !load_script(descriptor))
        tell("differs: there is no tape to answer from");
    for (const ScriptService& service : g_state.script.services)
        objects::set(service);
    static const auto platform_threads = sort_events();
    ::clock_gettime(CLOCK_MONOTONIC, &g_state.start);
    g_state.order.start(g_state.script.events, g_state.script.as_recorded != 0, order_lost);
    g_state.order.expect(static_cast<int>(platform_threads.size()));
    for (const auto& [number, callbacks] : platform_threads)
        std::thread(platform_thread, number, std::cref(callbacks)).detach();
    return true;
}

/* While the library is loaded, before the program runs. */
[[maybe_unused]] const bool g_loaded = load();

/* The program's end has its place in the order too: what other threads did before it is waited
 * for. */
__attribute__((destructor)) void unload() {
    if (!g_state.active)
        return;
    const threads::Aside aside;
    Order::Lock lock(g_state.order.mutex());
    for (const uint32_t left : g_state.own[threads::current()])
        if (g_state.event(left).kind == ScriptKind::wait)
            g_state.order.skip(left); /* its thread comes to no wait any more */
    g_state.order.take_end(lock);
    size_t left = 0;
    const ScriptEvent* first = nullptr;
    for (const auto& [name, events] : g_state.sequences)
        for (const uint32_t i : events) {
            const ScriptEvent& event = g_state.event(i);
            if (event.kind != ScriptKind::call)
                continue;
            ++left;
            if (first == nullptr || event.line < first->line)
                first = &event;
        }
    if (first != nullptr)
        differs("the program ends without " + call_text(first->name, first->inputs) +
                ", which the tape (line " + std::to_string(first->line) + ") has" +
                (left > 1 ? ", and " + std::to_string(left - 1) + " calls more" : ""));
    if (g_state.differences > 1)
        tell("more: " + std::to_string(g_state.differences - 1));
}

} // namespace

} // namespace engine
