// SPDX-License-Identifier: Apache-2.0
#include "describe.h"

#include <algorithm>
#include <charconv>

#include "describe_records.h"

namespace lab::tape {

namespace {

constexpr size_t most_shown = 32;

} // namespace

uint64_t little_endian(std::string_view bytes, size_t at, size_t width) {
    uint64_t value = 0;
    for (size_t i = 0; i < width && at + i < bytes.size(); ++i)
        value |= uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
    return value;
}

void append_number(std::string& out, int64_t value) {
    char text[24];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    out.append(text, end);
}

void append_hex(std::string& out, std::string_view bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    for (const char c : bytes) {
        out += digits[static_cast<unsigned char>(c) >> 4];
        out += digits[static_cast<unsigned char>(c) & 15];
    }
}

void describe_bytes(std::string& out, std::string_view bytes) {
    append_hex(out, bytes.substr(0, most_shown));
    if (bytes.size() <= most_shown)
        return;
    out += "... (";
    append_number(out, static_cast<int64_t>(bytes.size()));
    out += " bytes)";
}

void append_named(std::string& out, std::span<const names::Number> rows, int64_t value) {
    if (const char* const name = names::name_of(rows, value)) {
        out.append(name).append(" (");
        append_number(out, value);
        out += ')';
    } else {
        append_number(out, value);
    }
}

void describe_transport(std::string& out, int64_t result) {
    append_named(out, names::transport_results, result);
}

void separate(std::string& out) {
    if (!out.empty() && out.back() != ' ')
        out += ", ";
}

namespace {

/* ---- QMI messages ---- */

/* Reads one message's fields, wherever they lie. */
class Describer {
  public:
    Describer(std::string& out, const names::Service& service, MessageType type, Exchange& exchange)
        : out_(out), service_(service), type_(type), exchange_(exchange) {}

    bool good() const { return good_; }

    void memory(std::span<const names::Tlv> tlvs, std::string_view record) {
        for (const names::Tlv& tlv : tlvs) {
            if (tlv.valid_at != names::nowhere && little_endian(record, tlv.valid_at, 1) == 0)
                continue;
            begin(tlv);
            for (const names::Field& field : tlv.fields)
                memory_field(tlv, field, record, 0);
            if (tlv.list.name == nullptr)
                continue;
            const uint64_t count =
                std::min<uint64_t>(little_endian(record, tlv.list.count_at, 4), tlv.list.most);
            for (size_t i = 0; i < count; ++i) {
                element(tlv, i);
                for (const names::Field& field : tlv.list.fields)
                    memory_field(tlv, field, record, tlv.list.at + i * tlv.list.stride);
            }
        }
    }

    void wire(std::span<const names::Tlv> tlvs, std::string_view message) {
        while (message.size() >= 3) {
            const auto type = static_cast<uint8_t>(message[0]);
            const uint64_t length = little_endian(message, 1, 2);
            const std::string_view value = part(message, 3, length);
            message.remove_prefix(std::min<size_t>(message.size(), 3 + length));
            const auto row = std::find_if(tlvs.begin(), tlvs.end(),
                                          [&](const names::Tlv& tlv) { return tlv.type == type; });
            if (row == tlvs.end()) {
                separate(out_);
                out_ += "TLV ";
                append_number(out_, type);
                out_ += "=";
                describe_bytes(out_, value);
                continue;
            }
            wire_tlv(*row, value);
        }
        if (!message.empty()) {
            out_ += ", cut";
            good_ = false;
        }
    }

  private:
    void begin(const names::Tlv& tlv) {
        separate(out_);
        first_ = true;
        standard_ = tlv.fields.data() == std::data(names::standard_response);
        named_ = !standard_ &&
                 (tlv.fields.size() + tlv.list.fields.size() > 1 || tlv.list.name != nullptr);
        if (named_)
            out_.append(tlv.name).append(": ");
    }

    void element(const names::Tlv& tlv, size_t index) {
        separate(out_);
        out_.append(tlv.list.name).append(1, ' ');
        append_number(out_, static_cast<int64_t>(index) + 1);
        out_ += ' ';
        first_ = true;
    }

    void name(const names::Tlv& tlv, const names::Field& field) {
        if (!first_)
            separate(out_);
        first_ = false;
        if (tlv.list.name == nullptr || tlv.list.fields.size() > 1 || !tlv.fields.empty())
            out_.append(named_ ? field.name : tlv.name).append(1, '=');
    }

    void put_number(const names::Tlv& tlv, const names::Field& field, uint64_t value) {
        if (standard_) {
            put_standard(field, value);
            return;
        }
        if (service_.id == names::vendor_service && tlv.type == 0x01) {
            if (type_ == MessageType::request)
                exchange_.vendor_kind = static_cast<uint8_t>(value);
            else if (value != 0)
                good_ = false;
        }
        name(tlv, field);
        append_named(out_, field.values, static_cast<int64_t>(value));
        last_number_ = static_cast<int64_t>(value);
    }

    /* Two numbers, of which a person wants one word. */
    void put_standard(const names::Field& field, uint64_t value) {
        if (&field == &names::standard_response[0]) {
            refused_ = value != 0;
            good_ = good_ && !refused_;
            out_ += refused_ ? "refused" : "ok";
        } else if (refused_) {
            out_ += ": ";
            append_named(out_, names::qmi_errors, static_cast<int64_t>(value));
        }
    }

    void put_bytes(const names::Tlv& tlv, const names::Field& field, std::string_view value) {
        name(tlv, field);
        if (service_.id == names::vendor_service)
            good_ = describe_vendor_record(out_, value, type_ == MessageType::request, exchange_) &&
                    good_;
        else if (&field == std::data(names::vs_entry) + names::vs_entry_data)
            describe_statistics(out_, last_number_, value);
        else if (&field == std::data(names::uim_apdu))
            describe_command_apdu(out_, value);
        else if (&field == std::data(names::uim_reply))
            good_ = describe_reply_apdu(out_, value) && good_;
        else
            describe_bytes(out_, value);
    }

    void memory_field(const names::Tlv& tlv, const names::Field& field, std::string_view record,
                      size_t base) {
        if (field.most == 0) {
            put_number(tlv, field, little_endian(record, base + field.at, field.memory));
            return;
        }
        const uint64_t length =
            std::min<uint64_t>(little_endian(record, base + field.count_at, 4), field.most);
        put_bytes(tlv, field, part(record, base + field.at, length));
    }

    void wire_tlv(const names::Tlv& tlv, std::string_view value) {
        begin(tlv);
        size_t at = 0;
        for (const names::Field& field : tlv.fields)
            wire_field(tlv, field, value, at);
        if (tlv.list.name == nullptr)
            return;
        const uint64_t count = std::min<uint64_t>(little_endian(value, at, tlv.list.wire), 256);
        at += tlv.list.wire;
        for (size_t i = 0; i < count && at < value.size(); ++i) {
            element(tlv, i);
            for (const names::Field& field : tlv.list.fields)
                wire_field(tlv, field, value, at);
        }
    }

    void wire_field(const names::Tlv& tlv, const names::Field& field, std::string_view value,
                    size_t& at) {
        if (field.most == 0) {
            put_number(tlv, field, little_endian(value, at, field.wire));
            at += field.wire;
            return;
        }
        const uint64_t length =
            field.wire == 0 ? value.size() : little_endian(value, at, field.wire);
        at += field.wire;
        put_bytes(tlv, field, part(value, at, length));
        at += std::min<uint64_t>(length, value.size());
    }

    std::string& out_;
    const names::Service& service_;
    MessageType type_;
    Exchange& exchange_;
    int64_t last_number_ = 0; /* the field before */
    bool good_ = true;
    bool first_ = true;
    bool named_ = false;
    bool standard_ = false;
    bool refused_ = false;
};

} // namespace

bool describe_message(std::string& out, const names::Service* service, int64_t msg_id,
                      MessageType type, Layout layout, std::string_view bytes, Exchange& exchange) {
    out += service != nullptr ? service->name : "service";
    out += ' ';
    const names::Message* const message =
        service != nullptr ? names::message_of(*service, msg_id) : nullptr;
    if (message == nullptr) {
        out += "message ";
        append_number(out, msg_id);
        out += ": ";
        describe_bytes(out, bytes);
        return true;
    }
    out.append(message->name).append(": ");
    const std::span<const names::Tlv> tlvs = type == MessageType::request    ? message->request
                                             : type == MessageType::response ? message->response
                                                                             : message->indication;
    Describer describer(out, *service, type, exchange);
    if (layout == Layout::wire)
        describer.wire(tlvs, bytes);
    else
        describer.memory(tlvs, bytes);
    while (!out.empty() && (out.back() == ' ' || out.back() == ':'))
        out.pop_back();
    return describer.good();
}

bool describe_diag(std::string& out, std::string_view packet) {
    if (packet.empty()) {
        out += "nothing";
        return true;
    }
    const auto command = static_cast<unsigned char>(packet[0]);
    append_named(out, names::diag_commands, command);
    out += ": ";
    describe_bytes(out, packet);
    return !names::diag_refuses(static_cast<uint8_t>(command));
}

} // namespace lab::tape
