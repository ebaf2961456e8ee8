// SPDX-License-Identifier: Apache-2.0
/* Access to the modem over QMI: the client of the vendor-extended service, the common requests sent
 * through it, the SAR and UIM services. */
#pragma once

#include <cstdint>

#include "common_records.h"
#include "qmi_cci.h"

/* ---- vendor-extended client ----
 * Results: 0 success, -1 bad argument or length, -2 the client could not be opened, -3 the send
 * failed or the service reported an error. */

/* The handle of the client that the sends have opened, else of a new one, which is not kept: only a
 * send keeps what it opens. Null on failure. Waits up to a second for the service. */
qmi_client_type orvik_extend_qmi_client_open();

/* Sends request 0x02 of kind id with len bytes of data, at most 512, and waits up to 3 s for the
 * response. rsp_len: in the capacity of rsp, at most 512, out the bytes copied. */
int32_t orvik_extend_qmi_send_sync(uint32_t id, const uint8_t* data, int32_t len, void* rsp,
                                   uint32_t* rsp_len);

void orvik_extend_qmi_ind_cb(qmi_client_type handle, unsigned int msg_id, void* buf,
                             unsigned int buf_len, void* cb_data);

/* Indication callback of the clients that want none. */
void orvik_qcril_qmi_client_common_empty_unsol_ind_cb(qmi_client_type handle, unsigned int msg_id,
                                                      void* buf, unsigned int buf_len,
                                                      void* cb_data);

/* ---- common requests ----
 * Both fill rsp, at least ORVIK_COMMON_REPLY_SIZE bytes, with the reply. They return the result of
 * the send as it is, or ORVIK_USAGE_ERROR for bad arguments, in which case nothing is sent. */

enum {
    ORVIK_USAGE_ERROR = 0x0FFFF00A, /* also what a command returns whose arguments are wrong */
};

/* A record of code qmi_id with up to ORVIK_COMMON_DATA_MAX bytes of data. */
int32_t orvik_common_qmi_req(uint32_t qmi_id, uint32_t len, const uint8_t* data, void* rsp);

/* A typed record of type t with up to ORVIK_TYPED_DATA_MAX bytes of data. */
int32_t orvik_send_common_qmi_msg(uint32_t t, uint32_t l, const void* v, void* rsp);

/* ---- SAR ---- */

/* Index of the SAR back-off table in force (DSI), or -1 on any failure. Every call makes a client
 * of its own, which stays. */
int32_t orvik_get_sar_dsi();

/* ---- UIM client ----
 * One client of the UIM service for the process. The first SIM operation makes it. The error
 * callback, on the framework's thread, only sets a flag when the modem has restarted. The
 * operations, which run on one thread at a time, release the client:
 *
 *     at the begin of an operation (not of card status): if the flag is set
 *     at its end: if its exchange returned -2, or was the client's third that failed */

/* Makes the client, waiting up to 4 s for the service. False when that fails. */
bool init_uim_qmi_client();

void error_cb(qmi_client_type handle, qmi_client_error_type error, void* cb_data);

/* Releases the client; without one nothing happens. */
void uim_qmi_client_recovery();

/* ---- SIM operations ----
 * Arguments come as byte arrays, a slot is 1 or 2. Each waits up to 3 s for its answer and returns
 * 0, -1 without client or memory, or the transport's error. Opening a channel and sending an APDU
 * return -1 also when the service refuses; the others succeed then and leave their output as its
 * default. */

/* args: three u32: power up (0: down), slot, ignore hot swap when powering up. */
int32_t orvik_uim_request_uicc_power_ex(char* args);

/* args: slot. eid: 16 bytes, only written when the card returns its EID. */
int32_t orvik_uim_request_eid(char* args, uint8_t* eid);

/* states: card states of slots 1 and 2: 0 absent, 1 present, 2 error, 3 unknown. */
int32_t orvik_uim_get_card_status(char* states);

/* Opens a channel to the eUICC's issuer security domain (ISD-R). args: slot, and which file control
 * information to ask for. channel_id is only written when the answer holds one. */
int32_t orvik_uim_open_channel(uint8_t* args, uint8_t* channel_id);

/* args: slot, channel id. */
int32_t orvik_uim_close_channel(uint8_t* args);

/* args: slot, channel id, APDU length, APDU. rsp, 256 bytes: the low byte of the reply's length,
 * then that many bytes of the reply. */
int32_t orvik_uim_send_apdu(char* args, uint8_t* rsp);
