/* The two card slots, UIM's and the vendor service's view of them. In the phone's directory (SLOT
 * is 1 or 2):
 *
 *     sim/SLOT         what is in the slot: present | absent | error; of slot 2 for whatever it is
 *                      connected to
 *     sim/2.kind       what slot 2 is connected to: euicc (soldered in) | psim (the tray)
 *     sim/SLOT.power   on | off; "on" may be followed by since when, in milliseconds, "off" by the
 *                      restarts so far: the next restart of the modem powers the slot up
 *     sim/SLOT.detect  the card-detect line: auto, or forced to low | high; then "general", when
 *                      only who asks for the line sees that, or "sim", when the SIM driver does too
 *     sim/hotswap      stop, or a running test of the tray: seconds after a push, seconds after a
 *                      pull, count, and since when in milliseconds
 *     sim/type         answer to the card type query: 0 error, 1 single SIM, 2 several
 *
 * A missing file is made with its first value above (sim/type with 2). */
#pragma once

#include <cstdint>

namespace simphone {

constexpr uint32_t sim_slots = 2;

/* As UIM numbers them. */
enum class CardState : uint8_t { absent, present, error };

/* A card that has no power counts as in error. */
CardState card_state(uint32_t slot);

/* The card-detect line: high while a card is in the slot. */
bool card_detected(uint32_t slot);

/* high: 1, low: 0. */
void force_card_detect(uint32_t slot, bool for_sim_driver, bool high);

/* From now on count times: pulled for seconds_after_pull, in for seconds_after_push. */
void start_hotswap_test(uint32_t seconds_after_push, uint32_t seconds_after_pull, uint32_t count);
void stop_hotswap_test();

uint32_t card_type();

/* Takes the card's power; logical channels of the eUICC are lost with it. */
void power_slot_down(uint32_t slot);

/* False, and no power, when no card is detected; ignore_detect powers up all the same. */
bool power_slot_up(uint32_t slot, bool ignore_detect);

/* True when slot is connected to the eUICC and that has had power for so many milliseconds. */
bool euicc_ready(uint32_t slot, int64_t boot_ms);

/* Connects slot 2 to the tray or to the eUICC; what it was connected to loses its channels. */
void connect_slot_2(bool to_tray);

} // namespace simphone
