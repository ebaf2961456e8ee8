// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "deliver.h"
#include "state.h"
#include "threads.h"

namespace engine {

using namespace lab::tape;

const ScriptValue* value_of(const ScriptEvent& event, const char* name) {
    for (const ScriptValue& value : event.values)
        if (value.name == name)
            return &value;
    return nullptr;
}

/* ---- callbacks ---- */

namespace {

/* What the program gave for the callback. */
void find_function(Delivery& delivery, const ScriptEvent& event) {
    const ScriptValue* const number = value_of(event, "callback");
    const auto known = g_state.callbacks.find(event.name);
    const auto index = static_cast<size_t>(number != nullptr ? number->number : 0);
    if (known != g_state.callbacks.end() && index >= 1 && index <= known->second.size())
        delivery.function = known->second[index - 1];
    if (const ScriptValue* const client = value_of(event, "client"))
        for (const State::Handle& handle : g_state.handles)
            if (handle.number == client->number)
                delivery.client = handle.raw;
    if (const ScriptValue* const context = value_of(event, "context"))
        if (context->number >= 1 && static_cast<size_t>(context->number) <= g_state.pointers.size())
            delivery.context = g_state.pointers[static_cast<size_t>(context->number) - 1];
    if (const ScriptValue* const service = value_of(event, "service")) {
        const auto it = g_state.services.find(
            service->is_text != 0 ? service->text : std::to_string(service->number));
        delivery.service = it != g_state.services.end() ? it->second : nullptr;
    }
}

} // namespace

void run_callback(Order::Lock& lock, const ScriptEvent& event) {
    Delivery delivery(event);
    find_function(delivery, event);
    if (delivery.function == nullptr)
        differs("the tape (line " + std::to_string(event.line) + ") has a callback \"" +
                event.name + "\", for which the program has registered nothing");
    if (event.name == "response" && g_state.area != nullptr)
        std::memcpy(g_state.area, delivery.bytes.data(),
                    std::min(g_state.area_size, delivery.bytes.size()));
    lock.unlock();
    const threads::Place before = threads::enter(threads::Place::program);
    delivery.run();
    threads::enter(before);
    lock.lock();
}

/* ---- calls ---- */

const ScriptEvent* begin_call(const char* name, const std::string& inputs) {
    Order::Lock lock(g_state.order.mutex());
    const auto it = g_state.sequences.find(sequence_of(name, inputs));
    if (it == g_state.sequences.end() || it->second.empty()) {
        differs("the program calls " + call_text(name, inputs) + "; " + next_on_tape());
        return nullptr;
    }
    const uint32_t index = it->second.front();
    const ScriptEvent& event = g_state.event(index);
    if (event.inputs != inputs) {
        differs(difference(event, inputs));
        g_state.order.give_up(); /* its turn never comes */
        return nullptr;
    }
    it->second.pop_front();
    for (const uint32_t callback : g_state.came[index]) {
        leave_behind(event.thread, callback);
        g_state.order.take(lock, callback);
        run_callback(lock, g_state.event(callback));
    }
    leave_behind(event.thread, index);
    if (event.kind == ScriptKind::open) {
        g_state.order.park(lock);
        differs(call_text(name, inputs) + " did not come back when the tape (line " +
                std::to_string(event.line) + ") was recorded");
        return nullptr;
    }
    g_state.order.take(lock, index);
    return &event;
}

} // namespace engine
