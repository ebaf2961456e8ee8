// SPDX-License-Identifier: Apache-2.0
/* libqmi_cci as another phone's header has it. */
#ifndef OTHER_QMI_CCI_H
#define OTHER_QMI_CCI_H
#include "qmi_idl.h"
#include <pthread.h>
#include <stdint.h>
#define QMI_NO_ERR 0
#define QMI_INTERNAL_ERR (-1)
#define QMI_SERVICE_ERR (-2)
#define QMI_TIMEOUT_ERR (-3)
#define QMI_PORT_NOT_OPEN_ERR (-5)
#define QMI_CLIENT_INVALID_CLIENT (-18)
#define QMI_CLIENT_INSTANCE_ANY 0xffff
#ifdef __cplusplus
extern "C" {
#endif
typedef struct other_client* qmi_client_type;
typedef int qmi_client_error_type;
typedef unsigned int qmi_service_instance;
typedef struct {
    unsigned int other_info[5];
} qmi_service_info;
typedef struct {
    uint32_t sig_set, timed_out, other_clock, other;
    pthread_condattr_t other_attr;
    pthread_mutex_t mutex;
} qmi_client_os_params;
typedef enum { QMI_CLIENT_SERVICE_COUNT_INC, other_count_dec } qmi_client_notify_event_type;
typedef void (*qmi_client_ind_cb)(qmi_client_type, unsigned int, void*, unsigned int, void*);
typedef void (*qmi_client_error_cb)(qmi_client_type, qmi_client_error_type, void*);
typedef void (*qmi_client_notify_cb)(qmi_client_type, qmi_idl_service_object_type,
                                     qmi_client_notify_event_type, void*);
qmi_client_error_type qmi_client_notifier_init(qmi_idl_service_object_type, qmi_client_os_params*,
                                               qmi_client_type*);
qmi_client_error_type qmi_client_get_service_list(qmi_idl_service_object_type, qmi_service_info*,
                                                  unsigned int*, unsigned int*);
qmi_client_error_type qmi_client_init(qmi_service_info*, qmi_idl_service_object_type,
                                      qmi_client_ind_cb, void*, qmi_client_os_params*,
                                      qmi_client_type*);
qmi_client_error_type qmi_client_init_instance(qmi_idl_service_object_type, qmi_service_instance,
                                               qmi_client_ind_cb, void*, qmi_client_os_params*,
                                               uint32_t, qmi_client_type*);
qmi_client_error_type qmi_client_send_msg_sync(qmi_client_type, unsigned int, void*, unsigned int,
                                               void*, unsigned int, unsigned int);
qmi_client_error_type qmi_client_message_decode(qmi_client_type, qmi_idl_type_of_message_type,
                                                unsigned int, const void*, unsigned int, void*,
                                                unsigned int);
qmi_client_error_type qmi_client_register_error_cb(qmi_client_type, qmi_client_error_cb, void*);
qmi_client_error_type qmi_client_register_notify_cb(qmi_client_type, qmi_client_notify_cb, void*);
qmi_client_error_type qmi_client_release(qmi_client_type);
void qmi_cci_os_signal_wait(qmi_client_os_params*, unsigned int);
#ifdef __cplusplus
}
#endif
#endif
