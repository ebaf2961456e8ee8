// SPDX-License-Identifier: Apache-2.0
/* Names on the phone that belong to no library: the properties that kvt reads and sets, and its one
 * device. */
#pragma once

/* "1", or not set: the tool's log lines go to standard output too. */
#define PHONE_PROPERTY_PRINT "persist.vendor.radio.adb_log_ov"
/* "true": allocations are traced. */
#define PHONE_PROPERTY_TRACE "persist.ravex.mem_trace"
/* What the modem's restart takes along, and what it was set to before the tool changed it. */
#define PHONE_PROPERTY_RESTART_LEVEL "persist.vendor.ssr.restart_level"
#define PHONE_PROPERTY_RESTART_LEVEL_BACKUP "persist.vendor.ssr.restart_level_bak"
/* Seconds to wait for a restarted modem. */
#define PHONE_PROPERTY_RESTART_WAIT "persist.radio.ssr_wait_s"
/* Set only: "1" or "2". */
#define PHONE_PROPERTY_PRINT_STATS "persist.vendor.radio.print_stats"

/* The modem's AT channel, a character device. */
#define PHONE_AT_CHANNEL "/dev/smd8"
