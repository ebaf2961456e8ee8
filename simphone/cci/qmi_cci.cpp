// SPDX-License-Identifier: Apache-2.0
/* The QMI client framework's calls. */
#include "qmi_cci.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "exchange.h"
#include "framework.h"
#include "idl_codec.h"
#include "phone/faults.h"
#include "phone/guarded.h"
#include "phone/lock.h"
#include "phone/phone.h"

using namespace simphone;

namespace {

std::string what(qmi_idl_service_object_type service) {
    return service != nullptr ? service_name(service->service_id) : "none";
}

/* The result that a fault gives a call that has no answer to spoil; 0 when the call goes on. */
int call_result(const std::optional<Fault>& fault) {
    if (!fault)
        return QMI_NO_ERR;
    switch (fault->kind) {
    case Fault::Kind::error:
        return fault->result_or(QMI_INTERNAL_ERR);
    case Fault::Kind::timeout:
        return QMI_TIMEOUT_ERR;
    case Fault::Kind::gone:
        return QMI_SERVICE_ERR;
    case Fault::Kind::late:
        std::this_thread::sleep_for(std::chrono::milliseconds(fault->late_ms()));
        return QMI_NO_ERR;
    case Fault::Kind::restart:
        restart_modem();
        return QMI_NO_ERR;
    default:
        return QMI_INTERNAL_ERR;
    }
}

int begin_call(const char* call, qmi_idl_service_object_type service,
               std::optional<int64_t> timeout_ms = std::nullopt) {
    return call_result(platform_call(call, what(service), timeout_ms));
}

/* A call's result, whatever happens in it. */
template <typename Call> int result_of(Call call) {
    return guarded(static_cast<int>(QMI_CLIENT_ALLOC_FAILURE), call);
}

void init_os_params(qmi_client_os_params* params) {
    if (params == nullptr)
        return;
    std::memset(params, 0, sizeof *params);
    pthread_condattr_init(&params->attr);
    pthread_condattr_setclock(&params->attr, CLOCK_MONOTONIC);
    pthread_cond_init(&params->cond, &params->attr);
    pthread_mutex_init(&params->mutex, nullptr);
}

int make_client(qmi_idl_service_object_type service, qmi_client_ind_cb ind_cb, void* ind_cb_data,
                qmi_client_os_params* os_params, qmi_client_type* out) {
    if (service == nullptr || out == nullptr)
        return QMI_CLIENT_PARAM_ERR;
    /* A restart comes before the client or after it, never in between: a client that was made for
     * a modem that is going down must be told so. */
    const Lock lock;
    if (lock.error() == ETIMEDOUT)
        return QMI_TIMEOUT_ERR;
    if (!service_up(service->service_id))
        return QMI_SERVICE_ERR;
    const auto client = std::make_shared<Client>();
    client->service = service;
    client->os_params = os_params;
    client->ind_cb = ind_cb;
    client->ind_cb_data = ind_cb_data;
    client->modem_side = make_service(service->service_id);
    client->born = restart_count();
    init_os_params(os_params);
    *out = Framework::instance().add(client);
    return QMI_NO_ERR;
}

/* Instances that a "long" service list claims. */
constexpr unsigned lengthy_services = 1000;

} // namespace

qmi_client_error_type qmi_client_notifier_init(qmi_idl_service_object_type service,
                                               qmi_client_os_params* os_params,
                                               qmi_client_type* notifier) {
    return result_of([=]() -> int {
        if (const int failed = begin_call("qmi_client_notifier_init", service))
            return failed;
        if (service == nullptr || notifier == nullptr)
            return QMI_CLIENT_PARAM_ERR;
        const auto client = std::make_shared<Client>();
        client->service = service;
        client->os_params = os_params;
        client->notifier = true;
        init_os_params(os_params);
        if (os_params != nullptr && service_up(service->service_id))
            os_params->sig_set = 1;
        *notifier = Framework::instance().add(client);
        return QMI_NO_ERR;
    });
}

qmi_client_error_type qmi_client_get_service_list(qmi_idl_service_object_type service,
                                                  qmi_service_info* array,
                                                  unsigned int* num_entries,
                                                  unsigned int* num_services) {
    return result_of([=]() -> int {
        const std::optional<Fault> fault =
            platform_call("qmi_client_get_service_list", what(service));
        const bool lengthy = fault && fault->kind == Fault::Kind::lengthy;
        if (const int failed = lengthy ? 0 : call_result(fault))
            return failed;
        if (service == nullptr || num_services == nullptr)
            return QMI_CLIENT_PARAM_ERR;
        const unsigned up = service_up(service->service_id) ? 1 : 0;
        *num_services = lengthy ? lengthy_services : up;
        if (*num_services == 0)
            return QMI_SERVICE_ERR;
        if (array == nullptr || num_entries == nullptr)
            return QMI_NO_ERR;
        const unsigned entries = std::min(*num_entries, *num_services);
        for (unsigned i = 0; i < entries; ++i)
            array[i] = {{service->service_id, i + 1}}; /* service, instance */
        /* A long list claims more than there is room for. */
        *num_entries = lengthy ? *num_services : entries;
        return QMI_NO_ERR;
    });
}

qmi_client_error_type qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                                      qmi_client_ind_cb ind_cb, void* ind_cb_data,
                                      qmi_client_os_params* os_params, qmi_client_type* client) {
    return result_of([=]() -> int {
        if (const int failed = begin_call("qmi_client_init", service))
            return failed;
        if (info == nullptr)
            return QMI_CLIENT_PARAM_ERR;
        return make_client(service, ind_cb, ind_cb_data, os_params, client);
    });
}

qmi_client_error_type qmi_client_init_instance(qmi_idl_service_object_type service,
                                               qmi_service_instance, qmi_client_ind_cb ind_cb,
                                               void* ind_cb_data, qmi_client_os_params* os_params,
                                               uint32_t timeout_ms, qmi_client_type* client) {
    return result_of([=]() -> int {
        if (const int failed = begin_call("qmi_client_init_instance", service, timeout_ms))
            return failed;
        const int64_t until = now_ms() + timeout_ms;
        for (;;) {
            const int result = make_client(service, ind_cb, ind_cb_data, os_params, client);
            if (result != QMI_SERVICE_ERR)
                return result;
            if (now_ms() >= until)
                return QMI_TIMEOUT_ERR;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
}

qmi_client_error_type qmi_client_send_msg_sync(qmi_client_type handle, unsigned int msg_id,
                                               void* req, unsigned int req_len, void* resp,
                                               unsigned int resp_len, unsigned int timeout_ms) {
    return result_of([=]() -> int {
        const std::shared_ptr<Client> client = Framework::instance().find(handle);
        if (client == nullptr || client->notifier) {
            platform_call("qmi_client_send_msg_sync", "none", timeout_ms);
            return QMI_CLIENT_INVALID_CLIENT;
        }
        const std::optional<Fault> fault =
            platform_call("qmi_client_send_msg_sync", message_name(*client, msg_id), timeout_ms);
        /* These need no answer to spoil. */
        if (fault && (fault->kind == Fault::Kind::error || fault->kind == Fault::Kind::gone ||
                      fault->kind == Fault::Kind::timeout))
            if (const int failed = call_result(fault))
                return failed;

        const std::optional<uint32_t> req_size =
            message_struct_len(client->service, QMI_IDL_REQUEST, msg_id);
        const std::optional<uint32_t> resp_size =
            message_struct_len(client->service, QMI_IDL_RESPONSE, msg_id);
        if (!req_size || !resp_size || *req_size != req_len || *resp_size != resp_len ||
            (req == nullptr && req_len > 0) || resp == nullptr)
            return QMI_CLIENT_PARAM_ERR;
        const std::optional<Bytes> request =
            encode_message(client->service, QMI_IDL_REQUEST, msg_id, req);
        if (!request)
            return QMI_CLIENT_PARAM_ERR;
        Bytes answer;
        if (const int failed = exchange(*client, static_cast<uint16_t>(msg_id), *request,
                                        timeout_ms, fault, answer))
            return failed;
        return decode_message(client->service, QMI_IDL_RESPONSE, msg_id, answer, resp);
    });
}

qmi_client_error_type qmi_client_message_decode(qmi_client_type handle,
                                                qmi_idl_type_of_message_type type,
                                                unsigned int msg_id, const void* src,
                                                unsigned int src_len, void* dst,
                                                unsigned int dst_len) {
    return result_of([=]() -> int {
        const std::shared_ptr<Client> client = Framework::instance().find(handle);
        if (client == nullptr)
            return QMI_CLIENT_INVALID_CLIENT;
        if (const int failed = call_result(
                platform_call("qmi_client_message_decode", message_name(*client, msg_id))))
            return failed;
        const std::optional<uint32_t> size = message_struct_len(client->service, type, msg_id);
        if (!size || *size != dst_len || dst == nullptr || (src == nullptr && src_len > 0))
            return QMI_CLIENT_PARAM_ERR;
        const ByteView tlvs(static_cast<const uint8_t*>(src), src_len);
        return decode_message(client->service, type, msg_id, tlvs, dst);
    });
}

/* Both registrations: the call is begun, then the client gets its callback. */
template <typename Change>
static int register_callback(const char* call, qmi_client_type handle, Change change) {
    return result_of([&]() -> int {
        const std::shared_ptr<Client> client = Framework::instance().find(handle);
        if (const int failed = begin_call(call, client != nullptr ? client->service : nullptr))
            return failed;
        return Framework::instance().change(handle, change) ? QMI_NO_ERR
                                                            : QMI_CLIENT_INVALID_CLIENT;
    });
}

qmi_client_error_type qmi_client_register_error_cb(qmi_client_type handle, qmi_client_error_cb cb,
                                                   void* data) {
    return register_callback("qmi_client_register_error_cb", handle, [=](Client& client) {
        client.error_cb = cb;
        client.error_cb_data = data;
    });
}

qmi_client_error_type qmi_client_register_notify_cb(qmi_client_type handle, qmi_client_notify_cb cb,
                                                    void* data) {
    return register_callback("qmi_client_register_notify_cb", handle, [=](Client& client) {
        client.notify_cb = cb;
        client.notify_cb_data = data;
        client.reported_up = false;
    });
}

qmi_client_error_type qmi_client_release(qmi_client_type handle) {
    const int failed = result_of([=] {
        const std::shared_ptr<Client> client = Framework::instance().find(handle);
        return begin_call("qmi_client_release", client != nullptr ? client->service : nullptr);
    });
    /* Released even when the call is made to fail: a handle is never of use afterwards. */
    if (!Framework::instance().remove(handle))
        return QMI_CLIENT_INVALID_CLIENT;
    return failed;
}

void qmi_cci_os_signal_wait(qmi_client_os_params* params, unsigned int timeout_ms) {
    if (result_of([=] {
            return call_result(platform_call("qmi_cci_os_signal_wait", "", timeout_ms));
        }) != QMI_NO_ERR)
        return;
    if (params == nullptr)
        return;
    struct timespec until {};
    ::clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += timeout_ms / 1000;
    until.tv_nsec += static_cast<long>(timeout_ms % 1000) * 1000000;
    if (until.tv_nsec >= 1000000000) {
        until.tv_nsec -= 1000000000;
        ++until.tv_sec;
    }
    pthread_mutex_lock(&params->mutex);
    params->timed_out = 0;
    while (params->sig_set == 0 && params->timed_out == 0)
        if (pthread_cond_timedwait(&params->cond, &params->mutex, &until) != 0)
            params->timed_out = 1;
    pthread_mutex_unlock(&params->mutex);
}
