// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "objects.h"
#include "state.h"

namespace engine {

void add_handle(const void* handle, int number, const void* os_params) {
    const Order::Lock lock(g_state.order.mutex());
    g_state.handles.push_back({handle, number, os_params});
}

/* The newest handle's of which this is the value. */
static int newest_number(const void* State::Handle::*value, const void* wanted) {
    if (wanted == nullptr)
        return 0;
    const Order::Lock lock(g_state.order.mutex());
    const auto it = std::find_if(g_state.handles.rbegin(), g_state.handles.rend(),
                                 [&](const State::Handle& row) { return row.*value == wanted; });
    return it != g_state.handles.rend() ? it->number : -1;
}

int handle_number(const void* handle) { return newest_number(&State::Handle::raw, handle); }
int signal_number(const void* os_params) {
    return newest_number(&State::Handle::os_params, os_params);
}

namespace {

template <typename Item> int number_in(std::vector<Item>& items, const Item& item) {
    const auto it = std::find(items.begin(), items.end(), item);
    if (it != items.end())
        return static_cast<int>(it - items.begin()) + 1;
    items.push_back(item);
    return static_cast<int>(items.size());
}

} // namespace

int pointer_number(const void* pointer) {
    if (pointer == nullptr)
        return 0;
    const Order::Lock lock(g_state.order.mutex());
    return number_in(g_state.pointers, pointer);
}

int callback_number(const char* kind, AnyFunction callback) {
    const Order::Lock lock(g_state.order.mutex());
    return number_in(g_state.callbacks[kind], callback);
}

void know_service(const std::string& name, const void* service) {
    const Order::Lock lock(g_state.order.mutex());
    g_state.services[name] = service;
}

std::string service_name(const void* service) { return objects::name_of(service); }

void set_response_area(unsigned char* area, size_t size) {
    const Order::Lock lock(g_state.order.mutex());
    g_state.area = area;
    g_state.area_size = size;
}

} // namespace engine
