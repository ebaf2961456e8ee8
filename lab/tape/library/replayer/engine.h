// SPDX-License-Identifier: Apache-2.0
/* The replayed run: what was recorded, and how far the program has come in it.
 *
 * A call is answered from the sequence of its kind and object, and only if the same goes in. Where
 * it stands among the calls, callbacks and printed texts of other threads is kept as well as the
 * program allows: a thread that is early waits for those before it, but not for ever, and not when
 * nobody else could come. Callbacks alone wait until it is their turn: one that is not due is an
 * answer to nothing. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "script.h"

namespace engine {

using lab::tape::ScriptEvent;
using lab::tape::ScriptValue;

/* ---- calls ---- */

/* The call's recorded event, once its turn has come and the callbacks that came out of it have run;
 * null, and told, when the tape does not have it next. */
const ScriptEvent* begin_call(const char* name, const std::string& inputs);

/* What the call gives is in place: others may go on. */
void end_call(const ScriptEvent& event);

const ScriptValue* value_of(const ScriptEvent& event, const char* name);

/* ---- pauses ---- */

/* The thread's next recorded pause, begun; null when it has none any more, or there is no order to
 * keep. */
const ScriptEvent* begin_pause();

/* Waits for the turn of its end. */
void end_pause(const ScriptEvent& event);

/* True: whatever took time takes it again. */
bool takes_its_time();

/* ---- locks ---- */

/* The thread's lock of this number, when its turn has come; null when the tape does not tell of
 * it. */
const ScriptEvent* begin_lock(long long number);

/* It is taken; null: the tape does not tell of it. */
void end_lock(const ScriptEvent* event, long long number);

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

/* ---- output ---- */

/* Waits until the text stands next in the recorded output. */
void before_printing(const char* text, size_t length);
void after_printing(size_t length);

/* Waits until it is this thread that prints next, whatever it is. */
void before_output_lock();

} // namespace engine
