/* The SAR service. In the phone's directory:
 *
 *     sar/dsi   index of the back-off table in force (0); "none": the answer holds no state */
#include "modem/modem.h"

#include "phone/phone.h"

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
        if (const std::string dsi = setting("sar/dsi", "0"); dsi != "none")
            response.number(0x10, static_cast<uint64_t>(number_of(dsi)), 4);
        return response.take();
    }
};

} // namespace

std::unique_ptr<Service> make_sar_service() { return std::make_unique<SarService>(); }

} // namespace simphone
