// SPDX-License-Identifier: Apache-2.0
/* The service clients of the modem API: four QMI clients of one shape, vs, sar, nas_0 and nas_1.
 *
 * A client connects with retries, hands decoded indications on, tells its state by an operational
 * status callback, and survives a restart of the modem:
 *
 *   idle --client_init--> connecting --3--> connected --service down: 4--> suspending --5-->
 *   suspended --service up: 6--> connecting --3--> connected ...
 *
 * A connection that fails ends in idle with status 2 (at init) or 7 (after a resume). Without a
 * worker for it, a suspension ends with status 0, a resume with status 7.
 *
 * Threads: the framework's callbacks, the two workers and callers of the functions below may meet
 * at any moment. A connection, a suspension, a resumption and a release each have their turn, one
 * after the other, and their statuses are told in it. What was told to begin comes to its end: a
 * release after status 4 waits until status 5 was told and the notifier stands, or sees to it
 * itself; a release that ends a connecting lets it fail first, without another attempt. An event
 * that comes in somebody's turn is acted on at its end, by the thread that had it. No handle is
 * released while a request or an indication uses it.
 *
 * PREFIX_init, PREFIX_client_init, PREFIX_client_init_client_handles and PREFIX_client_release are
 * not for the client's own handlers: they wait for them to return. */
#pragma once

#include <atomic>
#include <cstdint>

#include <pthread.h>

#include "qmi_cci.h"

enum : uint32_t { CLIENT_KIND_VS, CLIENT_KIND_SAR, CLIENT_KIND_NAS_0, CLIENT_KIND_NAS_1 };
enum : uint32_t { CLIENT_KINDS = 4 };

/* Operational status codes. */
enum : int32_t {
    CLIENT_RELEASED = 0, /* also: the suspend worker could not be started */
    CLIENT_CONNECTING = 1,
    CLIENT_INIT_FAILED = 2,
    CLIENT_CONNECTED = 3, /* by client_init, or again after a resume */
    CLIENT_SUSPENDING = 4,
    CLIENT_SUSPENDED = 5,
    CLIENT_RESUMING = 6,
    CLIENT_RESUME_FAILED = 7, /* also: the resume worker could not be started */
};

/* payload lives for the call only. */
using client_indication_handler = void (*)(uint32_t event, void* payload, uint32_t size);
using client_operational_status_cb = void (*)(int32_t client_kind, int32_t status);

/* The framework's callback of an asynchronous response. */
using client_command_cb = void (*)(qmi_client_type handle, unsigned int msg_id, void* resp,
                                   unsigned int resp_len, void* resp_cb_data,
                                   qmi_client_error_type transport_error);

/* Milliseconds between two connection attempts: 1000. Tests shorten it. */
extern std::atomic<unsigned> g_client_retry_wait_ms;

/* Starts a worker: pthread_create. Tests may put a failing one here. */
extern int (*g_client_thread_create)(pthread_t* thread, const pthread_attr_t* attr,
                                     void* (*body)(void*), void* arg);

/* The functions of one client.
 *
 * PREFIX_init: releases the client without telling so, clears its context and fetches the service
 * object, which it returns.
 * PREFIX_client_init: connects and returns 1, or 0 when ten attempts failed; status 1, then 3 or 2.
 * handler may be null: indications are then ignored. A client that is connected connects anew.
 * PREFIX_client_init_client_handles: only the connecting, without statuses. 1 connected, 0 not.
 * PREFIX_client_release: status 0, then everything is released and the context cleared, the service
 * object and the callbacks too. Returns 1. A request under way is waited for.
 * The rest are callbacks for the framework and bodies of the two workers. */
#define DECLARE_SERVICE_CLIENT(PREFIX)                                                             \
    qmi_idl_service_object_type PREFIX##_init();                                                   \
    int PREFIX##_client_init(client_indication_handler handler);                                   \
    int PREFIX##_client_init_client_handles();                                                     \
    int PREFIX##_client_release();                                                                 \
    void PREFIX##_client_set_operational_status_callback(client_operational_status_cb cb);         \
    void PREFIX##_client_unsol_ind_cb(qmi_client_type handle, unsigned int msg_id, void* buf,      \
                                      unsigned int len, void* cookie);                             \
    void PREFIX##_client_service_down_event(qmi_client_type handle, qmi_client_error_type error,   \
                                            void* cookie);                                         \
    void PREFIX##_client_service_up_event(qmi_client_type handle,                                  \
                                          qmi_idl_service_object_type service,                     \
                                          qmi_client_notify_event_type event, void* cookie);       \
    void PREFIX##_client_command_cb(qmi_client_type handle, unsigned int msg_id, void* resp,       \
                                    unsigned int resp_len, void* resp_cb_data,                     \
                                    qmi_client_error_type transport_error);                        \
    void PREFIX##_client_release_qmi_client_thread();                                              \
    void PREFIX##_client_resume_qmi_client_thread();

DECLARE_SERVICE_CLIENT(vs)
DECLARE_SERVICE_CLIENT(sar)
DECLARE_SERVICE_CLIENT(nas_0)
DECLARE_SERVICE_CLIENT(nas_1)

/* True on a thread that runs a handler, of statuses or indications, of a client of that kind. */
bool service_client_handler_runs_here(uint32_t kind);

/* One exchange, 30000 ms at most. Returns the framework's result; -18 while there is no connection.
 * req and resp are the message's C structures. */
using client_send_msg_sync = int(uint32_t msg_id, void* req, uint32_t req_len, void* resp,
                                 uint32_t resp_len);
client_send_msg_sync vs_client_send_msg_sync, nas_0_client_send_msg_sync,
    nas_1_client_send_msg_sync;

/* Asks for the serving-system indication; part of connecting. Returns the framework's result. */
int nas_0_client_set_networking_indications();
int nas_1_client_set_networking_indications();
