// SPDX-License-Identifier: Apache-2.0
/* The vendor-extended service 0xFFE4: message 0x02 carries a request kind and up to 512 bytes. */
#include "modem/modem.h"

#include <algorithm>

#include "modem/common_requests.h"
#include "modem/nvefs.h"
#include "phone/phone.h"

namespace simphone {

namespace {

constexpr uint16_t request_msg = 0x02;
constexpr uint8_t tlv_id = 0x01;
constexpr uint8_t tlv_data_len = 0x02;
constexpr uint8_t tlv_data = 0x10;
constexpr size_t data_size = 512;

constexpr uint64_t kind_nvefs = 2;
constexpr uint64_t kind_common = 4;
constexpr uint64_t kinds = 6;
constexpr uint32_t unknown_kind = 1; /* framework result of a kind that the modem does not know */

class VendorService : public Service {
  public:
    Bytes handle(uint16_t msg_id, const TlvReader& request) override {
        const uint64_t kind = request.number(tlv_id).value_or(kinds);
        if (msg_id != request_msg || kind >= kinds)
            return response(unknown_kind, {});
        const ByteView all = request.value(tlv_data).value_or(ByteView());
        const size_t data_len = request.number(tlv_data_len).value_or(0);
        const ByteView data = all.first(std::min(data_len, all.size()));
        switch (kind) {
        case kind_nvefs:
            return response(0, nvefs_.handle(data));
        case kind_common: {
            take_storage_error();
            const Bytes answer = common_request(data);
            /* Most senders look at nothing else: what could not be stored must not look done. */
            return response(static_cast<uint32_t>(take_storage_error()), answer);
        }
        default:
            return response(0, Bytes(data.begin(), data.end()));
        }
    }

  private:
    /* data goes out in its full 512 bytes, as its TLV is a fixed array. */
    static Bytes response(uint32_t result, Bytes data) {
        data.resize(std::min(data.size(), data_size));
        const size_t data_len = data.size();
        data.resize(data_size);
        return TlvWriter()
            .number(tlv_id, result, 4)
            .number(tlv_data_len, data_len, 4)
            .add(tlv_data, data)
            .take();
    }

    NvEfs nvefs_;
};

} // namespace

std::unique_ptr<Service> make_vendor_service() { return std::make_unique<VendorService>(); }

} // namespace simphone
