// SPDX-License-Identifier: Apache-2.0
#include "modem/at_commands.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>
#include <vector>

#include <fnmatch.h>

#include "modem/modem.h"
#include "phone/faults.h"
#include "phone/phone.h"
#include "phone/settings.h"
#include "phone_lines.h"

namespace simphone {

using phone_files::AtRow;

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

std::optional<AtRow> find_row(const std::string& command) {
    for (AtRow& row : setting_read(file, default_table, phone_files::read_at_rows))
        if (::fnmatch(row.pattern.c_str(), command.c_str(), FNM_CASEFOLD) == 0)
            return std::move(row);
    return std::nullopt;
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
    const std::optional<AtRow> row = find_row(command);
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
