// SPDX-License-Identifier: Apache-2.0
#include "tape/crossing.h"

namespace lab::tape {

bool Teller::tell_message(std::string& out, const Crossing& crossing) {
    if ((crossing.flags & crossing_decoded) != 0)
        out += "decoded ";
    else if (crossing.type == MessageType::indication)
        out += "indication ";
    if (crossing.result != 0) {
        out += crossing.service != nullptr ? crossing.service->name : "service";
        out += ' ';
        describe_transport(out, crossing.result);
        asked_.erase(crossing.exchange);
        return false;
    }
    Exchange exchange;
    const auto asked = asked_.find(crossing.exchange);
    if (asked != asked_.end()) {
        exchange = asked->second;
        asked_.erase(asked);
    }
    const bool good = describe_message(out, crossing.service, crossing.message, crossing.type,
                                       crossing.layout, crossing.bytes, exchange);
    if (crossing.type == MessageType::request && crossing.exchange != 0)
        asked_[crossing.exchange] = exchange;
    return good;
}

bool Teller::tell(std::string& out, const Crossing& crossing) {
    bool good = true;
    switch (crossing.kind) {
    case CrossingKind::note:
    case CrossingKind::call:
        out += crossing.bytes;
        break;
    case CrossingKind::message:
        good = tell_message(out, crossing);
        break;
    case CrossingKind::diag:
        out += (crossing.flags & crossing_late) != 0 ? "diag, came too late: " : "diag ";
        good = describe_diag(out, crossing.bytes) || crossing.direction == Direction::to_phone;
        break;
    case CrossingKind::stream:
        out += "diag stream ";
        describe_bytes(out, crossing.bytes);
        break;
    }
    return good && (crossing.flags & crossing_failed) == 0;
}

void append_told(std::string& out, Direction direction, bool good, std::string_view text) {
    out += direction == Direction::to_phone ? '>' : direction == Direction::from_phone ? '<' : ' ';
    out += good ? " " : " FAILED: ";
    out += text;
}

} // namespace lab::tape
