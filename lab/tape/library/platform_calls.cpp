// SPDX-License-Identifier: Apache-2.0
/* Every function that kvt imports from the platform, one wrapper each. Recorder and replayer are
 * both made of this source: what a call's inputs and outputs are called is written once, and a
 * replayed call is compared with a recorded one name by name. What a Call does with them is told in
 * each library's call.h. Where there is an object (a client, a service, a property, a processor),
 * it is the first input. */
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "android_log.h"
#include "call.h"
#include "cutils_properties.h"
#include "diag.h"
#include "formatted.h"
#include "qmi_cci.h"
#include "symbols.h"

/* The next definition of the function that this stands in: the platform's own. */
#define PLATFORM(function) NEXT_DEFINITION(function)

namespace {

constexpr int no_entries = -1;
constexpr unsigned max_listed_services = 64;

/* Numbers that the platform's own failures of these calls do not share. */
constexpr int diag_refused = -1;
constexpr int not_matched = -1;

} // namespace

extern "C" {

/* ==== QMI client framework ==== */

qmi_client_error_type qmi_client_notifier_init(qmi_idl_service_object_type service,
                                               qmi_client_os_params* os_params,
                                               qmi_client_type* notifier) {
    Call call("qmi_client_notifier_init");
    call.in_service("service", service);
    call.out_handle("notifier", notifier, os_params);
    return call.make(QMI_CLIENT_TRANSPORT_ERR, [&] {
        return PLATFORM(qmi_client_notifier_init)(service, os_params, notifier);
    });
}

qmi_client_error_type qmi_client_get_service_list(qmi_idl_service_object_type service,
                                                  qmi_service_info* array,
                                                  unsigned int* num_entries,
                                                  unsigned int* num_services) {
    Call call("qmi_client_get_service_list");
    call.in_service("service", service);
    const bool listed = array != nullptr && num_entries != nullptr;
    call.in("room", listed ? static_cast<long long>(*num_entries) : no_entries);
    if (listed)
        call.out_bytes("array", array,
                       sizeof *array * (*num_entries < max_listed_services ? *num_entries
                                                                           : max_listed_services));
    call.out("entries", num_entries);
    call.out("services", num_services);
    return call.make(QMI_CLIENT_TRANSPORT_ERR, [&] {
        return PLATFORM(qmi_client_get_service_list)(service, array, num_entries, num_services);
    });
}

qmi_client_error_type qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                                      qmi_client_ind_cb ind_cb, void* ind_cb_data,
                                      qmi_client_os_params* os_params, qmi_client_type* client) {
    Call call("qmi_client_init");
    call.in_service("service", service);
    call.in_bytes("info", info, sizeof *info);
    const qmi_client_ind_cb passed = call.in_callback("callback", ind_cb);
    call.in_pointer("context", ind_cb_data);
    call.out_handle("client", client, os_params);
    return call.make(QMI_CLIENT_TRANSPORT_ERR, [&] {
        return PLATFORM(qmi_client_init)(info, service, passed, ind_cb_data, os_params, client);
    });
}

qmi_client_error_type qmi_client_init_instance(qmi_idl_service_object_type service,
                                               qmi_service_instance instance,
                                               qmi_client_ind_cb ind_cb, void* ind_cb_data,
                                               qmi_client_os_params* os_params, uint32_t timeout_ms,
                                               qmi_client_type* client) {
    Call call("qmi_client_init_instance");
    call.in_service("service", service);
    call.in("instance", instance);
    const qmi_client_ind_cb passed = call.in_callback("callback", ind_cb);
    call.in_pointer("context", ind_cb_data);
    call.in("timeout", timeout_ms);
    call.out_handle("client", client, os_params);
    return call.make(QMI_CLIENT_TRANSPORT_ERR, [&] {
        return PLATFORM(qmi_client_init_instance)(service, instance, passed, ind_cb_data, os_params,
                                                  timeout_ms, client);
    });
}

qmi_client_error_type qmi_client_send_msg_sync(qmi_client_type client, unsigned int msg_id,
                                               void* req, unsigned int req_len, void* resp,
                                               unsigned int resp_len, unsigned int timeout_ms) {
    Call call("qmi_client_send_msg_sync");
    call.in_handle("client", client);
    call.in("msg", msg_id);
    call.in_bytes("req", req, req_len);
    call.in("room", resp_len);
    call.in("timeout", timeout_ms);
    call.out_bytes("resp", resp, resp_len);
    return call.make(QMI_CLIENT_TRANSPORT_ERR, [&] {
        return PLATFORM(qmi_client_send_msg_sync)(client, msg_id, req, req_len, resp, resp_len,
                                                  timeout_ms);
    });
}

qmi_client_error_type qmi_client_message_decode(qmi_client_type client,
                                                qmi_idl_type_of_message_type type,
                                                unsigned int msg_id, const void* src,
                                                unsigned int src_len, void* dst,
                                                unsigned int dst_len) {
    Call call("qmi_client_message_decode");
    call.in_handle("client", client);
    call.in("type", type);
    call.in("msg", msg_id);
    call.in_bytes("src", src, src_len);
    call.in("room", dst_len);
    call.out_bytes("dst", dst, dst_len);
    return call.make(QMI_CLIENT_TRANSPORT_ERR, [&] {
        return PLATFORM(qmi_client_message_decode)(client, type, msg_id, src, src_len, dst,
                                                   dst_len);
    });
}

qmi_client_error_type qmi_client_register_error_cb(qmi_client_type client, qmi_client_error_cb cb,
                                                   void* data) {
    Call call("qmi_client_register_error_cb");
    call.in_handle("client", client);
    const qmi_client_error_cb passed = call.in_callback("callback", cb);
    call.in_pointer("context", data);
    return call.make(QMI_CLIENT_TRANSPORT_ERR,
                     [&] { return PLATFORM(qmi_client_register_error_cb)(client, passed, data); });
}

qmi_client_error_type qmi_client_register_notify_cb(qmi_client_type client, qmi_client_notify_cb cb,
                                                    void* data) {
    Call call("qmi_client_register_notify_cb");
    call.in_handle("client", client);
    const qmi_client_notify_cb passed = call.in_callback("callback", cb);
    call.in_pointer("context", data);
    return call.make(QMI_CLIENT_TRANSPORT_ERR,
                     [&] { return PLATFORM(qmi_client_register_notify_cb)(client, passed, data); });
}

qmi_client_error_type qmi_client_release(qmi_client_type client) {
    Call call("qmi_client_release");
    call.in_handle("client", client);
    return call.make(QMI_CLIENT_TRANSPORT_ERR,
                     [&] { return PLATFORM(qmi_client_release)(client); });
}

void qmi_cci_os_signal_wait(qmi_client_os_params* os_params, unsigned int timeout_ms) {
    Call call("qmi_cci_os_signal_wait");
    call.in_signal("signal", os_params);
    call.in("timeout", timeout_ms);
    call.make(not_matched, [&] {
        PLATFORM(qmi_cci_os_signal_wait)(os_params, timeout_ms);
        return 0;
    });
}

int32_t qmi_idl_get_message_c_struct_len(qmi_idl_service_object_type service,
                                         qmi_idl_type_of_message_type message_type,
                                         uint16_t message_id, uint32_t* len) {
    Call call("qmi_idl_get_message_c_struct_len");
    call.in_service("service", service);
    call.in("type", message_type);
    call.in("msg", message_id);
    call.out("len", len);
    return call.make(not_matched, [&] {
        return PLATFORM(qmi_idl_get_message_c_struct_len)(service, message_type, message_id, len);
    });
}

/* ==== DIAG ==== */

bool Diag_LSM_Init(unsigned char* env) {
    Call call("Diag_LSM_Init");
    return call.make(0, [&] { return PLATFORM(Diag_LSM_Init)(env) ? 1 : 0; }) != 0;
}

bool Diag_LSM_DeInit(void) {
    Call call("Diag_LSM_DeInit");
    return call.make(0, [&] { return PLATFORM(Diag_LSM_DeInit)() ? 1 : 0; }) != 0;
}

void diag_switch_logging(int mode, char* dir) {
    Call call("diag_switch_logging");
    call.in("mode", mode);
    call.in_text("dir", dir);
    call.make(not_matched, [&] {
        PLATFORM(diag_switch_logging)(mode, dir);
        return 0;
    });
}

int diag_register_callback(diag_packet_cb cb, void* context) {
    Call call("diag_register_callback");
    const diag_packet_cb passed = call.in_callback("callback", cb);
    call.in_pointer("context", context);
    return call.make(diag_refused,
                     [&] { return PLATFORM(diag_register_callback)(passed, context); });
}

int diag_register_remote_callback(diag_packet_cb cb, int proc, void* context) {
    Call call("diag_register_remote_callback");
    call.in("proc", proc);
    const diag_packet_cb passed = call.in_callback("callback", cb);
    call.in_pointer("context", context);
    return call.make(diag_refused, [&] {
        return PLATFORM(diag_register_remote_callback)(passed, proc, context);
    });
}

int diag_has_remote_device(uint16_t* remote_mask) {
    Call call("diag_has_remote_device");
    call.out("mask", remote_mask);
    return call.make(diag_refused, [&] { return PLATFORM(diag_has_remote_device)(remote_mask); });
}

int diag_callback_send_data(int proc, unsigned char* buf, int len) {
    Call call("diag_callback_send_data");
    call.in("proc", proc);
    call.in_packet("data", buf, len);
    return call.make(diag_refused,
                     [&] { return PLATFORM(diag_callback_send_data)(proc, buf, len); });
}

int diag_register_dci_client(int* client_id, uint16_t* peripherals, int proc, void* os_params) {
    Call call("diag_register_dci_client");
    call.in("proc", proc);
    call.in("peripherals", peripherals != nullptr ? *peripherals : -1);
    call.out("client", client_id);
    call.out("peripherals", peripherals);
    return call.make(diag_refused, [&] {
        return PLATFORM(diag_register_dci_client)(client_id, peripherals, proc, os_params);
    });
}

int diag_register_dci_signal_data(int client_id, int signal) {
    Call call("diag_register_dci_signal_data");
    call.in("client", client_id);
    call.in("signal", signal);
    return call.make(diag_refused,
                     [&] { return PLATFORM(diag_register_dci_signal_data)(client_id, signal); });
}

int diag_get_dci_support_list_proc(int proc, uint16_t* peripherals) {
    Call call("diag_get_dci_support_list_proc");
    call.in("proc", proc);
    call.out("peripherals", peripherals);
    return call.make(diag_refused,
                     [&] { return PLATFORM(diag_get_dci_support_list_proc)(proc, peripherals); });
}

int diag_register_dci_stream_proc(int client_id, diag_dci_stream_cb log_cb,
                                  diag_dci_stream_cb event_cb) {
    Call call("diag_register_dci_stream_proc");
    call.in("client", client_id);
    const diag_dci_stream_cb log = call.in_callback("log", log_cb);
    const diag_dci_stream_cb event = call.in_callback("event", event_cb);
    return call.make(diag_refused, [&] {
        return PLATFORM(diag_register_dci_stream_proc)(client_id, log, event);
    });
}

int diag_send_dci_async_req(int client_id, unsigned char buf[], int len, unsigned char* rsp,
                            int rsp_len, diag_dci_response_cb cb, void* context) {
    Call call("diag_send_dci_async_req");
    call.in("client", client_id);
    call.in_packet("data", buf, len);
    call.in("room", rsp_len);
    const diag_dci_response_cb passed = call.in_callback("callback", cb);
    call.in_pointer("context", context);
    call.response_area(rsp, rsp_len);
    return call.make(diag_refused, [&] {
        return PLATFORM(diag_send_dci_async_req)(client_id, buf, len, rsp, rsp_len, passed,
                                                 context);
    });
}

int diag_release_dci_client(int* client_id) {
    Call call("diag_release_dci_client");
    call.in("client", client_id != nullptr ? *client_id : -1);
    call.out("client", client_id);
    call.response_area(nullptr, 0);
    return call.make(diag_refused, [&] { return PLATFORM(diag_release_dci_client)(client_id); });
}

/* ==== properties, log, the C library's shell ==== */

int property_get(const char* key, char* value, const char* default_value) {
    Call call("property_get");
    call.in_text("key", key);
    call.in_text("default", default_value);
    call.out_text("value", value, PROPERTY_VALUE_MAX);
    const int length =
        call.make(not_matched, [&] { return PLATFORM(property_get)(key, value, default_value); });
    if (call.matched())
        return length;
    /* As of a property that is not set. */
    std::snprintf(value, PROPERTY_VALUE_MAX, "%s", default_value != nullptr ? default_value : "");
    return static_cast<int>(std::strlen(value));
}

int property_set(const char* key, const char* value) {
    Call call("property_set");
    call.in_text("key", key);
    call.in_text("value", value);
    return call.make(not_matched, [&] { return PLATFORM(property_set)(key, value); });
}

int __android_log_print(int priority, const char* tag, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const Formatted formatted(fmt, args);
    va_end(args);
    const char* const text = formatted.text();
    Call call("__android_log_print");
    call.in_text("text", text);
    call.in("priority", priority);
    call.in_text("tag", tag);
    return call.make(not_matched,
                     [&] { return PLATFORM(__android_log_print)(priority, tag, "%s", text); });
}

int system(const char* command) {
    Call call("system");
    call.in_text("command", command);
    return call.make(not_matched, [&] { return PLATFORM(system)(command); });
}

/* The platform's reader-writer lock: constructor and destructor. Where the phone has none, nothing
 * is done, and nothing is expected. */
using construct_function = void (*)(void*);

void _ZN8qtimutex14QtiSharedMutexC1Ev(void* self) {
    Call call("_ZN8qtimutex14QtiSharedMutexC1Ev");
    call.make(not_matched, [&] {
        const auto next = reinterpret_cast<construct_function>(
            platform_symbol("_ZN8qtimutex14QtiSharedMutexC1Ev"));
        return next != nullptr ? (next(self), 0) : not_matched;
    });
}

void _ZN8qtimutex14QtiSharedMutexD1Ev(void* self) {
    Call call("_ZN8qtimutex14QtiSharedMutexD1Ev");
    call.make(not_matched, [&] {
        const auto next = reinterpret_cast<construct_function>(
            platform_symbol("_ZN8qtimutex14QtiSharedMutexD1Ev"));
        return next != nullptr ? (next(self), 0) : not_matched;
    });
}

} // extern "C"
