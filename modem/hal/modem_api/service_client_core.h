// SPDX-License-Identifier: Apache-2.0
/* The one implementation behind the four service clients; an instance is a row of constants. */
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "qmi_cci.h"
#include "ravex_log.h"
#include "service_client.h"

/* What differs between the instances. */
struct service_client_traits {
    const char* prefix; /* of the instance's functions, as they show in the log */
    uint32_t kind;
    qmi_idl_service_object_type (*service_object)(int32_t major, int32_t minor, int32_t library);
    int32_t minor;

    void (*after_attempt)(qmi_client_type handle); /* null: nothing; handle null: it failed */
    int (*after_connect)();                        /* null: nothing */

    /* Dispatches a decoded indication; false for a message id that it does not know. Null: it
     * knows none. */
    bool (*indication)(client_indication_handler handler, uint32_t msg_id, const void* decoded,
                       uint32_t size);

    qmi_client_ind_cb unsol_ind_cb;
    qmi_client_error_cb service_down_event;
    qmi_client_notify_cb service_up_event;
    client_command_cb command_cb;
};

struct service_client_context {
    qmi_idl_service_object_type service_object;
    qmi_client_type client_handle; /* null when not connected */
    qmi_client_os_params os_params;
    qmi_client_type notifier_handle; /* only between suspend and resume */
    client_command_cb command_callback;
    client_indication_handler indication_handler;
    client_operational_status_cb operational_status_callback;
    uint32_t connected;
};

/* Never destroyed: framework threads and workers may run while the process ends. */
struct service_client {
    /* What happened to the current handle, and how far we are with it. Dropping the handle resets
     * it. */
    enum due_type {
        nothing,
        down,    /* service down, not acted on yet */
        suspend, /* status 4 is reported, the worker is on its way */
        up,      /* service up, not acted on yet */
        resume,  /* status 6 is reported, the worker is on its way */
    };

    explicit service_client(const service_client_traits& its) : traits(its) {}

    const service_client_traits& traits;

    /* Guards all below; not held during a platform call or a handler. The OS parameters belong to
     * the framework as long as a handle stands. */
    std::mutex mutex;
    std::condition_variable changed;
    service_client_context context{};
    due_type due = nothing;

    /* True during a connection, suspension, resumption or release: one at a time. Only in a turn
     * are statuses reported and handles and service object changed. Callbacks of the framework
     * never wait for a turn. */
    bool in_turn = false;

    int users = 0;  /* sends and indications under way */
    int ending = 0; /* callers that wait to end the client: no more attempts to connect */

    /* While qmi_client_init_instance runs, the framework may already call us with the new handle.
     * So any handle is ours then, except the last one, whose callbacks may come late. */
    bool making_handle = false;
    qmi_client_type last_client_handle = nullptr;
};

/* The instances' functions; see service_client.h. */
qmi_idl_service_object_type service_client_start(service_client& c);
int service_client_init(service_client& c, client_indication_handler handler);
int service_client_init_client_handles(service_client& c);
int service_client_release(service_client& c);
void service_client_set_operational_status_callback(service_client& c,
                                                    client_operational_status_cb cb);
int service_client_send_msg_sync(service_client& c, uint32_t msg_id, void* req, uint32_t req_len,
                                 void* resp, uint32_t resp_len);
/* function: the instance's own name, of static storage. */
void service_client_unsol_ind(service_client& c, const char* function, qmi_client_type handle,
                              uint32_t msg_id, void* buf, uint32_t len);
void service_client_service_down(service_client& c, qmi_client_type handle, int32_t error);
void service_client_service_up(service_client& c, int32_t event);
/* The body of both workers: finishes what is due. */
void service_client_work(service_client& c);

/* Calls a handler of the client's user. service_client_handler_runs_here is true meanwhile. */
inline thread_local uint32_t g_client_handlers_here; /* a bit for each kind */

template <typename Call> void run_client_handler(const service_client& c, Call call) {
    const uint32_t outer = g_client_handlers_here;
    g_client_handlers_here |= 1U << c.traits.kind;
    call();
    g_client_handlers_here = outer;
}

/* PREFIX_NAME: an instance's function as it shows in the log. */
struct client_function_name {
    client_function_name(const service_client& c, const char* name);
    char shown[64];
};

#define CLIENT_LOG_AT(level, client, name, text, ...)                                              \
    ravex_log_line(level, client_function_name(client, name).shown, text __VA_OPT__(, ) __VA_ARGS__)
#define CLIENT_LOG(client, name, text, ...)                                                        \
    CLIENT_LOG_AT(RAVEX_LOG_DEFAULT, client, name, text __VA_OPT__(, ) __VA_ARGS__)
