// SPDX-License-Identifier: Apache-2.0
/* Which DIAG packet answers which. Packets carry no number, so the first packet from the phone that
 * begins with the command sent, or with a refusal, is the answer, unless the library says so. */
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "names.h"

namespace lab::tape {

class DiagLinks {
  public:
    void sent(std::string_view packet, uint32_t exchange) {
        if (open_.size() == most_open)
            open_.erase(open_.begin());
        if (!packet.empty())
            open_.push_back({exchange, command(packet)});
    }

    /* The exchange of the packet that was answered; 0: none. `is_answer`: it is one to whichever was
     * sent first. */
    uint32_t answered(std::string_view packet, bool is_answer) {
        if (packet.empty())
            return 0;
        const auto found = std::find_if(open_.begin(), open_.end(), [&](const Sent& sent) {
            return is_answer || names::diag_refuses(command(packet)) ||
                   sent.command == command(packet);
        });
        if (found == open_.end())
            return 0;
        const uint32_t exchange = found->exchange;
        open_.erase(found);
        return exchange;
    }

  private:
    struct Sent {
        uint32_t exchange;
        uint8_t command;
    };
    static uint8_t command(std::string_view packet) { return static_cast<uint8_t>(packet[0]); }
    static constexpr size_t most_open = 16;
    std::vector<Sent> open_;
};

} // namespace lab::tape
