// SPDX-License-Identifier: Apache-2.0
/* Numbers of the vendor service's common requests, and of the typed ones among them. */
#pragma once

#include <cstdint>

namespace simphone {

enum : uint32_t {
    record_kind_gpio_test = 0,
    record_kind_tx_antenna = 1,
    record_kind_typed = 2,
    record_kind_stats_debug_info = 20,
    record_kind_stats_not_supported_logs = 27,
};

enum : uint32_t {
    type_restart = 31,
    type_nv_sync = 35,
    type_card_status_query = 39,
    type_card_status_get = 55,
    type_card_type_query = 56,
    type_card_status_set = 57,
    type_card_hotswap = 80,
    type_esim_switch = 84,
    type_full_dump = 99,
};

} // namespace simphone
