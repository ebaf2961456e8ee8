// SPDX-License-Identifier: Apache-2.0
/* Another implementation of the platform, as far as a recorder could lean on the simulated phone:
 * handles are addresses, callbacks come on the caller's own thread and before a call has returned,
 * contexts and buffers are the library's own, and several answers come at once. One library under
 * all of the platform's names. */
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <thread>

#include "android_log.h"
#include "cutils_properties.h"
#include "diag.h"
#include "qmi_cci.h"

namespace {

struct Client {
    qmi_idl_service_object_type service;
    qmi_client_ind_cb ind_cb;
    void* ind_data;
};

diag_packet_cb g_packet_cb;
void* g_packet_context;

qmi_client_type made(qmi_idl_service_object_type service, qmi_client_ind_cb cb, void* data,
                     qmi_client_os_params* params) {
    if (params != nullptr) {
        std::memset(params, 0, sizeof *params);
        pthread_mutex_init(&params->mutex, nullptr);
        pthread_cond_init(&params->cond, nullptr);
    }
    return reinterpret_cast<qmi_client_type>(new Client{service, cb, data});
}

} // namespace

extern "C" {

qmi_idl_service_object nas_qmi_idl_service_object_v01{6, 1, 3, 99, {}, {}, nullptr, 378, nullptr};
qmi_idl_service_object uim_qmi_idl_service_object_v01{6, 1, 11, 99, {}, {}, nullptr, 102, nullptr};
qmi_idl_service_object sar_qmi_idl_service_object_v01{6, 1, 17, 99, {}, {}, nullptr, 14, nullptr};
qmi_idl_service_object vs_qmi_idl_service_object_v01{6, 1, 777, 99, {}, {}, nullptr, 2, nullptr};

int qmi_client_notifier_init(qmi_idl_service_object_type service, qmi_client_os_params* params,
                             qmi_client_type* notifier) {
    *notifier = made(service, nullptr, nullptr, params);
    return QMI_NO_ERR;
}

int qmi_client_get_service_list(qmi_idl_service_object_type, qmi_service_info* array,
                                unsigned* entries, unsigned* services) {
    *services = 3;
    for (unsigned i = 0; array != nullptr && i < 3 && i < *entries; ++i)
        array[i].info[0] = 0xA0 + i;
    return QMI_NO_ERR;
}

int qmi_client_init(qmi_service_info*, qmi_idl_service_object_type service, qmi_client_ind_cb cb,
                    void* data, qmi_client_os_params* params, qmi_client_type* client) {
    *client = made(service, cb, data, params);
    return QMI_NO_ERR;
}

int qmi_client_init_instance(qmi_idl_service_object_type service, qmi_service_instance,
                             qmi_client_ind_cb cb, void* data, qmi_client_os_params* params,
                             uint32_t, qmi_client_type* client) {
    *client = made(service, cb, data, params);
    return QMI_NO_ERR;
}

int qmi_client_send_msg_sync(qmi_client_type handle, unsigned msg_id, void* req, unsigned req_len,
                             void* resp, unsigned resp_len, unsigned) {
    const auto* const client = reinterpret_cast<const Client*>(handle);
    unsigned char tlvs[] = {0x01, 4, 0, 9, 0, 0, 0};
    if (client->ind_cb != nullptr) /* on the caller's thread, in the middle of its call */
        client->ind_cb(handle, 3, tlvs, sizeof tlvs, client->ind_data);
    std::memset(resp, 0, resp_len);
    std::memcpy(resp, req, req_len < 4 ? req_len : 0);
    auto* const bytes = static_cast<unsigned char*>(resp);
    if (resp_len == 524) { /* the vendor's: 40 bytes, some of them behind the request's */
        bytes[4] = 40;
        bytes[8] = 1;
        std::memcpy(bytes + 9 + 20, "other platform", 14);
        bytes[9 + 4] = bytes[9 + 8] = 14;
    }
    errno = 77;
    return msg_id == 0x65 ? QMI_TIMEOUT_ERR : QMI_NO_ERR;
}

int qmi_client_message_decode(qmi_client_type, qmi_idl_type_of_message_type, unsigned, const void*,
                              unsigned, void* dst, unsigned dst_len) {
    std::memset(dst, 0x21, dst_len);
    return QMI_NO_ERR;
}

int qmi_client_register_error_cb(qmi_client_type, qmi_client_error_cb, void*) { return QMI_NO_ERR; }

int qmi_client_register_notify_cb(qmi_client_type handle, qmi_client_notify_cb cb, void* data) {
    cb(handle, reinterpret_cast<Client*>(handle)->service, QMI_CLIENT_SERVICE_COUNT_INC, data);
    return QMI_NO_ERR;
}

int qmi_client_release(qmi_client_type handle) {
    delete reinterpret_cast<Client*>(handle);
    return QMI_NO_ERR;
}

void qmi_cci_os_signal_wait(qmi_client_os_params* params, unsigned) { params->timed_out = 1; }

int32_t qmi_idl_get_message_c_struct_len(qmi_idl_service_object_type, qmi_idl_type_of_message_type,
                                         uint16_t, uint32_t* len) {
    *len = 16;
    return 0;
}

bool Diag_LSM_Init(unsigned char*) { return true; }
bool Diag_LSM_DeInit(void) { return true; }
void diag_switch_logging(int, char*) {}
int diag_register_callback(diag_packet_cb cb, void* context) {
    g_packet_cb = cb;
    g_packet_context = context;
    return 0;
}
int diag_register_remote_callback(diag_packet_cb, int, void*) { return 0; }
int diag_has_remote_device(uint16_t* mask) {
    *mask = 5;
    return 0;
}
int diag_callback_send_data(int, unsigned char* buf, int len) {
    unsigned char answer[300] = {};
    for (int i = 0; i < 300; ++i)
        answer[i] = static_cast<unsigned char>(buf[i % len] + i);
    g_packet_cb(answer, 300, g_packet_context);
    std::thread([answer]() mutable { g_packet_cb(answer, 1, nullptr); }).join();
    return 0;
}
int diag_register_dci_client(int* id, uint16_t* peripherals, int, void*) {
    *id = 4711;
    *peripherals = 0x7F;
    return DIAG_DCI_NO_ERROR;
}
int diag_register_dci_signal_data(int, int) { return DIAG_DCI_NO_ERROR; }
int diag_get_dci_support_list_proc(int, uint16_t* peripherals) {
    *peripherals = 1;
    return DIAG_DCI_NO_ERROR;
}
static diag_dci_stream_cb g_log_cb;
int diag_register_dci_stream_proc(int, diag_dci_stream_cb log_cb, diag_dci_stream_cb) {
    g_log_cb = log_cb;
    return DIAG_DCI_NO_ERROR;
}
int diag_send_dci_async_req(int, unsigned char*, int, unsigned char* rsp, int,
                            diag_dci_response_cb cb, void* context) {
    unsigned char log[] = {1, 2, 3};
    g_log_cb(log, sizeof log);
    rsp[0] = 0x42;
    cb(rsp, 1, context);
    return DIAG_DCI_NO_ERROR;
}
int diag_release_dci_client(int* id) {
    *id = 0;
    errno = 5;
    return 1002;
}

int property_get(const char* key, char* value, const char*) {
    std::strcpy(value, std::strstr(key, "adb_log") != nullptr ? "1" : "\xFF\"\n");
    return static_cast<int>(std::strlen(value));
}
int property_set(const char*, const char*) { return -1; }
int __android_log_print(int, const char*, const char*, ...) { return 12; }

} // extern "C"
