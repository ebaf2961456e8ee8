// SPDX-License-Identifier: Apache-2.0
/* Where the recorder's and the replayer's libraries lie. */
#pragma once

#include <string>

namespace lab::tape {

/* A file or folder in KVT_TAPE_LIBRARIES, or in the folders of the build and of an installation, as
 * seen from our program's. Empty, with a message, when it is not there. */
std::string find_library(const std::string& name, std::string& error);

/* A library as LD_PRELOAD takes it, where blanks and colons part the entries: its path, or one without
 * them that holds as long as we run. */
std::string preloadable(const std::string& path);

} // namespace lab::tape
