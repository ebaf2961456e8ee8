// SPDX-License-Identifier: Apache-2.0
/* Reads the encoded TLVs and elements of a service object, at compile time for size checks and at
 * run time for encoding and decoding. qmi_idl.h describes the bytes. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "qmi_idl.h"

namespace qmi_idl {

struct Element {
    uint8_t type;          /* QMI_IDL_1_BYTE ... QMI_IDL_AGGREGATE */
    uint32_t offset;       /* of the field in the structure; for a variable array of the array */
    bool array;            /* fixed or variable */
    bool variable;         /* a count goes first on the wire */
    uint32_t size;         /* elements of an array (the most, when variable), else 1 */
    bool wide_count;       /* the count is u16 on the wire, else u8 */
    uint32_t count_before; /* bytes from the u32 count in the structure to the array */
    uint16_t type_index;   /* of an aggregate */
    uint8_t table;         /* referenced table of an aggregate */
};

struct Tlv {
    uint8_t type;
    bool optional;
    bool last;
    uint32_t valid_before; /* bytes from the valid flag to the field (of an array: the array) */
    Element element;
};

/* Return the address after what they read. */
constexpr const uint8_t* read_element(const uint8_t* p, Element& e) {
    e = {};
    const uint8_t flags = *p++;
    const uint8_t extended = (flags & QMI_IDL_EXTENDED) != 0 ? *p++ : uint8_t{0};
    e.type = flags & QMI_IDL_TYPE_MASK;
    e.offset = *p++;
    if ((flags & QMI_IDL_OFFSET_16) != 0 || (extended & QMI_IDL_EXTENDED_OFFSET_24) != 0)
        e.offset |= uint32_t{*p++} << 8;
    if ((extended & QMI_IDL_EXTENDED_OFFSET_24) != 0)
        e.offset |= uint32_t{*p++} << 16;
    e.array = (flags & QMI_IDL_ARRAY) != 0;
    e.variable = (flags & QMI_IDL_VARIABLE) != 0;
    e.wide_count = (flags & QMI_IDL_SIZE_16) != 0;
    e.size = 1;
    if (e.array || e.type == QMI_IDL_STRING) {
        e.size = *p++;
        if (e.wide_count)
            e.size |= uint32_t{*p++} << 8;
    }
    if (e.array && e.variable)
        e.count_before = *p++;
    if (e.type == QMI_IDL_AGGREGATE) {
        const uint8_t low = *p++;
        const uint8_t high = *p++;
        e.type_index = static_cast<uint16_t>(low | (high & 0xF0) << 4);
        e.table = high & 0x0F;
    }
    return p;
}

constexpr const uint8_t* read_tlv(const uint8_t* p, Tlv& t) {
    t = {};
    const uint8_t flags = *p++;
    t.last = (flags & QMI_IDL_TLV_LAST) != 0;
    t.optional = (flags & QMI_IDL_TLV_OPTIONAL) != 0;
    if (t.optional) {
        t.valid_before = flags & QMI_IDL_TLV_LOW_MASK;
        t.type = *p++;
    } else {
        t.type = flags & QMI_IDL_TLV_LOW_MASK;
    }
    return read_element(p, t.element);
}

constexpr uint32_t wire_width(uint8_t type) {
    switch (type) {
    case QMI_IDL_2_BYTE:
    case QMI_IDL_2_BYTE_ENUM:
        return 2;
    case QMI_IDL_4_BYTE:
        return 4;
    case QMI_IDL_8_BYTE:
        return 8;
    default:
        return 1;
    }
}

constexpr uint32_t struct_width(uint8_t type) {
    return type == QMI_IDL_1_BYTE_ENUM || type == QMI_IDL_2_BYTE_ENUM ? 4 : wire_width(type);
}

constexpr uint32_t max_type_wire_len(const qmi_idl_type_table_entry* types, uint32_t index);

/* Most bytes of an element on the wire; aggregates only of the message's own table. */
constexpr uint32_t max_element_wire_len(const qmi_idl_type_table_entry* types, const Element& e) {
    const uint32_t one =
        e.type == QMI_IDL_AGGREGATE ? max_type_wire_len(types, e.type_index) : wire_width(e.type);
    return (e.variable ? (e.wide_count ? 2U : 1U) : 0U) + one * e.size;
}

constexpr uint32_t max_type_wire_len(const qmi_idl_type_table_entry* types, uint32_t index) {
    uint32_t sum = 0;
    for (const uint8_t* p = types[index].p_encoded_type_data; *p != QMI_IDL_TYPE_END;) {
        Element e{};
        p = read_element(p, e);
        sum += max_element_wire_len(types, e);
    }
    return sum;
}

/* Most bytes of a message's TLVs on the wire. */
constexpr uint32_t max_message_wire_len(const qmi_idl_type_table_entry* types,
                                        const uint8_t* tlv_data) {
    uint32_t sum = 0;
    for (bool last = tlv_data == nullptr; !last;) {
        Tlv t{};
        tlv_data = read_tlv(tlv_data, t);
        sum += 3 + max_element_wire_len(types, t.element);
        last = t.last;
    }
    return sum;
}

/* End of the last field in the structure: what c_struct_sz must at least be. */
constexpr uint32_t fields_end(const qmi_idl_type_table_entry* types, const Element& e) {
    const uint32_t one =
        e.type == QMI_IDL_AGGREGATE ? types[e.type_index].c_struct_sz : struct_width(e.type);
    return e.offset + one * e.size;
}

constexpr uint32_t message_fields_end(const qmi_idl_type_table_entry* types,
                                      const uint8_t* tlv_data) {
    uint32_t end = 0;
    for (bool last = tlv_data == nullptr; !last;) {
        Tlv t{};
        tlv_data = read_tlv(tlv_data, t);
        const uint32_t field = fields_end(types, t.element);
        end = field > end ? field : end;
        last = t.last;
    }
    return end;
}

using Types = std::span<const qmi_idl_type_table_entry>;
using Messages = std::span<const qmi_idl_message_table_entry>;
using Rows = std::span<const qmi_idl_service_message_table_entry>;

/* True when the rows are sorted by message id, each states just what its message's TLVs add up to
 * at most (but for the message misstated), and every field lies within its message's structure. */
constexpr bool rows_sound(Types types, Messages messages, Rows rows, int misstated) {
    for (size_t i = 0; i < rows.size(); ++i) {
        const qmi_idl_service_message_table_entry& row = rows[i];
        const qmi_idl_message_table_entry& message = messages[row.message_table_message_id];
        const uint32_t real = max_message_wire_len(types.data(), message.p_encoded_tlv_data);
        if (i > 0 && rows[i - 1].qmi_message_id >= row.qmi_message_id)
            return false;
        if (real != row.max_msg_len && row.qmi_message_id != misstated)
            return false;
        if (message_fields_end(types.data(), message.p_encoded_tlv_data) > message.c_struct_sz)
            return false;
    }
    return true;
}

/* Not constexpr, nor anywhere: a service whose object would call it does not compile. */
void rows_are_not_sound();

struct Service {
    uint32_t id;
    uint32_t minor;
    uint32_t max_msg_len; /* the longest that the service states */
};

/* The table of a service's types and messages, which refers to itself. Of static storage. */
class Tables {
  public:
    consteval Tables(Types types, Messages messages)
        : types_(types),
          messages_(messages), referenced_{&table_}, table_{static_cast<uint16_t>(types.size()),
                                                            static_cast<uint16_t>(messages.size()),
                                                            1,
                                                            types.data(),
                                                            messages.data(),
                                                            referenced_,
                                                            nullptr} {}
    Tables(const Tables&) = delete;
    Tables& operator=(const Tables&) = delete;

    /* The service object. Does not compile unless the rows are sound; misstated is a message whose
     * length is another than it says. */
    consteval qmi_idl_service_object service(Service service, Rows requests, Rows responses,
                                             Rows indications, int misstated = -1) const {
        for (const Rows& rows : {requests, responses, indications})
            if (!rows_sound(types_, messages_, rows, misstated))
                rows_are_not_sound();
        return {QMI_IDL_LIBRARY_VERSION,
                1,
                service.id,
                service.max_msg_len,
                {static_cast<uint16_t>(requests.size()), static_cast<uint16_t>(responses.size()),
                 static_cast<uint16_t>(indications.size())},
                {requests.data(), responses.data(), indications.data()},
                &table_,
                service.minor,
                nullptr};
    }

  private:
    Types types_;
    Messages messages_;
    const qmi_idl_type_table_object* referenced_[1];
    qmi_idl_type_table_object table_;
};

} // namespace qmi_idl
