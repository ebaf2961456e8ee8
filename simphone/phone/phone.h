// SPDX-License-Identifier: Apache-2.0
/* The phone's directory: everything the simulated phone knows lies there as plain files.
 *
 * KVT_PHONE names it; otherwise it is kvt/phone under $XDG_STATE_HOME (~/.local/state). It is made,
 * with what a fresh phone holds, at first use. Names below are relative to it. Changes are atomic
 * (written aside, then renamed) and serialised between processes and threads by Lock (lock.h). */
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "phone/bytes.h"

namespace simphone {

std::filesystem::path root();

/* True when the directory is there; makes none. */
bool exists();

/* Makes the directory and what a fresh phone holds, where they are missing. False when there is no
 * directory then: such a phone answers nothing. */
bool ensure_phone();

std::optional<Bytes> read_file(const std::filesystem::path& name);

/* The names in a folder, sorted; none when it can't be read. */
std::vector<std::string> list_folder(const std::filesystem::path& name);

/* Returns 0 or an errno value; what was there before stays when it fails. */
int write_file(const std::filesystem::path& name, ByteView bytes);
int write_text(const std::filesystem::path& name, const std::string& text);
int remove_file(const std::filesystem::path& name);

/* Writes what the phone can do without: on a phone that can't be written nothing fails. */
void note_text(const std::filesystem::path& name, const std::string& text);

/* The errno value of the last write or removal that failed in this thread, other than for a missing
 * file, since it was asked last; 0 when there was none. For requests whose answer has no room for
 * it. */
int take_storage_error();

/* Milliseconds since the epoch: what state files count time in. */
int64_t now_ms();

/* Appends one line, "TIME PID KIND TEXT", to the file log; a newline within the text is shown as
 * \n. A log that has grown over 8 MiB is moved to log.1 first. */
void log_line(const std::string& kind, std::string text);

} // namespace simphone
