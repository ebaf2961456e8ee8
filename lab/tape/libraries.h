/* Where the recorder's and the replayer's libraries lie. */
#pragma once

#include <string>

namespace lab::tape {

/* A file or folder of KVT_TAPE_LIBRARIES, or of the folder lib beside our program's. Empty, with a
 * message, when it is not there. */
std::string find_library(const std::string& name, std::string& error);

} // namespace lab::tape
