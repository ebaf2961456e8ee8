// SPDX-License-Identifier: Apache-2.0
/* The modem API: clients of the modem's services by number.
 *
 * A caller initialises the API, asks for a client of one kind and gets its id; each operation
 * checks that the client is there, of the right kind and connected. Clients of the kinds 0 to 3
 * (CLIENT_KIND_...) stand on the service clients vs, sar, nas_0 and nas_1.
 *
 * Operations, the calls with a client id but modem_api_free_client, may be called from any thread.
 * A notifier that is told of a connection may call them too; other handlers run on threads that
 * the framework may need to bring the answer, so an operation there may wait for its whole
 * time-out. modem_api_init, modem_api_release, modem_api_init_client and modem_api_free_client are
 * not for handlers: they may wait for one to return. Freeing a client in a handler of its own is
 * refused. */
#pragma once

#include <cstdint>

#include "qmi_common.h"
#include "qmi_vs.h"
#include "service_client.h"

/* Results. */
enum : int {
    MODEM_API_OK = 0,
    MODEM_API_FAILURE = 1,       /* also: the service client did not connect */
    MODEM_API_RESPONSE_END = 2,  /* end of a successful asynchronous response */
    MODEM_API_NO_RESPONSE = 3,   /* also: no memory, client table full */
    MODEM_API_NOT_SUPPORTED = 4, /* also: unknown client kind */
    MODEM_API_BAD_ARGUMENT = 5,
    MODEM_API_UNEXPECTED = 7, /* bad client id, client missing, of another kind, not connected */
    MODEM_API_QMI_ERROR_52 = 8,
    MODEM_API_CLIENT_NOT_CONNECTED = 9, /* there is a client of that kind, but not connected */
    MODEM_API_QMI_ERROR_4 = 10,
    MODEM_API_TIMEOUT = 11,
    MODEM_API_TRANSPORT = 12,
};

/* Events that a status notifier gets. */
enum : uint32_t { MODEM_API_EVENT_SUSPEND = 0x10001, MODEM_API_EVENT_CONNECTED = 0x10002 };

using modem_api_status_notifier = void (*)(uint32_t event, uint32_t kind);

/* The modem's statistics items. The numbers follow no rule. */
enum modem_stats_data_id_e_type : uint32_t {
    MODEM_STATS_5G_SCC1_RSRP = 6,
    MODEM_STATS_5G_SCC2_RSRP = 7,
    MODEM_STATS_4G_PCC_RSSI = 82,
    MODEM_STATS_5G_PCC_RSSI = 94,
    MODEM_STATS_ANT_INFO = 100,
    MODEM_STATS_4G_SCC1_RSSI = 103,
    MODEM_STATS_4G_SCC2_RSSI = 104,
    MODEM_STATS_4G_SCC3_RSSI = 105,
    MODEM_STATS_4G_SCC4_RSSI = 106,
    MODEM_STATS_4G_SCC5_RSSI = 107,
    MODEM_STATS_4G_SCC6_RSSI = 108,
    MODEM_STATS_WCDMA_RSSI = 110,
    MODEM_STATS_GSM_RSSI = 111,
    MODEM_STATS_5G_PCC_SNR = 112,
    MODEM_STATS_5G_ANT_DIVERSITY = 113,
    MODEM_STATS_5G_PCC_RSRP = 135,
    MODEM_STATS_ID_136 = 136,
    MODEM_STATS_ID_137 = 137,
};

/* What modem_api_get_stats_parameter fills. */
struct modem_api_stats_entry {
    uint32_t sub;
    uint32_t id;
    uint32_t data_len; /* at most 700 */
    uint8_t data[QMI_VS_MAX_DATA];
};

struct modem_api_stats {
    uint32_t count; /* at most 10 */
    modem_api_stats_entry entries[QMI_VS_MAX_ENTRIES];
};
static_assert(sizeof(modem_api_stats_entry) == 712);
static_assert(sizeof(modem_api_stats) == 7124);

/* Both return 0. Init resets the four service clients; release frees no client. */
int modem_api_init();
int modem_api_release();

/* Connects a client of a kind and stores its id. Published: returns 0 without an id when one of
 * that kind is connected already. The handlers, which may be null, are called on the framework's
 * threads and the service clients' workers. */
int modem_api_init_client(uint32_t kind, client_indication_handler indication_handler,
                          modem_api_status_notifier status_notifier, int32_t* client_id);

/* 0, also for a slot that is empty; 7 for an id outside the table and in a handler of the client.
 */
int modem_api_free_client(int32_t client_id);

/* The status callback of every service client. */
void modem_api_operational_status_cb(int32_t kind, int32_t status);

/* Asks NAS for the serving-system indication: second_sub 0 by a client of kind 2, 1 by one of
 * kind 3. */
int modem_api_util_enable_networking_indications(int32_t client_id, int32_t second_sub);

int modem_api_set_ravex_feature_status(int32_t client_id, uint32_t feature, uint8_t a, uint8_t b,
                                       uint8_t c);

/* Asks for id_count items, 1 to 10, of a subscription. number is the caller's own request number;
 * out holds a modem_api_stats. */
int modem_api_get_stats_parameter(int32_t client_id, uint16_t sub, uint16_t number,
                                  int32_t id_count, const uint32_t* ids, uint32_t* out);

/* The result here for a result of the framework and, if that is good, for the service's answer. */
int modem_api_map_qmi_error_to_modem_api(int32_t qmi_err, const qmi_response_type_v01* resp);

/* Who gets an asynchronous response. The callback owns data, a block of the traced allocator, or
 * null. */
struct modem_api_completion {
    void (*callback)(void* data, uint32_t len, void* user_data, uint32_t error);
    void* user_data;
};

/* Hands an asynchronous response to the completion's callback, then frees resp and done, both
 * blocks of the traced allocator. resp begins with the standard response; for message 0 a u32
 * length and that many bytes follow. After a success the callback is called with error
 * MODEM_API_RESPONSE_END, for message 0 after a call with the data. */
void modem_api_process_response(uint32_t msg_id, void* resp, uint32_t resp_len,
                                modem_api_completion* done, int32_t transport_error);
