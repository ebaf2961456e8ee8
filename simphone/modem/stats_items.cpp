// SPDX-License-Identifier: Apache-2.0
#include "modem/stats_items.h"

#include <bit>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

#include "modem/named_values.h"
#include "phone/complaint.h"
#include "phone/phone.h"

namespace simphone {

namespace {

constexpr uint32_t subscriptions = 2;
constexpr int antennas = 4;
constexpr unsigned any_version = 255; /* items have one layout */

void put_float(Bytes& out, double value) {
    put_le(out, std::bit_cast<uint32_t>(static_cast<float>(value)), 4);
}

/* level: how much weaker than the primary carrier on the first subscription, in dB. */
Bytes carrier_4g(unsigned index, double level) {
    Bytes out;
    put_le(out, 1, 1);
    put_le(out, 1, 1);
    put_le(out, 1300 + 150 * index, 4);
    put_le(out, 100 + index, 2);
    put_le(out, index == 0 ? 1 : 0, 1);
    put_le(out, 0x0F, 2);
    for (int rx = 0; rx < antennas; ++rx) {
        put_float(out, -95.0 - level - 1.5 * rx);
        put_float(out, -10.5 - 0.25 * rx);
        put_float(out, -65.25 - level - 1.5 * rx);
        put_float(out, 18.5 - level / 2 - 0.75 * rx);
    }
    return out;
}

Bytes four_floats(double first, double step) {
    Bytes out;
    put_le(out, 1, 4);
    for (int rx = 0; rx < antennas; ++rx)
        put_float(out, first - step * rx);
    return out;
}

Bytes carrier_5g(double level) {
    Bytes out = four_floats(-88.0 - level, 1.25);
    put_float(out, -11.0);
    return out;
}

Bytes two_floats(double first, double second) {
    Bytes out;
    put_le(out, 1, 1);
    put_float(out, first);
    put_float(out, second);
    return out;
}

/* Data of an item on a fresh phone; the second subscription is 3 dB weaker. */
std::optional<Bytes> default_item(uint32_t sub, uint32_t id) {
    const double weaker = sub == 0 ? 0 : 3;
    switch (id) {
    case 82:
        return carrier_4g(0, weaker);
    case 103:
    case 104:
    case 105:
    case 106:
    case 107:
    case 108:
        return carrier_4g(id - 102, weaker + 2.0 * (id - 102));
    case 94:
        return four_floats(-60.5 - weaker, 1.25);
    case 112:
        return four_floats(21.5 - weaker, 0.75);
    case 113:
        return Bytes{1, 0, 0, 0, 0, 1, 1, 1, 2, 2, 3, 3, 0, 1, 1, 1};
    case 135:
        return carrier_5g(weaker);
    case 6:
    case 7:
        return carrier_5g(weaker + 4.0 * (id - 5));
    case 110:
        return two_floats(-72.5 - weaker, -75.0 - weaker);
    case 111:
        return two_floats(-68.0 - weaker, -70.5 - weaker);
    case 100:
        return Bytes{1, 4, 0x12, 0, 0x34, 0, 2, 3};
    default:
        return std::nullopt;
    }
}

const vs_records::Record* find_record(uint32_t id) {
    for (const vs_records::Record& record : vs_records::items)
        if (record.id == id)
            return &record;
    return nullptr;
}

/* When the file was written; nothing when it is missing. */
std::optional<timespec> written(const std::string& name) {
    struct stat info {};
    return ::stat((root() / name).c_str(), &info) == 0 ? std::optional(info.st_mtim) : std::nullopt;
}

int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * INT64_C(1000000000) + time.tv_nsec;
}

/* Renews the text beside the bytes. As old as they are, it does not count until it is changed. */
void renew_text(const std::string& text_name, const std::string& name,
                const vs_records::Record& record, ByteView bytes) {
    const std::optional<timespec> time = written(name);
    if (!time)
        return;
    std::string text = text_of_record(record, any_version, bytes);
    text.resize(text.empty() ? 0 : text.size() - 1); /* note_text ends the last line */
    note_text(text_name, text);
    const timespec both[] = {*time, *time};
    ::utimensat(AT_FDCWD, (root() / text_name).c_str(), both, 0);
}

} // namespace

std::optional<Bytes> stats_item(uint32_t sub, uint32_t id) {
    if (sub >= subscriptions)
        return std::nullopt;
    const std::string name = "stats/" + std::to_string(sub) + "." + std::to_string(id);
    const std::string text_name = name + ".txt";
    const vs_records::Record* const record = find_record(id);
    const std::optional<timespec> bytes_time = written(name), text_time = written(text_name);
    std::optional<Bytes> bytes = read_file(name);
    if (text_time && record == nullptr)
        complain(text_name, 0, "nothing is known of what this item holds, so only bytes count");
    if (text_time && record != nullptr &&
        (!bytes_time || nanoseconds(*text_time) > nanoseconds(*bytes_time))) {
        Bytes values = bytes ? *bytes : default_item(sub, id).value_or(Bytes());
        if (const std::optional<Bytes> text = read_file(text_name))
            apply_text(text_name, std::string(text->begin(), text->end()), *record, any_version,
                       values);
        return values;
    }
    if (!bytes) {
        bytes = default_item(sub, id);
        if (bytes)
            write_file(name, *bytes);
    }
    if (bytes && record != nullptr &&
        (!text_time || !bytes_time || nanoseconds(*text_time) < nanoseconds(*bytes_time)))
        renew_text(text_name, name, *record, *bytes);
    return bytes;
}

} // namespace simphone
