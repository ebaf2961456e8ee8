// SPDX-License-Identifier: Apache-2.0
/* Typed commands of the vendor service about cards. Payloads and replies are u32 numbers; sub 0 is
 * slot 1. A payload that is too short, or names a slot that is not there, gives -EINVAL. */
#pragma once

#include "phone/bytes.h"

namespace simphone {

/* -> the card-detect lines of slots 1 and 2, 1 for high */
int32_t card_status_query(ByteView payload, Bytes& reply);

/* sub -> the card-detect line of the slot */
int32_t card_status_get(ByteView payload, Bytes& reply);

/* -> card type: 0 error, 1 single SIM, 2 several */
int32_t card_type_query(ByteView payload, Bytes& reply);

/* sub, mode, level: forces the card-detect line; mode 1: for the SIM driver too */
int32_t card_status_set(ByteView payload, Bytes& reply);

/* opt [push pull count]: starts (opt 1) or stops (0) the hot-swap test of the tray */
int32_t card_hotswap(ByteView payload, Bytes& reply);

/* 0 or 1, 0: connects slot 2 to the eUICC or to the tray */
int32_t esim_switch(ByteView payload, Bytes& reply);

} // namespace simphone
