// SPDX-License-Identifier: Apache-2.0
/* The platform's service objects, which the replayer has in the platform's place. The program only
 * hands their addresses back to the platform. */
#pragma once

#include <string>

#include "script.h"

namespace objects {

/* What the recorded platform's object said of itself. */
void set(const lab::tape::ScriptService& service);

/* The name of one of the platform's objects; of any other service its number; "-1" of null. */
std::string name_of(const void* service);

/* Null when it is none of ours. */
const void* find(const std::string& name);

} // namespace objects
