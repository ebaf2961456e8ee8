// SPDX-License-Identifier: Apache-2.0
/* Restart, dump and NV sync of the modem, and the RF tests: what the requests for them do. */
#pragma once

#include <cstdint>

#include "phone/bytes.h"

namespace simphone {

/* Typed requests. A full dump leaves the first file of the folder dump that is free, and restarts. */
int32_t typed_restart(ByteView payload, Bytes& reply);
int32_t typed_full_dump(ByteView payload, Bytes& reply);
int32_t typed_nv_sync(ByteView payload, Bytes& reply);

/* RF test records: the test's state becomes the EFS file that the modem would read after a reboot.
 * GPIO: the count and as many values, at most 50, each u32. Antenna: antenna u32, system u32, band
 * list u64. */
int32_t record_gpio_test(ByteView data, Bytes& reply);
int32_t record_tx_antenna(ByteView data, Bytes& reply);

} // namespace simphone
