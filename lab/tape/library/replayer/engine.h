// SPDX-License-Identifier: Apache-2.0
/* The replayed run: what was recorded, and how far the program has come in it.
 *
 * A call is answered from the sequence of its kind and object, and only if the same goes in. Its
 * place among the calls, callbacks and waits of other threads is that of the recorded run, see
 * order.h. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "script.h"
#include "waits.h"

namespace engine {

using lab::tape::ScriptEvent;
using lab::tape::ScriptValue;

/* ---- calls ---- */

/* The call's recorded event, once its turn has come and the callbacks that came out of it have run;
 * null, and told, when the tape does not have it next. */
const ScriptEvent* begin_call(const char* name, const std::string& inputs);

const ScriptValue* value_of(const ScriptEvent& event, const char* name);

/* ---- waits ---- */

/* What the tape tells of a wait that the calling thread comes to. */
enum class Told {
    waits,   /* the thread waited here */
    nothing, /* it did not, or not in this way */
    ended,   /* the thread did not go on any more */
    free,    /* there is no order any more: waits are the program's own */
};
struct Waiting {
    Told told = Told::free;
    uint32_t event = 0;
};
Waiting find_wait(Wait kind);

/* Waits for its turn; null: there is no order any more. For a thread that did not go on the turn
 * never comes. */
const ScriptEvent* take_turn(const Waiting& waiting);

/* Around a wait that the tape does not tell of. */
void step_aside();
void step_in();

/* Puts what CLOCK_MONOTONIC showed in the recorded run in place of what it shows. */
void read_clock(timespec& time);

/* ---- numbers, as the recorder gives them ---- */

void add_handle(const void* handle, int number, const void* os_params);
int handle_number(const void* handle);
int signal_number(const void* os_params);
int pointer_number(const void* pointer);

/* The program's function of a kind of callback: its number, from 1. */
using AnyFunction = void (*)();
int callback_number(const char* kind, AnyFunction callback);

/* The pointer that the program gave for the service; null for a platform's object, which is ours.
 */
void know_service(const std::string& name, const void* service);

/* Where responses of DCI are stored; null once they may not be any more. */
void set_response_area(unsigned char* area, size_t size);

/* The service's name as the tape has it. */
std::string service_name(const void* service);

} // namespace engine
