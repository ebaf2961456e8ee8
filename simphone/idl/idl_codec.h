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

/* target holds message_struct_len bytes and is cleared first. False for an unknown message, TLVs
 * that end too early, a value of another length than its table says, a count above its array, or a
 * missing mandatory TLV; TLVs that the table does not know are passed over. */
bool decode_message(qmi_idl_service_object_type service, qmi_idl_type_of_message_type type,
                    uint32_t msg_id, ByteView tlvs, void* target);

} // namespace simphone
