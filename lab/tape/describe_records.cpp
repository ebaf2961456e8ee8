// SPDX-License-Identifier: Apache-2.0
#include "describe_records.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "qmi_vs_records.h"

namespace lab::tape {

namespace {

void nvefs_request(std::string& out, std::string_view data, Exchange& exchange) {
    using namespace names::nvefs_request;
    exchange.operation = static_cast<uint8_t>(little_endian(data, operation, 1));
    const char* const name = names::name_of(names::nvefs_operations, exchange.operation);
    out += name != nullptr ? name : "unknown operation";
    out += ", subscription ";
    append_number(out, static_cast<int64_t>(little_endian(data, subscription, 1)));
    const bool efs = exchange.operation >= names::efs_read;
    if (efs) {
        out += ", ";
        out += part(data, path, std::min<uint64_t>(little_endian(data, path_length, 1), path_most));
    } else {
        out += ", item ";
        append_number(out, static_cast<int64_t>(little_endian(data, item, 2)));
    }
    const uint64_t all = little_endian(data, whole, 4);
    if (exchange.operation == names::nv_write) {
        out += ": ";
        describe_bytes(out, part(data, names::nvefs_request::data, all));
    } else if (exchange.operation == names::efs_read) {
        out += ", offset ";
        append_number(out, static_cast<int64_t>(little_endian(data, offset, 4)));
    } else if (exchange.operation == names::efs_write) {
        const uint64_t length = little_endian(data, chunk, 4);
        out += ", ";
        append_number(out, static_cast<int64_t>(length));
        out += " of ";
        append_number(out, static_cast<int64_t>(all));
        out += " bytes, offset ";
        append_number(out, static_cast<int64_t>(little_endian(data, offset, 4)));
        out += ", instance ";
        append_number(out, static_cast<int64_t>(little_endian(data, item, 2)));
        out += ": ";
        describe_bytes(out, part(data, names::nvefs_request::data, length));
    }
}

bool nvefs_response(std::string& out, std::string_view data, const Exchange& exchange) {
    using namespace names::nvefs_response;
    const auto code = static_cast<int32_t>(little_endian(data, result, 4));
    const char* const name = names::name_of(names::nvefs_operations, exchange.operation);
    out += name != nullptr ? name : "NV or EFS";
    out += ": result ";
    append_number(out, code);
    const uint64_t length = little_endian(data, chunk, 4);
    if (length > 0) {
        out += ", ";
        append_number(out, static_cast<int64_t>(length));
        out += " of ";
        append_number(out, static_cast<int64_t>(little_endian(data, whole, 4)));
        out += " bytes: ";
        describe_bytes(out, part(data, names::nvefs_response::data, length));
    }
    return exchange.operation == names::efs_write ? code >= 0 : code == 0;
}

/* Numbers by name, one behind the other, as far as there are bytes. */
void fields(std::string& out, std::span<const vs_records::Field> rows, std::string_view data,
            size_t& at, unsigned version) {
    const size_t begin = out.size();
    for (const vs_records::Field& row : rows) {
        const size_t width = vs_records::width(row.kind);
        if (row.since > version || at + width > data.size())
            continue;
        if (out.size() > begin)
            out += ", ";
        out.append(row.name).append(1, '=');
        const uint64_t bits = little_endian(data, at, width);
        float value = 0;
        const auto raw = static_cast<uint32_t>(bits);
        std::memcpy(&value, &raw, sizeof value);
        char text[64];
        if (row.kind != vs_records::Kind::f32)
            append_number(out, static_cast<int64_t>(bits));
        else if (std::isnan(value))
            out += "nan";
        else
            out.append(
                text, static_cast<size_t>(std::snprintf(text, sizeof text, "%.2f", double{value})));
        if (*row.unit != '\0')
            out.append(1, ' ').append(row.unit);
        at += width;
    }
}

/* A version, then the blocks. */
void debug_information(std::string& out, std::string_view data) {
    if (data.empty())
        return;
    const auto version = static_cast<unsigned>(little_endian(data, 0, 1));
    out += "version=";
    append_number(out, version);
    size_t at = 1;
    for (const vs_records::Record& block : vs_records::debug_blocks) {
        if (at == data.size())
            break;
        out.append(", ").append(block.name).append(": ");
        fields(out, block.fields, data, at, version);
    }
}

bool common(std::string& out, std::string_view data, bool request) {
    using namespace names::common_record;
    const auto what = static_cast<int64_t>(little_endian(data, kind, 4));
    append_named(out, names::common_kinds, what);
    int32_t code = 0;
    if (!request) {
        code = static_cast<int32_t>(little_endian(data, result, 4));
        out += ", result ";
        append_number(out, code);
    }
    out += ": ";
    if (what == names::record_typed) {
        append_named(out, names::typed_commands,
                     static_cast<int64_t>(little_endian(data, type, 4)));
        const uint64_t size = little_endian(data, length, 4);
        if (size > 0) {
            out += ", ";
            describe_bytes(out, part(data, payload, size));
        }
    } else if (what == names::record_statistics && !request) {
        debug_information(out, part(data, names::common_record::data, data.size()));
    } else {
        std::string_view rest = part(data, names::common_record::data, data.size());
        while (!rest.empty() && rest.back() == '\0')
            rest.remove_suffix(1);
        describe_bytes(out, rest);
    }
    return code >= 0;
}

} // namespace

bool describe_vendor_record(std::string& out, std::string_view data, bool request,
                            Exchange& exchange) {
    switch (exchange.vendor_kind) {
    case names::vendor_kind_nvefs:
        if (!request)
            return nvefs_response(out, data, exchange);
        nvefs_request(out, data, exchange);
        return true;
    case names::vendor_kind_common:
        return common(out, data, request);
    default:
        describe_bytes(out, data);
        return true;
    }
}

void describe_command_apdu(std::string& out, std::string_view apdu) {
    if (apdu.size() >= 2) {
        const char* const name =
            names::name_of(names::apdu_instructions, static_cast<unsigned char>(apdu[1]));
        out.append(name != nullptr ? name : "unknown instruction").append(1, ' ');
    }
    describe_bytes(out, apdu);
}

bool describe_reply_apdu(std::string& out, std::string_view apdu) {
    describe_bytes(out, apdu);
    if (apdu.size() < 2)
        return true;
    const int word = static_cast<unsigned char>(apdu[apdu.size() - 2]) << 8 |
                     static_cast<unsigned char>(apdu.back());
    static constexpr char digits[] = "0123456789abcdef";
    out += ", status word ";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += digits[word >> shift & 15];
    if (const char* const name = names::name_of(names::status_words, word))
        out.append(" (").append(name).append(1, ')');
    return word == 0x9000 || word >> 8 == 0x61 || word >> 8 == 0x91;
}

void describe_statistics(std::string& out, int64_t item, std::string_view data) {
    for (const vs_records::Record& record : vs_records::items)
        if (record.id == item && vs_records::size_of(record.fields) == data.size()) {
            size_t at = 0;
            return fields(out, record.fields, data, at, UINT8_MAX);
        }
    describe_bytes(out, data);
}

} // namespace lab::tape
