// SPDX-License-Identifier: Apache-2.0
#include "modem/modem.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <vector>

#include "phone/complaint.h"
#include "phone/lock.h"
#include "phone/phone.h"
#include "phone/settings.h"

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
    const std::optional<Bytes> bytes = read_file("restart");
    const std::vector<Word> words =
        bytes ? words_of(std::string(bytes->begin(), bytes->end())) : std::vector<Word>();
    if (!words.empty())
        restart.count =
            static_cast<uint32_t>(number_within("restart", words[0], {0, UINT32_MAX}, 0));
    if (words.size() > 1)
        restart.until = number_within("restart", words[1], times, 0);
    return restart;
}

int64_t restart_ms() { return setting_number("restart_ms"); }

/* True when the phone's file names the service; names that are no service's are told. */
bool named_up(const char* name) {
    bool up = false;
    for (const Word& word : setting_words("services", all_services)) {
        if (!is_service(word.text))
            complain("services", word.line,
                     "no service is named '" + word.text + "'; those there are: " + all_services);
        up = up || word.text == name;
    }
    return up;
}

} // namespace

std::string service_name(uint32_t service_id) {
    if (const ServiceRow* row = find_service(service_id))
        return row->name;
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", service_id);
    return text;
}

bool is_service(const std::string& name) {
    return std::any_of(std::begin(services), std::end(services),
                       [&](const ServiceRow& row) { return name == row.name; });
}

bool service_up(uint32_t service_id) {
    const ServiceRow* row = find_service(service_id);
    if (row == nullptr || !exists())
        return false;
    if (const int64_t left = read_restart().until - now_ms(); left > 0 && left <= restart_ms())
        return false;
    return named_up(row->name);
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
