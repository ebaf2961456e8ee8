// SPDX-License-Identifier: Apache-2.0
/* lab/phone/needs.h: what the doctor, which runs on a phone without the lab, knows of the catalogue. */
#include "pages.h"

#include "catalogue.h"

namespace lab {

namespace {

constexpr std::string_view needs[] = {"vendor", "uim", "sar", "nas", "vs", "diag", "at"};

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text)
        result += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return result + "\"";
}

} // namespace

std::string doctor_needs() {
    std::string text = R"(// SPDX-License-Identifier: Apache-2.0
/* What each command needs of the phone; made from the lab's catalogue. */
#pragma once

enum Need : unsigned {
)";
    for (size_t i = 0; i < std::size(needs); ++i)
        text += "    need_" + std::string(needs[i]) + " = 1U << " + std::to_string(i) + ",\n";
    text += R"(};

struct GroupTitle {
    int number;
    const char* title;
};

struct CommandNeeds {
    const char* words; /* the fixed words that choose it: "5 10 1", "8" */
    const char* title;
    unsigned needs; /* Need bits */
};

// clang-format off
inline constexpr GroupTitle group_titles[] = {
)";
    for (const Group& group : groups())
        text += "    {" + std::to_string(group.number) + ", " + quoted(group.title) + "},\n";
    text += "};\n\ninline constexpr CommandNeeds command_needs[] = {\n";
    for (const Command& command : catalogue()) {
        std::string bits;
        for (const std::string_view need : command.needs)
            bits += (bits.empty() ? "need_" : " | need_") + std::string(need);
        text += "    {" + quoted(command.words) + ", " + quoted(command.title) + ", " +
                (bits.empty() ? "0" : bits) + "},\n";
    }
    return text + "};\n// clang-format on\n";
}

} // namespace lab
