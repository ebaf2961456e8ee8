// SPDX-License-Identifier: Apache-2.0
#include "phone/adb.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <thread>

namespace lab::adb {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds short_limit = seconds(20);
constexpr milliseconds copy_limit = seconds(300);
constexpr milliseconds root_limit = seconds(10); /* adbd starts anew */
constexpr milliseconds wait_limit = seconds(5);
constexpr milliseconds between_attempts{500};
constexpr milliseconds kill_limit = seconds(5);

/* Lines that the phone's shell writes around a command's own output. */
constexpr const char* begin_mark = "kvt-lab-begin ";
constexpr const char* end_mark = "kvt-lab-end ";

constexpr const char* no_adb = "adb is not installed (no program adb in PATH)";

std::string setting(const char* name, const char* otherwise) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : otherwise;
}

ProcessResult call(std::vector<std::string> words, milliseconds limit) {
    ProcessRequest request;
    request.command = std::move(words);
    request.limit = limit;
    request.errors_too = true;
    return run_process(request);
}

ProcessResult call(const Phone& phone, const std::vector<std::string>& words, milliseconds limit) {
    std::vector<std::string> all = phone.select;
    all.insert(all.end(), words.begin(), words.end());
    return call(all, limit);
}

/* The last line with something in it: adb's own message comes last. */
std::string last_line(const std::string& text) {
    std::istringstream lines(text);
    std::string last;
    for (std::string line; std::getline(lines, line);) {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
            line.pop_back();
        if (!line.empty())
            last = line;
    }
    return last;
}

/* ---- which phone ---- */

struct Listed {
    std::string serial, state;
};

bool list_phones(std::vector<Listed>& phones, std::string& error) {
    const ProcessResult result = call({"adb", "devices"}, short_limit);
    if (result.how == ProcessResult::not_started && result.status == ENOENT) {
        error = no_adb;
        return false;
    }
    if (result.how != ProcessResult::exited || result.status != 0) {
        error = "adb " + how_it_ended(result) + ": " + last_line(result.output);
        return false;
    }
    std::istringstream lines(result.output);
    bool behind_title = false;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        Listed row;
        if (behind_title && words >> row.serial >> row.state)
            phones.push_back(row);
        behind_title |= line.rfind("List of devices", 0) == 0;
    }
    return true;
}

std::string serials(const std::vector<Listed>& phones) {
    std::string text;
    for (const Listed& phone : phones)
        text += (text.empty() ? "" : ", ") + phone.serial;
    return text;
}

/* What a state other than "device" means. */
std::string state_text(const Listed& phone) {
    static constexpr const char* texts[][2] = {
        {"unauthorized", "has not authorised this machine: confirm it on the phone's screen"},
        {"offline", "is offline: unplug it and plug it in again"},
        {"no", "may not be opened by this user: see adb's udev rules"}, /* "no permissions" */
        {"recovery", "is in recovery mode"},
        {"bootloader", "is in the bootloader"},
    };
    for (const auto& [state, text] : texts)
        if (phone.state == state)
            return "phone " + phone.serial + " " + text;
    return "phone " + phone.serial + " is in state " + phone.state;
}

bool is_usb(const Listed& phone) {
    return phone.serial.find(':') == std::string::npos && phone.serial.rfind("emulator-", 0) != 0;
}

bool choose(const std::string& on, Phone& phone, std::string& error) {
    std::vector<Listed> listed;
    if (!list_phones(listed, error))
        return false;
    std::vector<Listed> fitting;
    std::copy_if(listed.begin(), listed.end(), std::back_inserter(fitting),
                 [&](const Listed& row) { return on == "usb" ? is_usb(row) : row.serial == on; });
    if (fitting.empty()) {
        error = "no phone " + (on == "usb" ? std::string("on USB") : on) +
                (listed.empty() ? ": adb sees none" : "; adb sees " + serials(listed));
        return false;
    }
    if (fitting.size() > 1) {
        error = "several phones on USB: name one with --on: " + serials(fitting);
        return false;
    }
    if (fitting.front().state != "device") {
        error = state_text(fitting.front());
        return false;
    }
    phone.serial = fitting.front().serial;
    phone.select = {"adb", "-s", phone.serial};
    return true;
}

/* ---- running ---- */

/* A line for the phone's shell that runs the words and tells of their begin and end: not every adb
 * hands the status on. `env` sets the environment for the command alone, not for the shell. */
std::string shell_line(const Phone& phone, const ProcessRequest& request) {
    std::string line = "sh -c " +
                       shell_quoted(std::string("echo ") + begin_mark + "$$; exec \"$0\" \"$@\"") +
                       " env";
    for (const std::vector<std::string>* words : {&request.environment, &request.command})
        for (const std::string& word : *words)
            line += " " + shell_quoted(word);
    line += std::string("; r=$?; echo; echo ") + end_mark + "$r";
    return phone.root == Phone::su ? "su -c " + shell_quoted(line) : line;
}

/* A number behind a mark, at the end of its line; -1 when there is none. */
int number_at(const std::string& text, size_t at) {
    int number = -1;
    const char* const first = text.data() + at;
    const auto read = std::from_chars(first, text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr != text.data() + text.size() &&
                   (*read.ptr == '\n' || *read.ptr == '\r')
               ? number
               : -1;
}

std::string with_plain_lines(const std::string& text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n')
            result += text[i];
    return result;
}

/* Takes the marks out of the output. */
struct Marks {
    int process = -1; /* on the phone; -1: it did not begin */
    int status = -1;  /* -1: it was not heard of again */
};

Marks take_marks(std::string& output) {
    Marks marks;
    const size_t begin = output.find(begin_mark);
    if (begin == std::string::npos)
        return marks;
    const size_t begin_end = output.find('\n', begin);
    if (begin_end == std::string::npos)
        return marks;
    marks.process = number_at(output, begin + std::char_traits<char>::length(begin_mark));
    /* Old ones end each line with CR LF, of our own lines too. */
    const bool crlf = output[begin_end - 1] == '\r';
    output.erase(0, begin_end + 1);
    if (crlf)
        output = with_plain_lines(output);
    const size_t end = output.rfind(std::string("\n") + end_mark);
    if (end != std::string::npos) {
        marks.status = number_at(output, end + 1 + std::char_traits<char>::length(end_mark));
        output.resize(end);
    }
    return marks;
}

void end_on_phone(const Phone& phone, int process) {
    const std::string line = "kill -9 " + std::to_string(process);
    call(phone, {"shell", phone.root == Phone::su ? "su -c " + shell_quoted(line) : line},
         kill_limit);
}

/* ---- root ---- */

/* What `id -u` says on the phone, in the given way; -1 when it does not. */
int user_on_phone(Phone phone, Phone::Root way) {
    phone.root = way;
    ProcessRequest request;
    request.command = {"id", "-u"};
    request.limit = short_limit;
    request.errors_too = true;
    const ProcessResult result = run_on_phone(phone, request);
    int user = -1;
    if (result.how == ProcessResult::exited && result.status == 0)
        std::from_chars(result.output.data(), result.output.data() + result.output.size(), user);
    return user;
}

bool become_root(Phone& phone, std::string& error) {
    const ProcessResult asked = call(phone, {"root"}, root_limit);
    /* When adbd starts anew the phone is away for a moment, and at first may still seem there. */
    const bool restarting = asked.output.find("restarting") != std::string::npos;
    const auto end = Clock::now() + root_limit;
    for (bool first = true; first || (restarting && Clock::now() < end); first = false) {
        if (!first)
            std::this_thread::sleep_for(between_attempts);
        if (restarting)
            call(phone, {"wait-for-device"}, wait_limit);
        if (user_on_phone(phone, Phone::adbd) == 0) {
            phone.root = Phone::adbd;
            return true;
        }
    }
    if (user_on_phone(phone, Phone::su) == 0) {
        phone.root = Phone::su;
        return true;
    }
    error = "no root on phone " + phone.serial + ": adb root says \"" + last_line(asked.output) +
            "\", and su -c does not make us root";
    return false;
}

} // namespace

bool find_phone(const std::string& on, Rights rights, Phone& phone, std::string& error) {
    if (!choose(on, phone, error))
        return false;
    const int user = user_on_phone(phone, Phone::none);
    if (user < 0) {
        error = "phone " + phone.serial + " runs no commands (adb shell id -u)";
        return false;
    }
    if (user == 0) {
        phone.root = Phone::adbd;
        return true;
    }
    std::string no_root;
    if (become_root(phone, no_root) || rights == Rights::if_possible)
        return true;
    error = no_root;
    return false;
}

ProcessResult run_on_phone(const Phone& phone, const ProcessRequest& request) {
    ProcessRequest shell = request;
    shell.command = phone.select;
    shell.command.insert(shell.command.end(), {"shell", shell_line(phone, request)});
    shell.environment.clear();
    shell.pass_on = false;
    ProcessResult result = run_process(shell);
    const std::string message = last_line(result.output);
    const Marks marks = take_marks(result.output);
    if (result.how == ProcessResult::not_started) {
        result.why = result.status == ENOENT ? std::string("could not be run: ") + no_adb : "";
    } else if (result.how == ProcessResult::timed_out) {
        if (marks.process > 0)
            end_on_phone(phone, marks.process);
    } else if (marks.process < 0) {
        result.how = ProcessResult::not_started;
        result.why = "could not be run on phone " + phone.serial +
                     (message.empty() ? ": it does not answer" : ": " + message);
        result.output.clear();
    } else if (marks.status < 0) {
        result.how = ProcessResult::timed_out;
        result.why = "was not heard of again: phone " + phone.serial + " was lost while it ran";
    } else {
        result.how = ProcessResult::exited;
        result.status = marks.status;
        constexpr int no_program = 127, no_right = 126;
        if (marks.status == no_program || marks.status == no_right)
            result.why =
                "did not start on phone " + phone.serial + ": kvt-lab deploy puts it there";
    }
    return result;
}

/* ---- files ---- */

namespace {

std::string hash_of(const ProcessResult& result) {
    constexpr size_t digits = 64;
    return result.how == ProcessResult::exited && result.status == 0 &&
                   result.output.size() > digits && result.output[digits] == ' '
               ? result.output.substr(0, digits)
               : "";
}

bool copied(const ProcessResult& result, const std::string& what, std::string& error) {
    if (result.how == ProcessResult::exited && result.status == 0)
        return true;
    const std::string message = last_line(result.output);
    error = what + ": adb " + (message.empty() ? how_it_ended(result) : "says " + message);
    return false;
}

ProcessResult on_phone(const Phone& phone, const std::vector<std::string>& words) {
    ProcessRequest request;
    request.command = words;
    request.limit = short_limit;
    request.errors_too = true;
    return run_on_phone(phone, request);
}

} // namespace

std::string hash_here(const std::string& path) {
    return hash_of(call({"sha256sum", "--", path}, copy_limit));
}

std::string hash_on_phone(const Phone& phone, const std::string& path) {
    return hash_of(on_phone(phone, {"sha256sum", path}));
}

bool push(const Phone& phone, const std::string& from, const std::string& to, std::string& error) {
    const std::string aside = to + ".new";
    if (!copied(call(phone, {"push", from, aside}, copy_limit), from, error))
        return false;
    const std::string hash = hash_here(from);
    if (hash.empty() || hash_on_phone(phone, aside) != hash) {
        error = from + " did not arrive whole at phone " + phone.serial;
        return false;
    }
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"chmod", "755", aside}, {"mv", "-f", aside, to}}) {
        const ProcessResult result = on_phone(phone, words);
        if (result.how != ProcessResult::exited || result.status != 0) {
            error = words.front() + " " + aside + " on phone " + phone.serial + " " +
                    how_it_ended(result);
            return false;
        }
    }
    return true;
}

bool pull(const Phone& phone, const std::string& from, const std::string& to, std::string& error) {
    const std::string aside = to + ".new";
    const std::string hash = hash_on_phone(phone, from);
    if (hash.empty()) {
        error = from + " can't be read on phone " + phone.serial;
        return false;
    }
    if (!copied(call(phone, {"pull", from, aside}, copy_limit), from, error)) {
        std::remove(aside.c_str());
        return false;
    }
    if (hash_here(aside) != hash) {
        std::remove(aside.c_str());
        error = from + " did not arrive whole from phone " + phone.serial;
        return false;
    }
    if (std::rename(aside.c_str(), to.c_str()) != 0) {
        error = to + " can't be written";
        return false;
    }
    return true;
}

std::string shell_quoted(const std::string& word) {
    std::string result = "'";
    for (const char c : word)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string phone_folder() { return setting("KVT_ON_FOLDER", "/data/local/tmp/kvt"); }

std::string kvt_on_phone(const std::string& given) {
    return given.empty() ? phone_folder() + "/kvt" : given;
}

std::vector<std::string> phone_environment() {
    return {"LD_LIBRARY_PATH=" + setting("KVT_ON_LIBRARIES", "/vendor/lib64")};
}

} // namespace lab::adb
