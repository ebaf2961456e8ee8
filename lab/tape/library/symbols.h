// SPDX-License-Identifier: Apache-2.0
/* Where a call goes on: the next library's definition of a function that is defined here too. */
#pragma once

/* Null when no library behind this one has the symbol. */
void* platform_symbol(const char* name);

/* The same, remembered in *found; ends the process, as the loader would have, without the symbol.
 */
void* needed_symbol(const char* name, void** found);

/* The next definition of a function, looked up at its first call. */
#define NEXT_DEFINITION(function)                                                                  \
    reinterpret_cast<decltype(&(function))>([] {                                                   \
        static void* found;                                                                        \
        return needed_symbol(#function, &found);                                                   \
    }())
