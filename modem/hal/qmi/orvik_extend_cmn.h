/* Access to the modem over QMI: the client of the vendor-extended service, the common requests sent
 * through it, the SAR and UIM services. */
#pragma once

#include <cstdint>

#include "qmi_cci.h"

/* ---- vendor-extended client ----
 * Results: 0 success, -1 bad argument or length, -2 the client could not be opened, -3 the send
 * failed or the service reported an error. */

/* Opens the client and returns its handle; an open one is returned as it is. Null on failure. Waits
 * up to a second for the service. */
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
 * Both fill rsp, at least 508 bytes, with the reply. They return the result of the send as it is,
 * or ORVIK_USAGE_ERROR for bad arguments, in which case nothing is sent. */

enum { ORVIK_COMMON_REPLY_SIZE = 508 };

/* A record of kind qmi_id with up to 499 bytes of data. */
int32_t orvik_common_qmi_req(uint32_t qmi_id, uint32_t len, const uint8_t* data, void* rsp);

/* A typed record (kind 2) of type t with up to 491 bytes of data. */
int32_t orvik_send_common_qmi_msg(uint32_t t, uint32_t l, const void* v, void* rsp);
