// SPDX-License-Identifier: Apache-2.0
/* Writes a file whole or not at all. */
#pragma once

#include <string>
#include <string_view>

namespace lab {

/* Written aside and renamed, so that a reader finds the old file or the new one. False with a
 * message when it can't be written; the old file stays then. */
bool write_file(const std::string& path, std::string_view text, std::string& error);

} // namespace lab
