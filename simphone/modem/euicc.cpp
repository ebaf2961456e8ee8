// SPDX-License-Identifier: Apache-2.0
#include "modem/euicc.h"

#include <algorithm>
#include <span>
#include <vector>

#include "modem/modem.h"
#include "modem/sim_cards.h"
#include "modem/tlv.h"
#include "phone/complaint.h"
#include "phone/phone.h"
#include "phone/settings.h"
#include "phone_lines.h"

namespace simphone {

namespace {

constexpr const char* default_eid = "89001000000000000000000001234502";
constexpr const char* default_profiles = "89001000000000012341 operational demo";
constexpr size_t eid_size = 16;

constexpr uint8_t isd_r[] = {0xA0, 0x00, 0x00, 0x05, 0x59, 0x10, 0x10, 0xFF,
                             0xFF, 0xFF, 0xFF, 0x89, 0x00, 0x00, 0x01, 0x00};

/* Status words. */
enum : uint16_t {
    sw_ok = 0x9000,
    sw_wrong_length = 0x6700,
    sw_wrong_data = 0x6A80,
    sw_not_found = 0x6A82,
    sw_wrong_parameters = 0x6A86,
    sw_data_not_found = 0x6A88,
    sw_wrong_instruction = 0x6D00,
    sw_wrong_class = 0x6E00,
};

bool ready(uint32_t slot) { return euicc_ready(slot, setting_number("euicc/boot_ms")); }

Bytes stored_eid() {
    const std::string text = setting_text("euicc/eid", default_eid);
    Bytes eid = from_hex(text); /* blanks allowed */
    const auto digits =
        text.size() - static_cast<size_t>(std::count(text.begin(), text.end(), ' '));
    /* Any length up to that of an EID is told as it is: none, or a part, is a fault to try out. */
    if (eid.size() > eid_size || digits != 2 * eid.size())
        complain("euicc/eid", 1,
                 "'" + text + "' is no EID (32 digits, or none), what can be read of it is used");
    eid.resize(std::min(eid.size(), eid_size));
    return eid;
}

/* ---- channels ---- */

std::vector<uint8_t> open_channels() {
    std::vector<uint8_t> channels;
    for (const auto& [channel, restarts] :
         setting_read("euicc/channels", "", phone_files::read_channels))
        if (restarts == restart_count())
            channels.push_back(static_cast<uint8_t>(channel));
    return channels;
}

void store_channels(const std::vector<uint8_t>& channels) {
    std::string text;
    for (const uint8_t channel : channels)
        text += std::to_string(channel) + " " + std::to_string(restart_count()) + "\n";
    write_file("euicc/channels",
               ByteView(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

bool is_open(const std::vector<uint8_t>& channels, uint8_t channel) {
    return std::find(channels.begin(), channels.end(), channel) != channels.end();
}

/* ---- requests ---- */

Bytes reply(Bytes data, uint16_t word) {
    data.push_back(static_cast<uint8_t>(word >> 8));
    data.push_back(static_cast<uint8_t>(word));
    return data;
}

/* Reset options, in the first byte of their bit string. */
constexpr uint8_t reset_operational = 0x80;
constexpr uint8_t reset_test = 0x40;
constexpr uint8_t reset_smdp = 0x20;

constexpr uint8_t reset_result_ok = 0;
constexpr uint8_t reset_result_nothing = 1;

/* value: 82 02 05 OPTIONS. */
Bytes memory_reset(ByteView value) {
    if (value.size() != 4 || value[0] != 0x82 || value[1] != 2 || value[2] > 7)
        return reply({}, sw_wrong_data);
    const uint8_t options = value[3];
    std::string kept;
    uint8_t result = reset_result_nothing;
    for (const auto& [line, is_test] :
         setting_read("euicc/profiles", default_profiles, phone_files::read_profiles))
        if ((options & (is_test ? reset_test : reset_operational)) != 0)
            result = reset_result_ok;
        else
            kept += line + "\n";
    if (result == reset_result_ok)
        write_file("euicc/profiles",
                   ByteView(reinterpret_cast<const uint8_t*>(kept.data()), kept.size()));
    if ((options & reset_smdp) != 0)
        remove_file("euicc/smdp");
    return reply({0xBF, 0x34, 0x03, 0x80, 0x01, result}, sw_ok);
}

/* value: 5C 01 5A, the list of tags wanted. */
Bytes tell_eid(ByteView value) {
    static constexpr uint8_t wanted[] = {0x5C, 0x01, 0x5A};
    if (!std::equal(value.begin(), value.end(), std::begin(wanted), std::end(wanted)))
        return reply({}, sw_wrong_data);
    const Bytes eid = stored_eid();
    const auto size = static_cast<uint8_t>(eid.size());
    Bytes bytes = {0xBF, 0x3E, static_cast<uint8_t>(size + 2), 0x5A, size};
    bytes.insert(bytes.end(), eid.begin(), eid.end());
    return reply(bytes, sw_ok);
}

struct RequestRow {
    uint16_t tag;
    Bytes (*handle)(ByteView value);
};

constexpr RequestRow requests[] = {
    {0xBF34, memory_reset},
    {0xBF3E, tell_eid},
};

/* CLA INS P1 P2 Lc data [Le]: one STORE DATA block that is first and last. */
Bytes isd_r_apdu(ByteView apdu) {
    if (apdu.size() < 4)
        return reply({}, sw_wrong_length);
    if ((apdu[0] & 0xFC) != 0x80 && (apdu[0] & 0xF0) != 0xC0)
        return reply({}, sw_wrong_class);
    if (apdu[1] != 0xE2)
        return reply({}, sw_wrong_instruction);
    if (apdu[2] != 0x91 || apdu[3] != 0)
        return reply({}, sw_wrong_parameters);
    const size_t data_size = apdu.size() > 4 ? apdu[4] : 0;
    if (data_size == 0 || apdu.size() < 5 + data_size || apdu.size() > 6 + data_size)
        return reply({}, sw_wrong_length);
    const ByteView data = apdu.subspan(5, data_size);
    if (data.size() < 3 || data[2] != data.size() - 3)
        return reply({}, sw_wrong_data);
    const auto tag = static_cast<uint16_t>(data[0] << 8 | data[1]);
    for (const RequestRow& row : requests)
        if (row.tag == tag)
            return row.handle(data.subspan(3));
    return reply({}, sw_data_not_found);
}

/* A template of the file control asked for: the file's descriptor (an application's) in that of
 * parameters, the application's name in both. */
Bytes select_answer(uint64_t file_control) {
    constexpr uint64_t parameters = 1, information = 2;
    constexpr uint8_t descriptor[] = {0x82, 2, 0x78, 0x21}, name_tag[] = {0x84, sizeof isd_r};
    Bytes content;
    if (file_control == parameters)
        content = {0x62, sizeof descriptor + sizeof name_tag + sizeof isd_r};
    else if (file_control == information)
        content = {0x6F, sizeof name_tag + sizeof isd_r};
    else
        return {};
    const auto append = [&](std::span<const uint8_t> part) {
        for (const uint8_t byte : part)
            content.push_back(byte);
    };
    if (file_control == parameters)
        append(descriptor);
    append(name_tag);
    append(isd_r);
    return content;
}

} // namespace

std::optional<Bytes> read_eid(uint32_t slot) {
    const Bytes eid = stored_eid();
    return ready(slot) && !eid.empty() ? std::optional(eid) : std::nullopt;
}

OpenedChannel open_channel(uint32_t slot, ByteView aid, uint64_t file_control) {
    OpenedChannel opened;
    if (card_state(slot) != CardState::present) {
        opened.error = QMI_ERR_UIM_UNINITIALIZED;
        return opened;
    }
    if (!ready(slot) || !std::equal(aid.begin(), aid.end(), std::begin(isd_r), std::end(isd_r))) {
        opened.error = QMI_ERR_NO_ENTRY;
        opened.card_word = sw_not_found;
        return opened;
    }
    std::vector<uint8_t> channels = open_channels();
    const int64_t limit = setting_number("euicc/max_channels");
    uint8_t free_one = 1;
    while (free_one <= limit && is_open(channels, free_one))
        ++free_one;
    if (free_one > limit) {
        opened.error = QMI_ERR_INSUFFICIENT_RESOURCES;
        return opened;
    }
    channels.push_back(free_one);
    store_channels(channels);
    opened.channel = free_one;
    opened.card_word = sw_ok;
    opened.select = select_answer(file_control);
    return opened;
}

bool close_channel(uint32_t slot, uint8_t channel) {
    std::vector<uint8_t> channels = open_channels();
    if (!ready(slot) || !is_open(channels, channel))
        return false;
    std::erase(channels, channel);
    store_channels(channels);
    return true;
}

void close_all_channels() { store_channels({}); }

std::optional<Bytes> exchange_apdu(uint32_t slot, uint8_t channel, ByteView apdu) {
    if (!ready(slot) || !is_open(open_channels(), channel))
        return std::nullopt;
    return isd_r_apdu(apdu);
}

} // namespace simphone
