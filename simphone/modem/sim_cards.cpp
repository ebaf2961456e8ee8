// SPDX-License-Identifier: Apache-2.0
#include "modem/sim_cards.h"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include "modem/euicc.h"
#include "modem/modem.h"
#include "phone/phone.h"
#include "phone/settings.h"
#include "phone_lines.h"

namespace simphone {

namespace {

using phone_files::Detect;

constexpr uint32_t euicc_slot = 2;

std::string slot_file(uint32_t slot, const char* ending = "") {
    return "sim/" + std::to_string(slot) + ending;
}

bool in_tray(uint32_t slot) { return slot != euicc_slot || setting("sim/2.kind") == "psim"; }

struct Power {
    bool on = false;
    int64_t since = 0;
};

Power power_of(uint32_t slot) {
    const auto [on, number] =
        setting_read(slot_file(slot, ".power"), "on", phone_files::read_power);
    if (!on)
        return {number.has_value() && *number != restart_count(), restarted_ms()};
    return {true, std::max(number.value_or(0), restarted_ms())}; /* a restart powers up anew */
}

Detect detect_of(uint32_t slot) {
    return setting_read(slot_file(slot, ".detect"), "auto", phone_files::read_detect);
}

/* False while a running test has the tray pulled. A round begins with the pull. */
bool tray_is_in() {
    const phone_files::HotSwap test =
        setting_read("sim/hotswap", "stop", phone_files::read_hotswap);
    const int64_t round = test.after_push + test.after_pull;
    const int64_t elapsed = now_ms() - test.since;
    if (!test.running || round <= 0 || elapsed < 0 || elapsed / round >= test.count)
        return true;
    return elapsed % round >= test.after_pull;
}

/* What is in the slot, without power and detect line. */
CardState content_of(uint32_t slot) {
    const std::string text = setting(slot_file(slot));
    if (in_tray(slot) && !tray_is_in())
        return CardState::absent;
    return text == "present" ? CardState::present
           : text == "error" ? CardState::error
                             : CardState::absent;
}

/* The same as the SIM driver sees it: a detect line that is forced for the driver counts. */
CardState driver_state(uint32_t slot) {
    const CardState state = content_of(slot);
    const Detect detect = detect_of(slot);
    if (!in_tray(slot) || !detect.forced || !detect.for_sim_driver)
        return state;
    if (!detect.high)
        return CardState::absent;
    return state == CardState::absent ? CardState::error : state; /* there, and does not answer */
}

} // namespace

CardState card_state(uint32_t slot) {
    const CardState state = driver_state(slot);
    return state == CardState::present && !power_of(slot).on ? CardState::error : state;
}

bool card_detected(uint32_t slot) {
    const Detect detect = detect_of(slot);
    return detect.forced ? detect.high : content_of(slot) != CardState::absent;
}

void force_card_detect(uint32_t slot, bool for_sim_driver, bool high) {
    write_text(slot_file(slot, ".detect"),
               std::string(high ? "high" : "low") + (for_sim_driver ? " sim" : " general"));
}

void start_hotswap_test(uint32_t seconds_after_push, uint32_t seconds_after_pull, uint32_t count) {
    std::ostringstream text;
    text << seconds_after_push << ' ' << seconds_after_pull << ' ' << count << ' ' << now_ms();
    write_text("sim/hotswap", text.str());
}

void stop_hotswap_test() { write_text("sim/hotswap", "stop"); }

uint32_t card_type() { return static_cast<uint32_t>(setting_number("sim/type")); }

void power_slot_down(uint32_t slot) {
    write_text(slot_file(slot, ".power"), "off " + std::to_string(restart_count()));
    if (!in_tray(slot))
        close_all_channels();
}

bool power_slot_up(uint32_t slot, bool ignore_detect) {
    if (!ignore_detect && driver_state(slot) == CardState::absent)
        return false;
    if (!power_of(slot).on)
        write_text(slot_file(slot, ".power"), "on " + std::to_string(now_ms()));
    return true;
}

bool euicc_ready(uint32_t slot, int64_t boot_ms) {
    if (in_tray(slot) || card_state(slot) != CardState::present)
        return false;
    const int64_t powered_for = now_ms() - power_of(slot).since;
    return powered_for < 0 || powered_for >= boot_ms; /* below 0: the clock was set back */
}

void connect_slot_2(bool to_tray) {
    if (in_tray(euicc_slot) != to_tray)
        close_all_channels();
    write_text("sim/2.kind", to_tray ? "psim" : "euicc");
}

} // namespace simphone
