// SPDX-License-Identifier: Apache-2.0
/* The table of names, by which people are shown what crosses, against the tables by which messages
 * are encoded: a row that tells another place or width would show people wrong values. */
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "names.h"
#include "orvik_extend_idl.h"
#include "qmi_idl_layout.h"
#include "service_objects.h"

namespace {

using qmi_idl::Element;

const qmi_idl_service_object* object_of(const names::Service& service) {
    switch (service.id) {
    case QMI_NAS_SERVICE:
        return &nas_qmi_idl_service_object_v01;
    case QMI_UIM_SERVICE:
        return &uim_qmi_idl_service_object_v01;
    case QMI_SAR_SERVICE:
        return &sar_qmi_idl_service_object_v01;
    case names::vendor_service:
        return orvik_extend_get_service_object_internal_v01(1, 1, 6);
    default:
        return &vs_qmi_idl_service_object_v01;
    }
}

std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string text(const char* format, ...) {
    char buffer[128];
    va_list values;
    va_start(values, format);
    std::vsnprintf(buffer, sizeof buffer, format, values);
    va_end(values);
    return buffer;
}

/* ---- by the table of names ---- */

std::string told(const names::Field& row) {
    return row.most == 0 ? text(" %u/%u@%u", row.wire, row.memory, row.at)
           : row.wire == 0
               ? text(" %u bytes@%u", row.most, row.at)
               : text(" up to %u bytes@%u counted %u@%u", row.most, row.at, row.wire, row.count_at);
}

std::string told(const names::Tlv& row) {
    std::string all = row.valid_at == names::nowhere ? "" : text("valid@%u", row.valid_at);
    for (const names::Field& field : row.fields)
        all += told(field);
    if (row.list.name == nullptr)
        return all;
    all += text(" up to %u of %u@%u counted %u@%u:", row.list.most, row.list.stride, row.list.at,
                row.list.wire, row.list.count_at);
    for (const names::Field& field : row.list.fields)
        all += told(field);
    return all;
}

/* ---- by the service object ---- */

std::string real(const qmi_idl_type_table_object& types, const Element& e, uint32_t base) {
    const uint32_t at = base + e.offset, count_at = at - e.count_before;
    const unsigned count_width = e.wide_count ? 2 : 1;
    const bool aggregate = e.type == QMI_IDL_AGGREGATE;
    const unsigned width =
        aggregate ? types.p_types[e.type_index].c_struct_sz : qmi_idl::struct_width(e.type);
    constexpr uint32_t told_one_by_one = 16;
    if (!aggregate && width == 1 && e.variable)
        return text(" up to %u bytes@%u counted %u@%u", e.size, at, count_width, count_at);
    if (!aggregate && width == 1 && e.size > told_one_by_one)
        return text(" %u bytes@%u", e.size, at);
    std::string all;
    if (e.variable)
        all = text(" up to %u of %u@%u counted %u@%u:", e.size, width, at, count_width, count_at);
    for (uint32_t i = 0; i < (e.variable ? 1 : e.size); ++i) {
        const uint32_t element_at = e.variable ? 0 : at + i * width;
        if (!aggregate)
            all += text(" %u/%u@%u", qmi_idl::wire_width(e.type), width, element_at);
        for (const uint8_t* p = aggregate ? types.p_types[e.type_index].p_encoded_type_data
                                          : nullptr;
             p != nullptr && *p != QMI_IDL_TYPE_END;) {
            Element part{};
            p = qmi_idl::read_element(p, part);
            all += real(types, part, element_at);
        }
    }
    return all;
}

/* TLVs that have no name: kvt neither sends nor reads them. */
bool may_lack_a_name(const names::Service& service, const names::Message& message) {
    return message.id == QMI_NAS_INDICATION_REGISTER || service.id == names::vendor_service;
}

void compare(const names::Service& service, const names::Message& message,
             qmi_idl_type_of_message_type type, std::span<const names::Tlv> tlvs) {
    const qmi_idl_service_object& object = *object_of(service);
    const uint8_t* p = nullptr;
    for (unsigned i = 0; i < object.n_msgs[type]; ++i)
        if (object.msgid_to_msg[type][i].qmi_message_id == message.id)
            p = object.p_type_table
                    ->p_messages[object.msgid_to_msg[type][i].message_table_message_id & 0xFFF]
                    .p_encoded_tlv_data;
    std::set<uint8_t> seen;
    qmi_idl::Tlv tlv{};
    for (bool last = p == nullptr; !last; last = tlv.last) {
        p = qmi_idl::read_tlv(p, tlv);
        seen.insert(tlv.type);
        const auto row = std::find_if(tlvs.begin(), tlvs.end(), [&](const names::Tlv& candidate) {
            return candidate.type == tlv.type;
        });
        const std::string where =
            text("%s %s, type %d, TLV 0x%02x", service.name, message.name, type, tlv.type);
        if (row == tlvs.end()) {
            EXPECT_TRUE(may_lack_a_name(service, message)) << where << " has no name";
            continue;
        }
        const std::string valid =
            tlv.optional ? text("valid@%u", tlv.element.offset - tlv.valid_before) : "";
        EXPECT_EQ(told(*row), valid + real(*object.p_type_table, tlv.element, 0)) << where;
    }
    for (const names::Tlv& row : tlvs)
        EXPECT_TRUE(seen.contains(row.type))
            << service.name << ' ' << message.name << " has no TLV " << +row.type;
}

TEST(Names, TellWhereServiceObjectsPutThings) {
    for (const names::Service& service : names::services) {
        EXPECT_EQ(object_of(service)->service_id, service.id);
        for (const names::Message& message : service.messages) {
            compare(service, message, QMI_IDL_REQUEST, message.request);
            compare(service, message, QMI_IDL_RESPONSE, message.response);
            compare(service, message, QMI_IDL_INDICATION, message.indication);
        }
    }
}

} // namespace
