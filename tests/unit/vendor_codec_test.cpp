// SPDX-License-Identifier: Apache-2.0
/* The vendor service's tables against hand-written bytes, and the decoder against bytes that lie.
 */
#include <cstring>

#include "idl_codec.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_idl.h"
#include "phone_test.h"

namespace {

using simphone::Bytes;
using simphone::from_hex;
using simphone::to_hex;

const qmi_idl_service_object_type service = orvik_extend_get_service_object_internal_v01(1, 1, 6);

template <typename Record> int decode(unsigned msg_id, const Bytes& tlvs, Record& record) {
    return simphone::decode_message(service, QMI_IDL_INDICATION, msg_id, tlvs, &record);
}

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

template <typename Record> std::string encoded(unsigned msg_id, const Record& record) {
    const auto tlvs = simphone::encode_message(service, QMI_IDL_REQUEST, msg_id, &record);
    return tlvs ? to_hex(*tlvs) : "none";
}

TEST(VendorCodec, RequestsCrossAsTheirTlvs) {
    orvik_extend_common_record record{};
    record.id = 0x04030201;
    record.data_len = 3;
    EXPECT_EQ(encoded(2, record), "0104000102030402040003000000");
    record.data_valid = 1;
    std::memcpy(record.data, "\xAA\xBB\xCC", 3);
    EXPECT_EQ(encoded(2, record), "0104000102030402040003000000100002aabbcc" + repeated("00", 509));
    orvik_extend_request_04 short_one{};
    short_one.extra_valid = 1;
    short_one.extra = 0x5A;
    EXPECT_EQ(encoded(4, short_one), "01040000000000020400000000001101005a");
}

const std::string head = "0104001100000002040022000000";
/* u64 8, then u32 1, 2, 3, 4 */
const std::string item_b = "080000000000000001000000020000000300000004000000";

TEST(VendorCodec, IndicationsHoldTheirItems) {
    orvik_extend_ind_05 twenty{};
    const std::string item_a = "0100000000000080" + repeated("07000000", 11) + "ff000000";
    ASSERT_EQ(decode(0x05, from_hex(head + "036004" + repeated(item_a, 20)), twenty), 0);
    EXPECT_EQ(twenty.second, 0x22u);
    EXPECT_EQ(twenty.items[19].value, 0x8000000000000001u);
    EXPECT_EQ(twenty.items[19].values[11], 255u);

    orvik_extend_ind_06 counted{};
    const std::string full = "05" + repeated(item_b, 5);
    ASSERT_EQ(decode(0x06, from_hex(head + "03ba04" + repeated(full, 10)), counted), 0);
    EXPECT_EQ(counted.items[9].items_len, 5u);
    EXPECT_EQ(counted.items[9].items[4].values[3], 4u);
    ASSERT_EQ(decode(0x06, from_hex(head + "030a00" + repeated("00", 10)), counted), 0);
    EXPECT_EQ(counted.items[9].items_len, 0u);
    const std::string over = "06" + repeated(item_b, 6); /* in an array of 5 */
    EXPECT_EQ(decode(0x06, from_hex(head + "039900" + over + repeated("00", 9)), counted), -41);

    orvik_extend_ind_08 one{};
    ASSERT_EQ(decode(0x08, from_hex(head + "031800" + item_b), one), 0);
    EXPECT_EQ(one.item.value, 8u);
    EXPECT_EQ(one.item.values[3], 4u);
}

TEST(VendorCodec, BadTlvsAreRefusedByTheFieldsRules) {
    static const struct {
        unsigned msg_id;
        std::string tlvs;
        int result;
    } cases[] = {
        {0x07, "010400110000", -40},
        {0x07, "0104001100000002", -40},
        {0x07, "01ffff11", -40},
        {0x04, head, -42}, /* no such message */
        {0x07, head + "01040011000000", -44},
        {0x07, "010500110000000002040022000000", -45},
        {0x07, "01030011000002040022000000", -45},
        {0x07, "01040011000000", -46},
        {0x07, head + "0f0000", -49},
        {0x07, head + "99020012ab9901000a", 0},
    };
    orvik_extend_pair pair{};
    for (const auto& c : cases)
        EXPECT_EQ(decode(c.msg_id, from_hex(c.tlvs), pair), c.result) << c.tlvs;
}

/* Only a response's TLV 0x02 counts, and its first byte alone. */
TEST(VendorCodec, AFailedResponseMayLackMandatoryTlvs) {
    orvik_extend_common_record record{};
    const auto response = [&](const char* tlvs) {
        return simphone::decode_message(service, QMI_IDL_RESPONSE, 2, from_hex(tlvs), &record);
    };
    EXPECT_EQ(response("02040001000000"), 0);
    EXPECT_EQ(record.data_len, 1u);
    EXPECT_EQ(response("02040000010000"), -46);
    EXPECT_EQ(response("01040001000000"), -46);
    EXPECT_EQ(decode(0x03, from_hex("02040001000000"), record), -46);
}

/* An object that states no referenced tables, and a field of each enumeration. */
TEST(VendorCodec, EnumerationsAreSignedAndTablesNotCounted) {
    struct Record {
        int32_t narrow, wide;
    };
    static constexpr uint8_t elements[] = {QMI_IDL_1_BYTE_ENUM, 0, QMI_IDL_2_BYTE_ENUM, 4,
                                           QMI_IDL_TYPE_END};
    static constexpr qmi_idl_type_table_entry types[] = {{sizeof(Record), elements}};
    static constexpr uint8_t tlv[] = {QMI_IDL_TLV_LAST | 1, QMI_IDL_AGGREGATE, 0, 0, 0};
    static constexpr qmi_idl_message_table_entry messages[] = {{sizeof(Record), tlv}};
    static constexpr qmi_idl_service_message_table_entry rows[] = {{1, 0, 6}};
    static qmi_idl_type_table_object table;
    static const qmi_idl_type_table_object* tables[] = {&table};
    table = {1, 1, 0, types, messages, tables, nullptr};
    const qmi_idl_service_object object = {
        6, 1, 1, 6, {0, 0, 1}, {nullptr, nullptr, rows}, &table, 0, nullptr};
    Record record{};
    EXPECT_EQ(
        simphone::decode_message(&object, QMI_IDL_INDICATION, 1, from_hex("010300fffeff"), &record),
        0);
    EXPECT_EQ(record.narrow, -1);
    EXPECT_EQ(record.wide, -2);
}

class VendorIndication : public PhoneTest {};

TEST_F(VendorIndication, OtherMessageIdsAndLyingLengthsDoNothing) {
    uint8_t bytes[8] = {1, 0xFF, 0xFF};
    for (unsigned id = 0; id < 12; ++id) {
        const std::string text =
            printed([&] { orvik_extend_qmi_ind_cb(nullptr, id, bytes, sizeof bytes, nullptr); });
        EXPECT_EQ(text, id == 3 ? "ORVIK__EXTEND_QMI: Indication msg_id=0x3 buf_len=8 \n"
                                  "No function defined to handle indication: 0"
                                : "");
    }
}

} // namespace
