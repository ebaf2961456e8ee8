// SPDX-License-Identifier: Apache-2.0
/* Indications of the vendor service and of vs: message id (u16) and bytes, undecoded. */
#include <iterator>
#include <vector>

#include "fuzz_phone.h"
#include "orvik_extend_cmn.h"
#include "service_client.h"
#include "vs_client.h"

namespace {

/* Looks at every byte of what it is given. */
void handler(uint32_t, void* payload, uint32_t size) {
    uint32_t sum = 0;
    for (uint32_t i = 0; i < size; ++i)
        sum += static_cast<const uint8_t*>(payload)[i];
    [[maybe_unused]] static volatile uint32_t seen;
    seen = sum;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzPhone& phone = *new FuzzPhone;
    static const qmi_client_type vendor = orvik_extend_qmi_client_open();
    static const bool connected = (vs_init(), vs_client_init(handler) == 1);
    static qmi_client_type vs = nullptr;
    static const int opened =
        qmi_client_init_instance(&vs_qmi_idl_service_object_v01, QMI_CLIENT_INSTANCE_ANY, nullptr,
                                 nullptr, nullptr, 100, &vs);
    (void)phone;
    if (size < 3 || !connected || opened != 0)
        return 0;
    static constexpr unsigned vs_ids[] = {0x0004, 0x0203, 0x0204, 0x0601, 0x0777};
    std::vector<uint8_t> bytes(data + 2, data + size);
    const auto length = static_cast<unsigned>(bytes.size());
    if (data[0] % 2 == 0)
        orvik_extend_qmi_ind_cb(vendor, data[1] % 10, bytes.data(), length, nullptr);
    else
        vs_client_unsol_ind_cb(vs, vs_ids[data[1] % std::size(vs_ids)], bytes.data(), length,
                               nullptr);
    return 0;
}
