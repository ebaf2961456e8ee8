/* The one implementation behind the four service clients; an instance is a row of constants. */
#pragma once

#include <condition_variable>
#include <mutex>

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
    void (*release_worker)();
    void (*resume_worker)();
};

struct service_client_context {
    qmi_idl_service_object_type service_object;
    qmi_client_type client_handle; /* null when not connected */
    qmi_client_os_params os_params;
    qmi_client_type notifier_handle; /* stands only between suspend and resume */
    client_command_cb command_callback;
    client_indication_handler indication_handler;
    client_operational_status_cb operational_status_callback;
    uint32_t connected;
};

/* Never destroyed: framework threads and workers may run while the process ends. */
struct service_client {
    enum phase_type {
        idle,
        connecting,
        connected,
        suspend_due, /* the suspend worker is about to run */
        suspending,
        suspended,
        resume_due,
    };

    explicit service_client(const service_client_traits& its) : traits(its) {}

    const service_client_traits& traits;

    std::mutex mutex; /* guards all below but os_params, which belong to the framework as long as
                       * a handle was made with them, or is being made */
    std::condition_variable changed;
    service_client_context context{};
    phase_type phase = idle;
    bool event_pending = false; /* down while connecting, up while suspending or resume_due */
    uint64_t generation = 0;    /* init and release raise it: what began before must stop */
    int inside = 0;             /* callbacks, workers and calls under way */
    int handle_users = 0;       /* threads that use client_handle right now */
    bool taking_down = false;
    qmi_client_type released_handle = nullptr; /* the last one: its late callbacks are dropped */
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
void service_client_release_worker(service_client& c);
void service_client_resume_worker(service_client& c);

/* PREFIX_NAME: an instance's function as it shows in the log. */
struct client_function_name {
    client_function_name(const service_client& c, const char* name);
    char shown[64];
};

#define CLIENT_LOG_AT(level, client, name, text, ...)                                              \
    ravex_log_line(level, client_function_name(client, name).shown, text __VA_OPT__(, ) __VA_ARGS__)
#define CLIENT_LOG(client, name, text, ...)                                                        \
    CLIENT_LOG_AT(RAVEX_LOG_DEFAULT, client, name, text __VA_OPT__(, ) __VA_ARGS__)

/* The four instances, by kind. */
service_client& service_client_of(uint32_t kind);
