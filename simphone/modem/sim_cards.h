// SPDX-License-Identifier: Apache-2.0
/* The two card slots, UIM's and the vendor service's view of them: the files of the phone's folder
 * sim (docs/phone.md). */
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
