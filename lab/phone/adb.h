// SPDX-License-Identifier: Apache-2.0
/* A phone behind Android's adb: finding it, becoming root on it, running programs and moving files.
 */
#pragma once

#include <string>
#include <vector>

#include "process.h"

namespace lab::adb {

struct Phone {
    enum Root { none, adbd, su };
    std::string serial;              /* for messages: as it was asked for, or "usb" */
    std::vector<std::string> select; /* adb, and its options that choose the phone */
    Root root = none;
};

enum class Rights { if_possible, root };

/* The phone with that serial number, or the one on "usb". With Rights::root it becomes root by
 * `adb root` or by su, and it is an error when neither works; with Rights::if_possible it then goes
 * without. False, with one line in `error`, when the phone can't be used. */
bool find_phone(const std::string& on, Rights rights, Phone& phone, std::string& error);

/* run_process on the phone: the command arrives as it is, byte for byte, the environment is added
 * to the phone's, and the status is the command's own. When the phone is lost the result is
 * not_started or, once the command had begun, timed_out; `why` tells. A command that is cut off at
 * its limit is ended on the phone too, as far as the phone can be reached. */
ProcessResult run_on_phone(const Phone& phone, const ProcessRequest& request);

/* Copies a file; false, with one line in `error`, when it did not arrive whole. The target appears
 * only when it is whole. */
bool push(const Phone& phone, const std::string& from, const std::string& to, std::string& error);
bool pull(const Phone& phone, const std::string& from, const std::string& to, std::string& error);

/* SHA-256 as hexadecimal digits; empty when there is no such file or no way to tell. */
std::string hash_here(const std::string& path);
std::string hash_on_phone(const Phone& phone, const std::string& path);

/* The word for a POSIX shell. */
std::string shell_quoted(const std::string& word);

/* Folder of our programs on a phone: KVT_ON_FOLDER, else /data/local/tmp/kvt. */
std::string phone_folder();

/* kvt's path on a phone: the given one, else in phone_folder(). */
std::string kvt_on_phone(const std::string& given);

/* What programs of ours are run with on a phone: LD_LIBRARY_PATH, from KVT_ON_LIBRARIES, else
 * /vendor/lib64. */
std::vector<std::string> phone_environment();

} // namespace lab::adb
