// SPDX-License-Identifier: Apache-2.0
/* Encodes a message's C structure to TLVs and back by its service object's tables. */
#pragma once

#include <cstdint>
#include <optional>

#include "qmi_idl.h"

#include "phone/bytes.h"

namespace simphone {

/* Size of a message's C structure; nothing when the service has no such message. */
std::optional<uint32_t> message_struct_len(qmi_idl_service_object_type service,
                                           qmi_idl_type_of_message_type type, uint32_t msg_id);

/* source holds message_struct_len bytes. Nothing for an unknown message or an array that claims
 * more elements than it has. */
std::optional<Bytes> encode_message(qmi_idl_service_object_type service,
                                    qmi_idl_type_of_message_type type, uint32_t msg_id,
                                    const void* source);

/* Why a message is refused. The framework hands these numbers on as the call's result. */
enum : int {
    idl_ends_early = -40, /* the bytes end within a TLV's head or value */
    idl_too_many = -41,   /* a count above its array */
    idl_unknown_message = -42,
    idl_tlv_twice = -44,
    idl_wrong_length = -45, /* a value of another length than its table says */
    idl_tlv_missing = -46,  /* a mandatory one */
    idl_unknown_tlv = -49,  /* below 0x10 */
    idl_long_string = -50,
};

/* target holds message_struct_len bytes and is cleared first. Returns 0 or one of the above. TLVs
 * from 0x10 on that the table does not know are passed over. A response whose TLV 0x02 begins with
 * another byte than 0, as that of a request which failed does, may lack mandatory TLVs. */
int decode_message(qmi_idl_service_object_type service, qmi_idl_type_of_message_type type,
                   uint32_t msg_id, ByteView tlvs, void* target);

} // namespace simphone
