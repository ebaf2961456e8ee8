// SPDX-License-Identifier: Apache-2.0
#include "idl_codec.h"

#include <algorithm>
#include <bitset>
#include <cstring>

#include "qmi_idl_layout.h"

namespace simphone {

namespace {

constexpr size_t tlv_head = 3; /* type, length */
constexpr uint8_t tlv_result = 0x02;
constexpr uint8_t tlv_first_optional = 0x10;

struct Message {
    const qmi_idl_type_table_object* table;
    const qmi_idl_message_table_entry* entry;
};

std::optional<Message> find_message(qmi_idl_service_object_type service,
                                    qmi_idl_type_of_message_type type, uint32_t msg_id) {
    if (service == nullptr || type >= QMI_IDL_NUM_MSG_TYPES)
        return std::nullopt;
    const qmi_idl_service_message_table_entry* const first = service->msgid_to_msg[type];
    const qmi_idl_service_message_table_entry* const last = first + service->n_msgs[type];
    const auto* const row =
        std::lower_bound(first, last, msg_id,
                         [](const auto& entry, uint32_t id) { return entry.qmi_message_id < id; });
    if (row == last || row->qmi_message_id != msg_id)
        return std::nullopt;
    const uint16_t table_index = row->message_table_message_id >> 12;
    const uint16_t message_index = row->message_table_message_id & 0x0FFF;
    /* Not held against n_referenced_tables: an object that states too few works all the same. */
    const qmi_idl_type_table_object* const table =
        service->p_type_table->p_referenced_tables[table_index];
    if (message_index >= table->n_messages)
        return std::nullopt;
    return Message{table, &table->p_messages[message_index]};
}

/* The aggregate type that an element names, and the table that its own elements refer to. */
struct Aggregate {
    const qmi_idl_type_table_object* table;
    const qmi_idl_type_table_entry* entry;
};

std::optional<Aggregate> find_aggregate(const qmi_idl_type_table_object* table,
                                        const qmi_idl::Element& e) {
    const qmi_idl_type_table_object* const other = table->p_referenced_tables[e.table];
    if (e.type_index >= other->n_types)
        return std::nullopt;
    return Aggregate{other, &other->p_types[e.type_index]};
}

uint32_t load_u32(const uint8_t* p) {
    uint32_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

void store_u32(uint8_t* p, uint32_t value) { std::memcpy(p, &value, sizeof value); }

/* A value of 1, 2, 4 or 8 bytes in the structure, in the machine's own byte order. */
uint64_t load_value(const uint8_t* p, uint32_t width) {
    uint8_t u8;
    uint16_t u16;
    uint64_t u64;
    switch (width) {
    case 1:
        std::memcpy(&u8, p, 1);
        return u8;
    case 2:
        std::memcpy(&u16, p, 2);
        return u16;
    case 4:
        return load_u32(p);
    default:
        std::memcpy(&u64, p, 8);
        return u64;
    }
}

void store_value(uint8_t* p, uint32_t width, uint64_t value) {
    const auto u8 = static_cast<uint8_t>(value);
    const auto u16 = static_cast<uint16_t>(value);
    switch (width) {
    case 1:
        std::memcpy(p, &u8, 1);
        return;
    case 2:
        std::memcpy(p, &u16, 2);
        return;
    case 4:
        return store_u32(p, static_cast<uint32_t>(value));
    default:
        std::memcpy(p, &value, 8);
    }
}

/* An enumeration is signed, and wider in the structure than on the wire. */
uint64_t field_value(uint8_t type, uint64_t value) {
    switch (type) {
    case QMI_IDL_1_BYTE_ENUM:
        return static_cast<uint64_t>(int64_t{static_cast<int8_t>(value)});
    case QMI_IDL_2_BYTE_ENUM:
        return static_cast<uint64_t>(int64_t{static_cast<int16_t>(value)});
    default:
        return value;
    }
}

bool encode_element(Bytes& out, const qmi_idl_type_table_object* table, const qmi_idl::Element& e,
                    const uint8_t* base);

bool encode_elements(Bytes& out, const Aggregate& type, const uint8_t* base) {
    for (const uint8_t* p = type.entry->p_encoded_type_data; *p != QMI_IDL_TYPE_END;) {
        qmi_idl::Element e{};
        p = qmi_idl::read_element(p, e);
        if (!encode_element(out, type.table, e, base))
            return false;
    }
    return true;
}

bool encode_element(Bytes& out, const qmi_idl_type_table_object* table, const qmi_idl::Element& e,
                    const uint8_t* base) {
    uint32_t count = e.size;
    if (e.variable) {
        count = load_u32(base + e.offset - e.count_before);
        if (count > e.size)
            return false;
        put_le(out, count, e.wide_count ? 2 : 1);
    }
    if (e.type == QMI_IDL_AGGREGATE) {
        const std::optional<Aggregate> type = find_aggregate(table, e);
        for (uint32_t i = 0; type && i < count; ++i)
            if (!encode_elements(out, *type,
                                 base + e.offset + size_t{i} * type->entry->c_struct_sz))
                return false;
        return type.has_value();
    }
    if (e.type == QMI_IDL_STRING) {
        const auto* text = base + e.offset;
        out.insert(out.end(), text, std::find(text, text + e.size, uint8_t{0}));
        return true;
    }
    const uint32_t width = qmi_idl::struct_width(e.type);
    for (uint32_t i = 0; i < count; ++i)
        put_le(out, load_value(base + e.offset + size_t{i} * width, width),
               qmi_idl::wire_width(e.type));
    return true;
}

/* Takes the element's bytes off the front of in. Returns 0 or why it can't. */
int decode_element(ByteView& in, const qmi_idl_type_table_object* table, const qmi_idl::Element& e,
                   uint8_t* base);

int decode_elements(ByteView& in, const Aggregate& type, uint8_t* base) {
    for (const uint8_t* p = type.entry->p_encoded_type_data; *p != QMI_IDL_TYPE_END;) {
        qmi_idl::Element e{};
        p = qmi_idl::read_element(p, e);
        if (const int refused = decode_element(in, type.table, e, base))
            return refused;
    }
    return 0;
}

int decode_element(ByteView& in, const qmi_idl_type_table_object* table, const qmi_idl::Element& e,
                   uint8_t* base) {
    uint32_t count = e.size;
    if (e.variable) {
        const size_t width = e.wide_count ? 2 : 1;
        if (in.size() < width)
            return idl_wrong_length;
        count = static_cast<uint32_t>(get_le(in, width));
        in = in.subspan(width);
        if (count > e.size)
            return idl_too_many;
        store_u32(base + e.offset - e.count_before, count);
    }
    if (e.type == QMI_IDL_AGGREGATE) {
        const std::optional<Aggregate> type = find_aggregate(table, e);
        int refused = type ? 0 : idl_unknown_message;
        for (uint32_t i = 0; refused == 0 && i < count; ++i)
            refused =
                decode_elements(in, *type, base + e.offset + size_t{i} * type->entry->c_struct_sz);
        return refused;
    }
    if (e.type == QMI_IDL_STRING) {
        if (in.size() > e.size)
            return idl_long_string;
        std::copy(in.begin(), in.end(), base + e.offset);
        in = {};
        return 0;
    }
    const uint32_t wire = qmi_idl::wire_width(e.type);
    if (in.size() < size_t{wire} * count)
        return idl_wrong_length;
    const uint32_t width = qmi_idl::struct_width(e.type);
    for (uint32_t i = 0; i < count; ++i) {
        store_value(base + e.offset + size_t{i} * width, width,
                    field_value(e.type, get_le(in, wire)));
        in = in.subspan(wire);
    }
    return 0;
}

/* Calls visit(tlv) for each TLV of the message until it returns false. */
template <typename Visit> bool each_tlv(const Message& message, Visit visit) {
    const uint8_t* p = message.entry->p_encoded_tlv_data;
    for (bool last = p == nullptr; !last;) {
        qmi_idl::Tlv tlv{};
        p = qmi_idl::read_tlv(p, tlv);
        if (!visit(tlv))
            return false;
        last = tlv.last;
    }
    return true;
}

/* Puts one TLV into the structure; marks it in seen. */
int decode_tlv(const Message& message, uint8_t found, ByteView value, std::bitset<256>& seen,
               uint8_t* base) {
    int refused = 0;
    bool known = false;
    each_tlv(message, [&](const qmi_idl::Tlv& tlv) {
        if (tlv.type != found)
            return true;
        known = true;
        refused =
            seen[found] ? idl_tlv_twice : decode_element(value, message.table, tlv.element, base);
        if (refused == 0 && !value.empty())
            refused = idl_wrong_length;
        if (tlv.optional)
            base[tlv.element.offset - tlv.valid_before] = 1;
        seen[found] = true;
        return false;
    });
    return !known && found < tlv_first_optional ? idl_unknown_tlv : refused;
}

} // namespace

std::optional<uint32_t> message_struct_len(qmi_idl_service_object_type service,
                                           qmi_idl_type_of_message_type type, uint32_t msg_id) {
    const std::optional<Message> message = find_message(service, type, msg_id);
    return message ? std::optional(message->entry->c_struct_sz) : std::nullopt;
}

std::optional<Bytes> encode_message(qmi_idl_service_object_type service,
                                    qmi_idl_type_of_message_type type, uint32_t msg_id,
                                    const void* source) {
    const std::optional<Message> message = find_message(service, type, msg_id);
    if (!message)
        return std::nullopt;
    const auto* const base = static_cast<const uint8_t*>(source);
    Bytes out;
    const bool encoded = each_tlv(*message, [&](const qmi_idl::Tlv& tlv) {
        if (tlv.optional && base[tlv.element.offset - tlv.valid_before] == 0)
            return true;
        out.push_back(tlv.type);
        const size_t length_at = out.size();
        put_le(out, 0, 2);
        if (!encode_element(out, message->table, tlv.element, base))
            return false;
        set_le(out, length_at, out.size() - length_at - 2, 2);
        return true;
    });
    return encoded ? std::optional(out) : std::nullopt;
}

int decode_message(qmi_idl_service_object_type service, qmi_idl_type_of_message_type type,
                   uint32_t msg_id, ByteView tlvs, void* target) {
    const std::optional<Message> message = find_message(service, type, msg_id);
    if (!message)
        return idl_unknown_message;
    auto* const base = static_cast<uint8_t*>(target);
    if (message->entry->c_struct_sz > 0)
        std::memset(base, 0, message->entry->c_struct_sz);

    std::bitset<256> seen;
    bool failed_response = false;
    while (!tlvs.empty()) {
        if (tlvs.size() < tlv_head)
            return idl_ends_early;
        const uint8_t found = tlvs[0];
        const size_t length = get_le(tlvs.subspan(1), 2);
        tlvs = tlvs.subspan(tlv_head);
        if (length > tlvs.size())
            return idl_ends_early;
        const ByteView value = tlvs.first(length);
        tlvs = tlvs.subspan(length);
        if (type == QMI_IDL_RESPONSE && found == tlv_result && length > 0)
            failed_response = value[0] != 0;
        if (const int refused = decode_tlv(*message, found, value, seen, base))
            return refused;
    }
    const bool complete =
        each_tlv(*message, [&](const qmi_idl::Tlv& tlv) { return tlv.optional || seen[tlv.type]; });
    return complete || failed_response ? 0 : idl_tlv_missing;
}

} // namespace simphone

int32_t qmi_idl_get_message_c_struct_len(qmi_idl_service_object_type service,
                                         qmi_idl_type_of_message_type message_type,
                                         uint16_t message_id, uint32_t* len) {
    const std::optional<uint32_t> found =
        simphone::message_struct_len(service, message_type, message_id);
    if (!found || len == nullptr)
        return -1;
    *len = *found;
    return 0;
}
