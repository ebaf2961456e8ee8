// SPDX-License-Identifier: Apache-2.0
/* What the recorder tells about the program and the phone it runs on, and what it keeps from the
 * program's children. */
#pragma once

#include <cstddef>

#include "qmi_idl.h"
#include "text.h"

namespace program {

/* The members of a run's first line: the program with its arguments, the machine, the phone's model
 * where the C library knows one, the platform's service objects. No library of the platform is
 * asked. */
void describe(Text& head, int argc, char** argv);

/* The platform's service objects by the names that the tape gives them. */
struct Service {
    const char* name;
    const char* symbol;
    const qmi_idl_service_object* object; /* null: this platform has none */
};
using Services = Service[4];
const Services& services();

/* Takes the recorder's library out of LD_PRELOAD, and KVT_TAPE away; other libraries stay. */
void keep_from_children(char** environment);

} // namespace program
