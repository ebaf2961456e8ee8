// SPDX-License-Identifier: Apache-2.0
#include "tape/log_page.h"

#include <charconv>
#include <ctime>

#include "tape/clients.h"
#include "tape/format.h"

namespace lab::tape {

namespace {

/* Microseconds since 1970 of the log's local time; 0 when it is none. */
int64_t time_of(const LogLine& line) {
    const std::string text = std::string(line.date) + ' ' + std::string(line.time);
    struct tm local {};
    const char* const rest = ::strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &local);
    if (rest == nullptr)
        return 0;
    local.tm_isdst = -1;
    int milliseconds = 0;
    if (*rest == '.')
        std::from_chars(rest + 1, text.c_str() + text.size(), milliseconds);
    return static_cast<int64_t>(::mktime(&local)) * 1000000 + int64_t{milliseconds} * 1000;
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

void LogCrossings::message(std::string_view text, Crossing& crossing) {
    const std::string_view service = take_word(text), which = take_word(text);
    constexpr size_t header = 7;
    if (!from_hex(text, crossing.bytes) || crossing.bytes.size() < header) {
        crossing.bytes.assign(service).append(" message that can't be read");
        crossing.flags = crossing_failed;
        return;
    }
    crossing.kind = CrossingKind::message;
    crossing.type = which == "req"   ? MessageType::request
                    : which == "rsp" ? MessageType::response
                                     : MessageType::indication;
    crossing.direction = which == "req" ? Direction::to_phone : Direction::from_phone;
    crossing.service = service_named(service);
    crossing.layout = Layout::wire;
    crossing.message = static_cast<int64_t>(little_endian(crossing.bytes, 3, 2));
    const uint64_t transaction = little_endian(crossing.bytes, 1, 2);
    crossing.bytes.erase(0, header);
    if (crossing.type == MessageType::indication)
        return;
    const std::string key = std::to_string(crossing.run) + ' ' + std::string(service) + ' ' +
                            std::to_string(transaction);
    if (crossing.type == MessageType::request) {
        crossing.exchange = ++exchanges_;
        asked_[key] = crossing.exchange;
    } else if (const auto asked = asked_.find(key); asked != asked_.end()) {
        crossing.exchange = asked->second;
        asked_.erase(asked);
    }
}

void LogCrossings::packet(std::string_view text, Crossing& crossing) {
    const std::string_view which = take_word(text);
    crossing.direction = which == "tx" ? Direction::to_phone : Direction::from_phone;
    if (!from_hex(text, crossing.bytes)) {
        crossing.bytes = "diag packet that can't be read";
        crossing.flags = crossing_failed;
        return;
    }
    crossing.kind = CrossingKind::diag;
    DiagLinks& links = diag_[crossing.run];
    if (which == "tx") {
        crossing.exchange = ++exchanges_;
        links.sent(crossing.bytes, crossing.exchange);
    } else if (which == "lost") {
        crossing.flags = crossing_late | crossing_failed;
    } else {
        crossing.exchange = links.answered(crossing.bytes, false);
    }
}

void LogCrossings::read(const LogLine& line, Crossing& crossing) {
    crossing = {};
    crossing.time_us = time_of(line);
    std::from_chars(line.process.data(), line.process.data() + line.process.size(), crossing.run);
    if (line.kind == "qmi")
        return message(line.text, crossing);
    if (line.kind == "diag")
        return packet(line.text, crossing);
    crossing.flags = line.kind == "fault" ? crossing_failed : 0;
    crossing.bytes.assign(line.kind).append(1, ' ').append(line.text);
}

bool LogPage::show(std::string_view line, std::string& out) {
    LogLine parts;
    if (!read_log_line(line, parts))
        return false;
    log_.read(parts, crossing_);
    words_.clear();
    const bool good = teller_.tell(words_, crossing_);
    out.append(parts.time).append(1, ' ').append(parts.process).append(1, ' ');
    append_told(out, crossing_.direction, good, words_);
    return true;
}

} // namespace lab::tape
