// SPDX-License-Identifier: Apache-2.0
/* Where the lab finds kvt. */
#pragma once

#include <string>

namespace lab {

/* Path of the program: `given` (--kvt) if it is not empty, else KVT_PROGRAM, else "kvt" beside our
 * own program, else "kvt" on PATH. Empty, with a message in `error`, when there is none that may be
 * run. */
std::string find_kvt(const std::string& given, std::string& error);

/* The folder of our own program, with links resolved; "." when it can't be told. */
std::string own_folder();

} // namespace lab
