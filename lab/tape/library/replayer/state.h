// SPDX-License-Identifier: Apache-2.0
/* What the sources of the engine share. All of it is guarded by the order's mutex. */
#pragma once

#include <deque>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine.h"
#include "order.h"

namespace engine {

struct State {
    lab::tape::Script script;
    Order order;
    std::unordered_map<std::string, std::deque<uint32_t>> sequences; /* calls */
    std::map<int64_t, std::deque<uint32_t>> own; /* each thread's calls, waits and clocks */
    std::vector<std::vector<uint32_t>> came;     /* callbacks that came out of each call */

    struct Handle {
        const void* raw;
        int number;
        const void* os_params;
    };
    std::vector<Handle> handles;
    std::vector<const void*> pointers;
    std::map<std::string, std::vector<AnyFunction>> callbacks;
    std::map<std::string, const void*> services;
    unsigned char* area = nullptr;
    size_t area_size = 0;

    timespec start = {}; /* of this run, by CLOCK_MONOTONIC */

    bool active = false;
    int report = 2;
    unsigned differences = 0;

    const ScriptEvent& event(uint32_t index) const { return script.events[index]; }
};
extern State& g_state;

/* Calls and waits of the calling thread that it has left behind, coming to this event. */
void leave_behind(int64_t thread, uint32_t event);

/* The turn is the calling thread's; the lock is given away while the program's function runs. */
void run_callback(Order::Lock& lock, const ScriptEvent& event);

/* ---- telling ---- */

void tell(const std::string& line);

/* One line for the first difference; further ones are counted. */
void differs(const std::string& line);

std::string call_text(const std::string& name, const std::string& inputs);

/* Between the recorded call and the same one with other inputs. */
std::string difference(const ScriptEvent& event, const std::string& inputs);

/* What the tape has at the place where the program is. */
std::string next_on_tape();

} // namespace engine
