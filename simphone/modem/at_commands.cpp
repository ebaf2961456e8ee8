// SPDX-License-Identifier: Apache-2.0
#include "modem/at_commands.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <sstream>
#include <thread>
#include <vector>

#include <fnmatch.h>

#include "modem/modem.h"
#include "phone/complaint.h"
#include "phone/faults.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

constexpr const char* file = "at/commands";

constexpr const char* default_table = R"(# PATTERN  ANSWER  [-> ACTION]
AT          OK
ATI         simphone\nRevision: simphone-1.0\nOK
AT+CGMI     simphone\nOK
AT+CGMR     simphone-1.0\nOK
AT+CSQ      +CSQ: 20,99\nOK
AT+CREG\?   +CREG: 0,1\nOK
AT+CPIN\?   +CPIN: READY\nOK
AT+CFUN\?   +CFUN: 1\nOK
AT+CFUN=1,1 OK -> restart
)";

struct Row {
    int line;
    std::string pattern;
    std::string answer;
    std::vector<std::string> action;
};

/* A file that an action may name: below the phone, and none of the phone's own. */
bool is_settable(const fs::path& name) {
    return name.is_relative() && name.has_filename() && name.string()[0] != '.' && name != "log" &&
           std::none_of(name.begin(), name.end(),
                        [](const fs::path& part) { return part == ".."; });
}

bool is_action(const std::vector<std::string>& words) {
    return words.empty() || (words.size() == 1 && words[0] == "restart") ||
           (words.size() == 2 && words[0] == "remove" && is_settable(words[1])) ||
           (words.size() >= 3 && words[0] == "write" && is_settable(words[1]));
}

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos
               ? ""
               : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::optional<Row> read_row(const std::string& text, int line) {
    Row row{line, "", "", {}};
    std::istringstream in(text);
    std::string rest;
    if (text[0] == '#' || !(in >> row.pattern))
        return std::nullopt;
    std::getline(in, rest);
    const size_t arrow = rest.rfind("->");
    row.answer = trimmed(rest.substr(0, arrow));
    if (arrow != std::string::npos)
        for (const Word& word : words_of(rest.substr(arrow + 2)))
            row.action.push_back(word.text);
    if (row.answer.empty() && row.action.empty()) {
        complain(file, line, "'" + text + "' has no answer: PATTERN ANSWER [-> ACTION]");
        return std::nullopt;
    }
    if ((arrow != std::string::npos && row.action.empty()) || !is_action(row.action)) {
        complain(file, line,
                 "'" + trimmed(rest.substr(arrow)) +
                     "' can't be done: -> restart, -> write FILE TEXT, -> remove FILE");
        row.action.clear();
    }
    return row;
}

std::optional<Row> find_row(const std::string& command) {
    std::optional<Row> found;
    std::istringstream lines(setting_text(file, default_table));
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        std::optional<Row> row = read_row(line, ++number);
        if (row && !found && ::fnmatch(row->pattern.c_str(), command.c_str(), FNM_CASEFOLD) == 0)
            found = std::move(row);
    }
    return found;
}

/* False when the phone can't store it. */
bool act(const std::vector<std::string>& action) {
    take_storage_error();
    if (action.empty())
        return true;
    if (action[0] == "restart")
        restart_modem();
    else if (action[0] == "remove")
        remove_file(action[1]);
    else {
        std::string text;
        for (size_t i = 2; i < action.size(); ++i)
            text += (text.empty() ? "" : " ") + action[i];
        write_text(action[1], text);
    }
    return take_storage_error() == 0;
}

/* Each line, as "\n" in the table parts them, between CR LF. */
std::string framed(const std::string& answer) {
    std::string all;
    for (size_t at = 0; at < answer.size();) {
        const size_t end = std::min(answer.find("\\n", at), answer.size());
        all += "\r\n" + answer.substr(at, end - at) + "\r\n";
        at = end + 2;
    }
    return all;
}

} // namespace

std::string answer_at_command(const std::string& command) {
    const std::optional<Fault> fault = platform_call("at_command", command);
    if (fault && (fault->kind == Fault::Kind::timeout || fault->kind == Fault::Kind::gone))
        return "";
    if (fault && fault->kind == Fault::Kind::error)
        return framed("ERROR");
    if (fault && fault->kind == Fault::Kind::late)
        std::this_thread::sleep_for(std::chrono::milliseconds(fault->late_ms()));
    const std::optional<Row> row = find_row(command);
    const bool done = row && act(row->action);
    std::string answer = framed(done ? row->answer : "ERROR");
    if (fault && fault->kind == Fault::Kind::reply)
        return framed(fault->argument);
    if (fault && fault->kind == Fault::Kind::restart)
        restart_modem();
    if (fault) {
        Bytes bytes(answer.begin(), answer.end());
        spoil(*fault, bytes);
        answer.assign(bytes.begin(), bytes.end());
    }
    return answer;
}

std::string at_text(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        char code[8];
        std::snprintf(code, sizeof code, "\\x%02x", u);
        text += c == '\r'              ? "\\r"
                : c == '\n'            ? "\\n"
                : c == '\\'            ? "\\\\"
                : u < 0x20 || u > 0x7E ? code
                                       : std::string(1, c);
    }
    return text;
}

} // namespace simphone
