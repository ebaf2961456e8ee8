// SPDX-License-Identifier: Apache-2.0
/* DIAG responses, as libdiag's thread hands them over: chunks of a DCI response, packets of
 * callback mode, streams, any processor. */
#include <algorithm>
#include <vector>

#include "fuzz_phone.h"
#include "orvik_diag_send.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzPhone& phone = *new FuzzPhone;
    (void)phone;
    while (size >= 4) {
        const unsigned kind = data[0] % 8;
        uint32_t processor = data[1] % 5;
        const size_t length = std::min<size_t>((data[2] | data[3] << 8) % 12000, size - 4);
        data += 4;
        size -= 4;
        std::vector<uint8_t> packet(data, data + length);
        const auto count = static_cast<int32_t>(length);
        data += length;
        size -= length;
        uint32_t* const context = processor == 4 ? nullptr : &processor;
        switch (kind) {
        case 0:
        case 1:
            orvik_diag_cmd_response_by_callback(packet.data(), count, context);
            break;
        case 2:
        case 3:
        case 4:
            orvik_diag_cmd_response_by_dci(packet.data(), count, context);
            break;
        case 5:
            orvik_diag_cmd_response_by_dci_log_stream(packet.data(), count);
            break;
        case 6:
            orvik_diag_cmd_response_by_callback_no_handle(packet.data(), count);
            break;
        default:
            orvik_diag_cmd_response_check(nullptr, count, context);
            break;
        }
    }
    return 0;
}
