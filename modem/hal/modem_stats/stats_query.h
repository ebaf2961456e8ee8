// SPDX-License-Identifier: Apache-2.0
/* Group 9: single statistics items, asked for through the modem API. */
#pragma once

#include <cstdint>

#include "modem_api.h"

/* State of the group; one request at a time. */
extern uint32_t g_ravex_client_id; /* 0xFFFFFFFF: none */
extern int32_t g_ravex_data_len;   /* bytes of the last good reply, 0: none */
extern uint8_t g_ravex_data[QMI_VS_MAX_DATA];
extern int32_t g_ravex_data_left; /* bytes not yet read */
extern int32_t g_pK_DATA_CNT;     /* bytes read: the next read position */
extern uint32_t g_ravex_data_id;  /* of the last good reply */
extern uint32_t g_ravex_req_number;

void orvik_qmi_modem_stats_api_init();
void orvik_test_qmi_modem_stats_start();
void orvik_test_qmi_modem_stats_hdl(int opt, unsigned sub);
void orvik_qmi_modem_stats_api_deinit();

/* Fetches one item of a subscription (0 or 1) into the group's state. 0, or 1 after a line that
 * says why. */
int orvik_test_qmi_modem_stats_get(unsigned sub, unsigned data_id);

/* Fetch an item, read the record and print it as one line. 0, or 1 if the fetch failed or the
 * record ends too early. */
int orvik_test_qmi_modem_stats_4g_rssi(unsigned sub, modem_stats_data_id_e_type id);
int orvik_test_qmi_modem_stats_5g_rssi(unsigned sub);
int orvik_test_qmi_modem_stats_5g_snr(unsigned sub);
int orvik_test_qmi_modem_stats_5g_ant_diversity(unsigned sub);
int orvik_test_qmi_modem_stats_5g_rsrp(unsigned sub, modem_stats_data_id_e_type id);
int orvik_test_qmi_modem_stats_wcdma_rssi(unsigned sub);
int orvik_test_qmi_modem_stats_gsm_rssi(unsigned sub);
int orvik_test_qmi_modem_stats_ant_info(); /* always of subscription 0 */

/* Handlers given to the modem API; both do nothing. */
void orvik_test_qmi_modem_stats_callback_event_cb(uint32_t event, void* payload, uint32_t size);
void orvik_test_qmi_modem_stats_operational_status_cb(uint32_t event, uint32_t kind);
