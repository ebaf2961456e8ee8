// SPDX-License-Identifier: Apache-2.0
/* The NAS service: a client binds itself to a subscription (0x0045) and chooses its indications
 * (0x0003). Both last as long as the client; the log tells of them. */
#include "modem/modem.h"

#include "phone/phone.h"

namespace simphone {

namespace {

constexpr uint16_t msg_indication_register = 0x0003;
constexpr uint16_t msg_bind_subscription = 0x0045;
constexpr uint8_t tlv_serving_system = 0x13;
constexpr uint64_t subscriptions = 2;

class NasService : public Service {
  public:
    Bytes handle(uint16_t msg_id, const TlvReader& request) override {
        if (!request.well_formed())
            return refusal(QMI_ERR_MALFORMED_MSG);
        switch (msg_id) {
        case msg_bind_subscription: {
            const std::optional<uint64_t> subscription = request.number(0x01);
            if (!subscription)
                return refusal(QMI_ERR_MISSING_ARG);
            if (*subscription >= subscriptions)
                return refusal(QMI_ERR_INVALID_ARG);
            bound_ = *subscription;
            log_line("modem", "nas client bound to " + std::to_string(bound_));
            return success();
        }
        case msg_indication_register:
            if (const std::optional<uint64_t> choice = request.number(tlv_serving_system))
                log_line("modem", "nas client of " + std::to_string(bound_) +
                                      " serving system indication " + std::to_string(*choice));
            return success();
        default:
            return refusal(QMI_ERR_INVALID_QMI_CMD);
        }
    }

  private:
    uint64_t bound_ = 0;
};

} // namespace

std::unique_ptr<Service> make_nas_service() { return std::make_unique<NasService>(); }

} // namespace simphone
