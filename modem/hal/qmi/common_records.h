// SPDX-License-Identifier: Apache-2.0
/* Request kind 4 of the vendor-extended service (REQUEST_ID_COMMON): records of 512 bytes, and the
 * reply. A record begins with its code; any code but those below is a request of its caller. */
#pragma once

#include <cstddef>
#include <cstdint>

#include "orvik_extend_idl.h"

enum : uint32_t {
    COMMON_CODE_GPIO_TEST = 0,
    COMMON_CODE_RF_TX_TEST = 1,
    COMMON_CODE_TYPED = 2,
};

enum : uint32_t {
    ORVIK_COMMON_DATA_MAX = 499,   /* bytes that a common request takes */
    ORVIK_TYPED_DATA_MAX = 491,    /* that a typed one takes */
    ORVIK_COMMON_REPLY_SIZE = 508, /* bytes of a reply that are asked for */
    ORVIK_GPIO_VALUES_MAX = 50,
};

struct orvik_common_record {
    uint32_t code;
    uint32_t zero;
    uint8_t data[504];
};

struct orvik_typed_record {
    uint32_t code;
    uint32_t zero;
    uint32_t type;
    uint32_t len;
    uint8_t data[496];
};

struct orvik_gpio_test_record {
    uint32_t code;
    uint32_t zero;
    uint32_t count; /* of values typed, not capped */
    uint32_t values[ORVIK_GPIO_VALUES_MAX];
    uint8_t rest[300];
};

struct orvik_rf_tx_test_record {
    uint32_t code;
    uint32_t zero;
    uint32_t v_ant; /* 0 lower antenna, 1 upper antenna */
    uint32_t v_sys; /* 0 gsm, 1 wcdma, 2 cdma, 3 tds, 4 lte */
    uint64_t v_band_list;
    uint8_t rest[488];
};

struct orvik_common_reply {
    uint32_t spare;
    int32_t result;    /* 0 for success */
    uint8_t data[504]; /* of a typed command: type, length, payload */
};

static_assert(sizeof(orvik_common_record) == ORVIK_EXTEND_DATA_SIZE);
static_assert(sizeof(orvik_typed_record) == ORVIK_EXTEND_DATA_SIZE);
static_assert(sizeof(orvik_gpio_test_record) == ORVIK_EXTEND_DATA_SIZE);
static_assert(sizeof(orvik_rf_tx_test_record) == ORVIK_EXTEND_DATA_SIZE);
static_assert(sizeof(orvik_common_reply) == ORVIK_EXTEND_DATA_SIZE);
static_assert(offsetof(orvik_rf_tx_test_record, v_band_list) == 16);
