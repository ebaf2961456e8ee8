// SPDX-License-Identifier: Apache-2.0
/* The four instances of the service client. */
#include "immortal.h"
#include "modem_api.h"
#include "nas_client.h"
#include "service_client_core.h"
#include "service_objects.h"
#include "vs_client.h"

/* An instance: its prefix and kind, the service's accessor and minor version, what follows each
 * connection attempt and a connection, and the dispatcher of its indications. */
#define DEFINE_SERVICE_CLIENT(PREFIX, KIND, ACCESSOR, MINOR, AFTER_ATTEMPT, AFTER_CONNECT,         \
                              INDICATION)                                                          \
    static constexpr service_client_traits PREFIX##_traits = {                                     \
        #PREFIX,                                                                                   \
        KIND,                                                                                      \
        ACCESSOR,                                                                                  \
        MINOR,                                                                                     \
        AFTER_ATTEMPT,                                                                             \
        AFTER_CONNECT,                                                                             \
        INDICATION,                                                                                \
        PREFIX##_client_unsol_ind_cb,                                                              \
        PREFIX##_client_service_down_event,                                                        \
        PREFIX##_client_service_up_event,                                                          \
        PREFIX##_client_command_cb,                                                                \
    };                                                                                             \
    static service_client& PREFIX##_client() {                                                     \
        static immortal<service_client> client(PREFIX##_traits);                                   \
        return client.value;                                                                       \
    }                                                                                              \
    qmi_idl_service_object_type PREFIX##_init() {                                                  \
        return service_client_start(PREFIX##_client());                                            \
    }                                                                                              \
    int PREFIX##_client_init(client_indication_handler handler) {                                  \
        return service_client_init(PREFIX##_client(), handler);                                    \
    }                                                                                              \
    int PREFIX##_client_init_client_handles() {                                                    \
        return service_client_init_client_handles(PREFIX##_client());                              \
    }                                                                                              \
    int PREFIX##_client_release() { return service_client_release(PREFIX##_client()); }            \
    void PREFIX##_client_set_operational_status_callback(client_operational_status_cb cb) {        \
        service_client_set_operational_status_callback(PREFIX##_client(), cb);                     \
    }                                                                                              \
    void PREFIX##_client_unsol_ind_cb(qmi_client_type handle, unsigned int msg_id, void* buf,      \
                                      unsigned int len, void*) {                                   \
        service_client_unsol_ind(PREFIX##_client(), __func__, handle, msg_id, buf, len);           \
    }                                                                                              \
    void PREFIX##_client_service_down_event(qmi_client_type handle, qmi_client_error_type error,   \
                                            void*) {                                               \
        service_client_service_down(PREFIX##_client(), handle, error);                             \
    }                                                                                              \
    void PREFIX##_client_service_up_event(qmi_client_type, qmi_idl_service_object_type,            \
                                          qmi_client_notify_event_type event, void*) {             \
        service_client_service_up(PREFIX##_client(), event);                                       \
    }                                                                                              \
    void PREFIX##_client_command_cb(qmi_client_type, unsigned int msg_id, void* resp,              \
                                    unsigned int resp_len, void* resp_cb_data,                     \
                                    qmi_client_error_type transport_error) {                       \
        modem_api_process_response(msg_id, resp, resp_len,                                         \
                                   static_cast<modem_api_completion*>(resp_cb_data),               \
                                   transport_error);                                               \
    }                                                                                              \
    void PREFIX##_client_release_qmi_client_thread() { service_client_work(PREFIX##_client()); }   \
    void PREFIX##_client_resume_qmi_client_thread() { service_client_work(PREFIX##_client()); }

#define DEFINE_SEND_MSG_SYNC(PREFIX)                                                               \
    int PREFIX##_client_send_msg_sync(uint32_t msg_id, void* req, uint32_t req_len, void* resp,    \
                                      uint32_t resp_len) {                                         \
        return service_client_send_msg_sync(PREFIX##_client(), msg_id, req, req_len, resp,         \
                                            resp_len);                                             \
    }

// clang-format off
DEFINE_SERVICE_CLIENT(vs, CLIENT_KIND_VS, vs_get_service_object_internal_v01, ORVIK_VS_IDL_MINOR,
                      nullptr, nullptr, vs_client_dispatch_indication)
DEFINE_SERVICE_CLIENT(sar, CLIENT_KIND_SAR, sar_get_service_object_internal_v01, ORVIK_SAR_IDL_MINOR,
                      nullptr, nullptr, nullptr)
DEFINE_SERVICE_CLIENT(nas_0, CLIENT_KIND_NAS_0, nas_get_service_object_internal_v01, ORVIK_NAS_IDL_MINOR,
                      nas_0_client_bind, nas_0_client_set_networking_indications, nullptr)
DEFINE_SERVICE_CLIENT(nas_1, CLIENT_KIND_NAS_1, nas_get_service_object_internal_v01, ORVIK_NAS_IDL_MINOR,
                      nas_1_client_bind, nas_1_client_set_networking_indications, nullptr)
// clang-format on

DEFINE_SEND_MSG_SYNC(vs)
DEFINE_SEND_MSG_SYNC(nas_0)
DEFINE_SEND_MSG_SYNC(nas_1)
