// SPDX-License-Identifier: Apache-2.0
#include "phone/complaint.h"

#include <cerrno>
#include <mutex>
#include <set>

#include <unistd.h>

#include "phone/phone.h"

namespace simphone {

namespace {

/* Never destroyed: framework threads may still complain when the process ends. */
struct Told {
    std::mutex mutex;
    std::set<std::string> texts;
};

bool told_before(const std::string& text) {
    static Told& told = *new Told;
    const std::lock_guard guard(told.mutex);
    return !told.texts.insert(text).second;
}

} // namespace

void complain(const std::string& file, int line, const std::string& text) {
    const std::string place = file + ":" + (line > 0 ? std::to_string(line) + ":" : "") + " ";
    if (told_before(place + text))
        return;
    const int before = errno;
    const std::string message =
        "simulated phone: " + root().string() + (file.empty() ? "" : "/") + place + text + "\n";
    /* One write: lines of several threads stay apart. Nobody to tell it to is no failure. */
    if (::write(STDERR_FILENO, message.data(), message.size()) < 0) {
    }
    log_line("phone", place + text);
    errno = before;
}

void complain(const std::string& file, const phone_files::Complaints& complaints) {
    for (const phone_files::Complaint& complaint : complaints)
        complain(file, complaint.line, complaint.text);
}

} // namespace simphone
