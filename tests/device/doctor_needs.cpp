/* doctor_needs: writes lab/phone/needs.h, what the doctor knows of the catalogue, to standard
 * output. The file is kept, since a phone build runs no program of its own; a test compares. */
#include <cstdio>
#include <string>

#include "catalogue.h"

namespace {

constexpr std::string_view names[] = {"vendor", "uim", "sar", "nas", "vs", "diag", "at"};

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text)
        result += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return result + "\"";
}

} // namespace

int main() {
    std::puts(
        "/* What each command needs of the phone; made from the lab's catalogue. To renew it:\n"
        " * out/dev/bin/doctor_needs > lab/phone/needs.h */\n"
        "#pragma once\n\n"
        "enum Need : unsigned {");
    for (size_t i = 0; i < std::size(names); ++i)
        std::printf("    need_%s = 1U << %zu,\n", std::string(names[i]).c_str(), i);
    std::puts("};\n\n"
              "struct GroupTitle {\n    int number;\n    const char* title;\n};\n\n"
              "struct CommandNeeds {\n"
              "    const char* words; /* the fixed words that choose it: \"5 10 1\", \"8\" */\n"
              "    const char* title;\n"
              "    unsigned needs; /* Need bits */\n"
              "};\n\n"
              "// clang-format off\n"
              "inline constexpr GroupTitle group_titles[] = {");
    for (const lab::Group& group : lab::groups())
        std::printf("    {%d, %s},\n", group.number, quoted(group.title).c_str());
    std::puts("};\n\ninline constexpr CommandNeeds command_needs[] = {");
    for (const lab::Command& command : lab::catalogue()) {
        std::string needs;
        for (const std::string_view need : command.needs)
            needs += (needs.empty() ? "need_" : " | need_") + std::string(need);
        std::printf("    {%s, %s, %s},\n", quoted(command.words).c_str(),
                    quoted(command.title).c_str(), needs.empty() ? "0" : needs.c_str());
    }
    std::puts("};\n// clang-format on");
}
