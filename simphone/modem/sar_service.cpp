// SPDX-License-Identifier: Apache-2.0
/* The SAR service. */
#include "modem/modem.h"

#include "phone/settings.h"

namespace simphone {

namespace {

constexpr uint16_t msg_rf_get_state = 0x02;

class SarService : public Service {
  public:
    Bytes handle(uint16_t msg_id, const TlvReader&) override {
        TlvWriter response;
        if (msg_id != msg_rf_get_state)
            return response.result(QMI_ERR_INVALID_QMI_CMD).take();
        response.result(QMI_ERR_NONE);
        if (const std::string dsi = setting("sar/dsi"); dsi != "none")
            response.number(0x10, static_cast<uint64_t>(whole_number(dsi).value_or(0)), 4);
        return response.take();
    }
};

} // namespace

std::unique_ptr<Service> make_sar_service() { return std::make_unique<SarService>(); }

} // namespace simphone
