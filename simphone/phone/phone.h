/* The phone's directory: everything the simulated phone knows lies there as plain files.
 *
 * KVT_PHONE names it; otherwise it is kvt/phone under $XDG_STATE_HOME (~/.local/state). It is made,
 * with what a fresh phone holds, at first use. Names below are relative to it. Changes are atomic
 * (written aside, then renamed) and serialised between processes and threads by Lock. */
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "phone/bytes.h"

namespace simphone {

std::filesystem::path root();

/* True when the directory is there, or could be made. A phone that is not usable answers nothing.
 */
bool usable();

/* True when the directory is there; makes none. */
bool exists();

/* Holds the phone for this thread; may be nested. A phone that can't be written may have no lock
 * file to hold: then held() is false, and nothing is written. */
class Lock {
  public:
    Lock();
    ~Lock();
    bool held() const;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
};

std::optional<Bytes> read_file(const std::filesystem::path& name);

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

/* A setting: the file's text without blanks around it. A missing file is made with the default; one
 * that is there but can't be read counts as the default and stays. */
std::string setting(const std::filesystem::path& name, const std::string& default_text);
long setting_number(const std::filesystem::path& name, long default_value);

/* A number as a person writes it: decimal, or hexadecimal behind 0x. */
long number_of(const std::string& text);

/* Milliseconds since the epoch: what state files count time in. */
int64_t now_ms();

/* Appends one line, "TIME PID KIND TEXT", to the file log; a newline within the text is shown as
 * \n. A log that has grown over 8 MiB is moved to log.1 first. */
void log_line(const std::string& kind, std::string text);

} // namespace simphone
