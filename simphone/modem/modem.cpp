#include "modem/modem.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "phone/phone.h"

namespace simphone {

namespace {

struct ServiceRow {
    uint32_t id;
    const char* name;
    std::unique_ptr<Service> (*make)();
};

constexpr ServiceRow services[] = {
    {service_vendor, "vendor", make_vendor_service},
    {service_uim, "uim", make_uim_service},
    {service_sar, "sar", make_sar_service},
    {service_nas, "nas", make_nas_service},
    {service_vs, "vs", make_vs_service},
};

const ServiceRow* find_service(uint32_t id) {
    for (const ServiceRow& row : services)
        if (row.id == id)
            return &row;
    return nullptr;
}

constexpr const char* all_services = "vendor uim sar nas vs";

/* The file "restart": how many there were, and when the services are back (milliseconds). */
struct Restart {
    uint32_t count = 0;
    int64_t until = 0;
};

Restart read_restart() {
    Restart restart;
    if (const std::optional<Bytes> bytes = read_file("restart"))
        std::istringstream(std::string(bytes->begin(), bytes->end())) >> restart.count >>
            restart.until;
    return restart;
}

constexpr long default_restart_ms = 500;
constexpr long most_restart_ms = 24L * 60 * 60 * 1000;

int64_t restart_ms() {
    return std::clamp(setting_number("restart_ms", default_restart_ms), 0L, most_restart_ms);
}

} // namespace

std::string service_name(uint32_t service_id) {
    if (const ServiceRow* row = find_service(service_id))
        return row->name;
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", service_id);
    return text;
}

bool service_up(uint32_t service_id) {
    const ServiceRow* row = find_service(service_id);
    if (row == nullptr || !exists())
        return false;
    if (const int64_t left = read_restart().until - now_ms(); left > 0 && left <= restart_ms())
        return false;
    std::istringstream names(setting("services", all_services));
    for (std::string name; names >> name;)
        if (name == row->name)
            return true;
    return false;
}

std::unique_ptr<Service> make_service(uint32_t service_id) {
    const ServiceRow* row = find_service(service_id);
    return row != nullptr ? row->make() : nullptr;
}

void restart_modem() {
    const Lock lock;
    const int64_t back = now_ms() + restart_ms();
    const uint32_t count = read_restart().count + 1;
    write_text("restart", std::to_string(count) + " " + std::to_string(back));
    log_line("modem", "restart " + std::to_string(count));
}

uint32_t restart_count() { return read_restart().count; }

int64_t restarted_ms() { return read_restart().until; }

} // namespace simphone
