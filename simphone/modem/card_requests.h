/* Typed commands of the vendor service about cards. Numbers are u32; sub 0 is slot 1. A payload
 * that is too short, or names a slot that is not there, gives -EINVAL.
 *
 *     39  ->                          card-detect lines of slots 1 and 2, 1 for high
 *     55  sub                      -> card-detect line of the slot
 *     56  ->                          card type: 0 error, 1 single SIM, 2 several
 *     57  sub, mode, level         -> forces the card-detect line; mode 1: for the SIM driver too
 *     80  opt [push pull count]    -> starts (opt 1) or stops (0) the hot-swap test of the tray
 *     84  0 or 1, 0                -> connects slot 2 to the eUICC or to the tray */
#pragma once

#include "phone/bytes.h"

namespace simphone {

int32_t card_status_query(ByteView payload, Bytes& reply); /* 39 */
int32_t card_status_get(ByteView payload, Bytes& reply);   /* 55 */
int32_t card_type_query(ByteView payload, Bytes& reply);   /* 56 */
int32_t card_status_set(ByteView payload, Bytes& reply);   /* 57 */
int32_t card_hotswap(ByteView payload, Bytes& reply);      /* 80 */
int32_t esim_switch(ByteView payload, Bytes& reply);       /* 84 */

} // namespace simphone
