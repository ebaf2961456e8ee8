// SPDX-License-Identifier: Apache-2.0
/* The phone's TLV reader and the services behind it, and the decoder of the client side: any bytes
 * as request, response or indication of any message. Both readers must agree on whether a run of
 * TLVs ends in the middle of one. */
#include <cstdlib>
#include <iterator>
#include <vector>

#include "fuzz_phone.h"
#include "idl_codec.h"
#include "modem/modem.h"
#include "modem/tlv.h"
#include "orvik_extend_idl.h"
#include "phone/lock.h"
#include "qmi_common.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace simphone;
    static FuzzPhone& phone = *new FuzzPhone;
    static const qmi_idl_service_object_type objects[] = {
        orvik_extend_get_service_object_internal_v01(1, 1, 6), &uim_qmi_idl_service_object_v01,
        &sar_qmi_idl_service_object_v01, &nas_qmi_idl_service_object_v01,
        &vs_qmi_idl_service_object_v01};
    static unsigned inputs = 0;
    if (++inputs % 1000 == 0)
        phone.reset();
    if (size < 3)
        return 0;
    const qmi_idl_service_object_type object = objects[data[0] % std::size(objects)];
    const auto type = static_cast<qmi_idl_type_of_message_type>(data[1] % QMI_IDL_NUM_MSG_TYPES);
    const uint16_t messages = object->n_msgs[type];
    const ByteView bytes(data + 3, size - 3);
    if (messages == 0)
        return 0;
    const uint16_t id = object->msgid_to_msg[type][data[2] % messages].qmi_message_id;

    std::vector<uint8_t> record(*message_struct_len(object, type, id), 0xEE);
    const bool decoded = decode_message(object, type, id, bytes, record.data()) == 0;
    const TlvReader reader(bytes);
    if (decoded && !reader.well_formed())
        std::abort();
    /* What was decoded can be encoded again, and says the same when it is decoded once more. */
    if (decoded) {
        const std::optional<Bytes> again = encode_message(object, type, id, record.data());
        std::vector<uint8_t> second(record.size(), 0x11);
        if (!again || decode_message(object, type, id, *again, second.data()) != 0 ||
            second != record)
            std::abort();
    }
    if (type == QMI_IDL_REQUEST) {
        const Lock lock;
        make_service(object->service_id)->handle(id, reader);
    }
    return 0;
}
