// SPDX-License-Identifier: Apache-2.0
/* The modem behind the platform's libraries: which services are up, restarts, and one object per
 * client for the service it talks to. */
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "modem/tlv.h"
#include "phone/bytes.h"

namespace simphone {

/* One client's side of a QMI service in the modem. What outlives the client lies in the phone's
 * directory. handle() runs with the phone locked. */
class Service {
  public:
    virtual ~Service() = default;

    /* Takes a request's TLVs, returns the response's. */
    virtual Bytes handle(uint16_t msg_id, const TlvReader& request) = 0;
};

/* Short name of a service for file names, rules and the log ("vendor", "uim"); its number in hex
 * when the modem has no such service. */
std::string service_name(uint32_t service_id);

/* True for the short name of a service that the modem has. */
bool is_service(const std::string& name);

/* A service is up when the modem has it, the phone's file "services" names it and no restart is
 * under way. */
bool service_up(uint32_t service_id);

/* Null when the modem has no such service. */
std::unique_ptr<Service> make_service(uint32_t service_id);

/* Takes every service down for the milliseconds in the phone's file "restart_ms". */
void restart_modem();

/* Restarts so far; clients that were made before the last one are dead. */
uint32_t restart_count();

/* When the services are, or were, back after the last restart; 0 without one. */
int64_t restarted_ms();

/* Service numbers. */
enum : uint32_t {
    service_nas = 3,
    service_uim = 11,
    service_sar = 17,
    service_vs = 0xE4,
    service_vendor = 0xFFE4,
};

/* One function per service, in the source named for it. */
std::unique_ptr<Service> make_vendor_service();
std::unique_ptr<Service> make_uim_service();
std::unique_ptr<Service> make_sar_service();
std::unique_ptr<Service> make_nas_service();
std::unique_ptr<Service> make_vs_service();

} // namespace simphone
