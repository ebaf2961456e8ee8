// SPDX-License-Identifier: Apache-2.0
/* One callback on its way to the program. */
#pragma once

#include <string>

#include "engine.h"

struct Delivery {
    explicit Delivery(const engine::ScriptEvent& event);
    /* Calls the function with what the event brings; without one nothing happens. */
    void run();

    const engine::ScriptEvent& event;
    engine::AnyFunction function = nullptr;
    const void* client = nullptr;
    const void* context = nullptr;
    const void* service = nullptr;
    std::string bytes; /* our own: the program may keep the address while its function runs */
    int length = 0;    /* as it was told, with or without bytes */
    bool has_bytes = false;
};
