// SPDX-License-Identifier: Apache-2.0
#include "symbols.h"

#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <unistd.h>

void* platform_symbol(const char* name) { return ::dlsym(RTLD_NEXT, name); }

void* needed_symbol(const char* name, void** found) {
    void* symbol = __atomic_load_n(found, __ATOMIC_ACQUIRE);
    if (symbol != nullptr)
        return symbol;
    symbol = platform_symbol(name);
    if (symbol == nullptr) {
        static constexpr char text[] = ": the platform has no such symbol\n";
        (void)!::write(2, name, std::strlen(name));
        (void)!::write(2, text, sizeof text - 1);
        std::abort();
    }
    __atomic_store_n(found, symbol, __ATOMIC_RELEASE);
    return symbol;
}
