// SPDX-License-Identifier: Apache-2.0
/* QMI client framework (libqmi_cci): prototypes that kvt calls.
 *
 * Every call returns 0 or one of the negative results below. Callbacks arrive on the framework's
 * own threads. OS parameters that a client was made with must live as long as the client. */
#pragma once

#include <pthread.h>
#include <stdint.h>

#include "qmi_idl.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct qmi_client_struct* qmi_client_type; /* opaque */
typedef int qmi_client_error_type;
typedef unsigned int qmi_service_instance;

typedef struct {
    unsigned int info[5];
} qmi_service_info;

typedef struct {
    uint32_t sig_set;
    uint32_t timed_out;
    uint32_t clock;
    pthread_cond_t cond;
    pthread_condattr_t attr;
    pthread_mutex_t mutex;
} qmi_client_os_params;

typedef enum {
    QMI_CLIENT_SERVICE_COUNT_INC,
    QMI_CLIENT_SERVICE_COUNT_DEC
} qmi_client_notify_event_type;

enum {
    QMI_NO_ERR = 0,
    QMI_INTERNAL_ERR = -1,
    QMI_SERVICE_ERR = -2, /* the service is gone */
    QMI_TIMEOUT_ERR = -3,
    QMI_EXTENDED_ERR = -4,
    QMI_PORT_NOT_OPEN_ERR = -5,
    QMI_MEMCOPY_ERROR = -13,
    QMI_INVALID_TXN = -14,
    QMI_CLIENT_ALLOC_FAILURE = -15,
    QMI_CLIENT_TRANSPORT_ERR = -16,
    QMI_CLIENT_PARAM_ERR = -17,
    QMI_CLIENT_INVALID_CLIENT = -18,
    QMI_CLIENT_FW_NOT_UP = -19,
    QMI_CLIENT_INVALID_SIG = -20,
    QMI_XPORT_BUSY_ERR = -21,
};

/* Any instance of a service, for qmi_client_init_instance. */
enum { QMI_CLIENT_INSTANCE_ANY = 0xFFFF };

/* buf: the indication's TLVs, not decoded, without the QMI header. */
typedef void (*qmi_client_ind_cb)(qmi_client_type client, unsigned int msg_id, void* buf,
                                  unsigned int len, void* data);
typedef void (*qmi_client_error_cb)(qmi_client_type client, qmi_client_error_type error,
                                    void* data);
typedef void (*qmi_client_notify_cb)(qmi_client_type client, qmi_idl_service_object_type service,
                                     qmi_client_notify_event_type event, void* data);

qmi_client_error_type qmi_client_notifier_init(qmi_idl_service_object_type service,
                                               qmi_client_os_params* os_params,
                                               qmi_client_type* notifier);

/* With a null array only counts, and fails while no instance of the service is up. num_entries: in
 * capacity of the array, out entries written; num_services: instances that are up. */
qmi_client_error_type qmi_client_get_service_list(qmi_idl_service_object_type service,
                                                  qmi_service_info* array,
                                                  unsigned int* num_entries,
                                                  unsigned int* num_services);

qmi_client_error_type qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                                      qmi_client_ind_cb ind_cb, void* ind_cb_data,
                                      qmi_client_os_params* os_params, qmi_client_type* client);

/* Waits up to timeout_ms for the service. */
qmi_client_error_type qmi_client_init_instance(qmi_idl_service_object_type service,
                                               qmi_service_instance instance,
                                               qmi_client_ind_cb ind_cb, void* ind_cb_data,
                                               qmi_client_os_params* os_params, uint32_t timeout_ms,
                                               qmi_client_type* client);

/* req and resp are the messages' C structures, their lengths the structures' sizes. */
qmi_client_error_type qmi_client_send_msg_sync(qmi_client_type client, unsigned int msg_id,
                                               void* req, unsigned int req_len, void* resp,
                                               unsigned int resp_len, unsigned int timeout_ms);

/* src: TLVs; dst: the message's C structure. */
qmi_client_error_type qmi_client_message_decode(qmi_client_type client,
                                                qmi_idl_type_of_message_type type,
                                                unsigned int msg_id, const void* src,
                                                unsigned int src_len, void* dst,
                                                unsigned int dst_len);

qmi_client_error_type qmi_client_register_error_cb(qmi_client_type client, qmi_client_error_cb cb,
                                                   void* data);

/* Called at once when the service is up at registration. */
qmi_client_error_type qmi_client_register_notify_cb(qmi_client_type client, qmi_client_notify_cb cb,
                                                    void* data);

qmi_client_error_type qmi_client_release(qmi_client_type client);

/* Waits until the signal is set or the time is up; timed_out says which. */
void qmi_cci_os_signal_wait(qmi_client_os_params* os_params, unsigned int timeout_ms);

#ifdef __cplusplus
}
#endif
