// SPDX-License-Identifier: Apache-2.0
#include "answers.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>
#include <string>

#include "modem/nvefs.h"
#include "phone/complaint.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

enum : uint8_t {
    cmd_version = 0x00,
    cmd_bad_command = 0x13,
    cmd_bad_length = 0x15,
    cmd_nv_read = 0x26,
    cmd_loopback = 0x7B,
    cmd_build_id = 0x7C,
};

void put_text(Bytes& out, const std::string& text, size_t width) {
    for (size_t i = 0; i < width; ++i)
        out.push_back(i < text.size() ? static_cast<uint8_t>(text[i]) : 0);
}

Bytes version() {
    Bytes answer{cmd_version};
    put_text(answer, "Jan 01 2024", 11); /* compiled: date, time */
    put_text(answer, "12:00:00", 8);
    put_text(answer, "Jan 01 2024", 11); /* released: date, time */
    put_text(answer, "12:00:00", 8);
    put_text(answer, "simphone", 8);
    put_le(answer, 0, 1); /* station class mark */
    put_le(answer, 0, 1); /* common air interface revision */
    put_le(answer, 1, 1); /* model */
    put_le(answer, 1, 2); /* firmware revision */
    put_le(answer, 0, 1); /* slot cycle index */
    put_le(answer, 1, 1); /* hardware version: major, minor */
    put_le(answer, 0, 1);
    return answer;
}

Bytes build_id() {
    Bytes answer{cmd_build_id};
    put_le(answer, 2, 1); /* version of the answer */
    put_le(answer, 0, 2); /* reserved */
    put_le(answer, 1, 4); /* chip revision */
    put_le(answer, 1, 4); /* model */
    put_text(answer, "simphone-1.0", 13);
    put_text(answer, "simphone", 9);
    return answer;
}

Bytes refused(uint8_t why, ByteView packet) {
    Bytes answer(packet.size() + 1);
    answer[0] = why;
    std::copy(packet.begin(), packet.end(), answer.begin() + 1);
    return answer;
}

Bytes nv_read(ByteView packet) {
    constexpr size_t item_size = 128;
    if (packet.size() < 3)
        return refused(cmd_bad_length, packet);
    const auto id = static_cast<uint32_t>(get_le(packet.subspan(1), 2));
    const std::optional<Bytes> item = read_nv_item(0, id);
    Bytes data = item.value_or(Bytes());
    data.resize(item_size);
    Bytes answer{cmd_nv_read};
    put_le(answer, id, 2);
    answer.insert(answer.end(), data.begin(), data.end());
    put_le(answer, item ? 0 : NV_NOT_ACTIVE, 2);
    return answer;
}

Bytes own_answer(ByteView packet) {
    switch (packet[0]) {
    case cmd_version:
        return version();
    case cmd_nv_read:
        return nv_read(packet);
    case cmd_loopback:
        return Bytes(packet.begin(), packet.end());
    case cmd_build_id:
        return build_id();
    default:
        return refused(cmd_bad_command, packet);
    }
}

bool all_hex(const std::string& name) {
    return !name.empty() && name.size() % 2 == 0 &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isxdigit(c); });
}

/* Tells of a file in the folder that nothing ever reads; hidden files and an editor's may lie. */
void check_name(const std::string& name) {
    const bool known = all_hex(name.substr(0, name.find('.'))) || is_setting("diag/" + name) ||
                       name == "log_stream" || name == "event_stream";
    if (!known && name[0] != '.' && name.back() != '~')
        complain("diag/" + name, 0, "neither a setting nor the first bytes of a packet in hex");
}

/* Name of the file with the longest prefix of the packet; empty when there is none. */
std::string longest_prefix(ByteView packet) {
    std::string longest;
    for (const std::string& name : list_folder("diag")) {
        check_name(name);
        if (!all_hex(name) || name.size() <= longest.size() || name.size() / 2 > packet.size())
            continue;
        const Bytes prefix = from_hex(name);
        if (std::equal(prefix.begin(), prefix.end(), packet.begin()))
            longest = name;
    }
    return longest;
}

} // namespace

std::vector<Bytes> answers_to(ByteView packet) {
    if (packet.empty())
        return {};
    std::vector<Bytes> answers;
    const fs::path folder = "diag";
    if (const std::string name = longest_prefix(packet); !name.empty()) {
        std::optional<Bytes> answer = read_file(folder / name);
        for (int number = 2; answer; ++number) {
            answers.push_back(*answer);
            answer = read_file(folder / (name + "." + std::to_string(number)));
        }
    }
    if (answers.empty())
        answers.push_back(own_answer(packet));
    return answers;
}

} // namespace simphone
