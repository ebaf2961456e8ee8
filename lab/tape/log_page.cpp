// SPDX-License-Identifier: Apache-2.0
#include "tape/log_page.h"

#include "tape/clients.h"
#include "tape/format.h"

namespace lab::tape {

namespace {

bool qmi(std::string& text, std::string_view line, char& direction, Exchange& exchange) {
    const std::string_view service = take_word(line), which = take_word(line);
    std::string message;
    constexpr size_t header = 7;
    if (!from_hex(line, message) || message.size() < header) {
        text.append(service).append(" message that can't be read");
        return false;
    }
    const MessageType type = which == "req"   ? MessageType::request
                             : which == "rsp" ? MessageType::response
                                              : MessageType::indication;
    direction = type == MessageType::request ? '>' : '<';
    if (type == MessageType::indication)
        text = "indication ";
    return describe_message(text, service_named(service),
                            static_cast<int64_t>(little_endian(message, 3, 2)), type, Layout::wire,
                            std::string_view(message).substr(header), exchange);
}

} // namespace

std::string_view take_word(std::string_view& text) {
    const size_t end = text.find(' ');
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return taken;
}

bool read_log_line(std::string_view line, LogLine& parts) {
    for (std::string_view* const part : {&parts.date, &parts.time, &parts.process, &parts.kind})
        *part = take_word(line);
    parts.text = line;
    return parts.date.size() == 10 && parts.time.size() >= 8 && !parts.process.empty() &&
           !parts.kind.empty();
}

bool is_log(std::string_view text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    return line.size() > 24 && line[4] == '-' && line[7] == '-' && line[10] == ' ' &&
           line[13] == ':';
}

bool LogPage::show(std::string_view line, std::string& out) {
    LogLine parts;
    if (!read_log_line(line, parts))
        return false;
    std::string text;
    char direction = ' ';
    bool good = parts.kind != "fault";
    if (parts.kind == "qmi") {
        good = qmi(text, parts.text, direction, exchanges_[std::string(parts.process)]);
    } else if (parts.kind == "diag") {
        std::string_view rest = parts.text;
        const std::string_view which = take_word(rest);
        direction = which == "tx" ? '>' : '<';
        std::string packet;
        text = which == "lost" ? "diag, came too late: " : "diag ";
        good = from_hex(rest, packet) && describe_diag(text, packet) && which != "lost";
    } else {
        text.append(parts.kind).append(1, ' ').append(parts.text);
    }
    out.append(parts.time).append(1, ' ').append(parts.process).append(1, ' ').append(1, direction);
    out.append(good ? " " : " FAILED: ").append(text);
    return true;
}

} // namespace lab::tape
