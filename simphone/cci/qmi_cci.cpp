/* The QMI client framework's calls. */
#include "qmi_cci.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "framework.h"
#include "idl_codec.h"
#include "phone/faults.h"
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
        return static_cast<int>(fault->number_or(QMI_INTERNAL_ERR));
    case Fault::Kind::timeout:
        return QMI_TIMEOUT_ERR;
    case Fault::Kind::gone:
        return QMI_SERVICE_ERR;
    case Fault::Kind::late:
        std::this_thread::sleep_for(std::chrono::milliseconds(fault->number()));
        return QMI_NO_ERR;
    case Fault::Kind::restart:
        restart_modem();
        return QMI_NO_ERR;
    default:
        return QMI_INTERNAL_ERR;
    }
}

int begin_call(const char* call, qmi_idl_service_object_type service) {
    return call_result(platform_call(call, what(service)));
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

std::string message_name(const Client& client, unsigned msg_id) {
    char text[64];
    std::snprintf(text, sizeof text, "%s.0x%02x", what(client.service).c_str(), msg_id);
    return text;
}

/* The message as it crosses: header (control flag, transaction, message id, length) and TLVs. */
void log_message(const Client& client, uint8_t control_flag, uint16_t transaction, unsigned msg_id,
                 ByteView tlvs) {
    Bytes message;
    put_le(message, control_flag, 1);
    put_le(message, transaction, 2);
    put_le(message, msg_id, 2);
    put_le(message, tlvs.size(), 2);
    message.insert(message.end(), tlvs.begin(), tlvs.end());
    log_line("qmi",
             what(client.service) + (control_flag == 0 ? " req " : " rsp ") + to_hex(message));
}

constexpr size_t lengthy_by = 64;

/* What a fault makes of an answer. */
void spoil(const Fault& fault, Bytes& answer) {
    switch (fault.kind) {
    case Fault::Kind::empty:
        answer.clear();
        break;
    case Fault::Kind::cut:
        answer.resize(answer.size() / 2);
        break;
    case Fault::Kind::lengthy:
        /* The last TLV's value grows, with a length to match. */
        for (size_t at = 0, next = 0; next < answer.size(); at = next) {
            next = at + 3 + get_le(ByteView(answer).subspan(at + 1), 2);
            if (next >= answer.size()) {
                set_le(answer, at + 1, next - at - 3 + lengthy_by, 2);
                answer.resize(answer.size() + lengthy_by, 0xA5);
                break;
            }
        }
        break;
    case Fault::Kind::garbage:
        for (size_t i = 0; i < answer.size(); ++i)
            answer[i] = static_cast<uint8_t>(i * 167 + 13);
        break;
    default:
        break;
    }
}

} // namespace

qmi_client_error_type qmi_client_notifier_init(qmi_idl_service_object_type service,
                                               qmi_client_os_params* os_params,
                                               qmi_client_type* notifier) {
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
}

qmi_client_error_type qmi_client_get_service_list(qmi_idl_service_object_type service,
                                                  qmi_service_info* array,
                                                  unsigned int* num_entries,
                                                  unsigned int* num_services) {
    const std::optional<Fault> fault = platform_call("qmi_client_get_service_list", what(service));
    if (fault && fault->kind == Fault::Kind::lengthy && num_services != nullptr) {
        /* More instances than anybody has room for. */
        *num_services = 1000;
        if (num_entries != nullptr)
            *num_entries = 1000;
        return QMI_NO_ERR;
    }
    if (const int failed = call_result(fault))
        return failed;
    if (service == nullptr || num_services == nullptr)
        return QMI_CLIENT_PARAM_ERR;
    *num_services = service_up(service->service_id) ? 1 : 0;
    if (*num_services == 0)
        return QMI_SERVICE_ERR;
    if (array != nullptr && num_entries != nullptr) {
        *num_entries = std::min(*num_entries, *num_services);
        if (*num_entries > 0) {
            *array = {};
            array->info[0] = service->service_id;
            array->info[1] = 1; /* instance */
        }
    }
    return QMI_NO_ERR;
}

qmi_client_error_type qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                                      qmi_client_ind_cb ind_cb, void* ind_cb_data,
                                      qmi_client_os_params* os_params, qmi_client_type* client) {
    if (const int failed = begin_call("qmi_client_init", service))
        return failed;
    if (info == nullptr)
        return QMI_CLIENT_PARAM_ERR;
    return make_client(service, ind_cb, ind_cb_data, os_params, client);
}

qmi_client_error_type qmi_client_init_instance(qmi_idl_service_object_type service,
                                               qmi_service_instance, qmi_client_ind_cb ind_cb,
                                               void* ind_cb_data, qmi_client_os_params* os_params,
                                               uint32_t timeout_ms, qmi_client_type* client) {
    if (const int failed = begin_call("qmi_client_init_instance", service))
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
}

qmi_client_error_type qmi_client_send_msg_sync(qmi_client_type handle, unsigned int msg_id,
                                               void* req, unsigned int req_len, void* resp,
                                               unsigned int resp_len, unsigned int timeout_ms) {
    const std::shared_ptr<Client> client = Framework::instance().find(handle);
    if (client == nullptr || client->notifier) {
        platform_call("qmi_client_send_msg_sync", "none");
        return QMI_CLIENT_INVALID_CLIENT;
    }
    const std::optional<Fault> fault =
        platform_call("qmi_client_send_msg_sync", message_name(*client, msg_id));
    const bool answered = fault && fault->kind == Fault::Kind::reply;
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
    uint16_t transaction = 0;
    {
        /* Not longer than the modem has the request: an indication that is delivered below may
         * make its handler send one more. */
        const std::lock_guard exchange(client->exchange);
        const Lock lock;
        if (!service_up(client->service->service_id) || client->born != restart_count())
            return QMI_SERVICE_ERR;
        transaction = ++client->transaction;
        log_message(*client, 0, transaction, msg_id, *request);
        if (answered)
            answer = from_hex(fault->argument);
        else
            answer = client->modem_side->handle(static_cast<uint16_t>(msg_id), TlvReader(*request));
        if (fault && fault->kind == Fault::Kind::restart) {
            restart_modem();
            return QMI_SERVICE_ERR;
        }
    }
    if (fault)
        spoil(*fault, answer);
    if (fault && fault->kind == Fault::Kind::late) {
        const long late = std::max(0L, fault->number());
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min<long>(late, timeout_ms)));
        if (late >= static_cast<long>(timeout_ms))
            return QMI_TIMEOUT_ERR;
    }
    if (Framework::instance().indications_under_way())
        Framework::instance().deliver_waiting();
    log_message(*client, 2, transaction, msg_id, answer);
    return decode_message(client->service, QMI_IDL_RESPONSE, msg_id, answer, resp)
               ? QMI_NO_ERR
               : QMI_INTERNAL_ERR;
}

qmi_client_error_type qmi_client_message_decode(qmi_client_type handle,
                                                qmi_idl_type_of_message_type type,
                                                unsigned int msg_id, const void* src,
                                                unsigned int src_len, void* dst,
                                                unsigned int dst_len) {
    const std::shared_ptr<Client> client = Framework::instance().find(handle);
    if (client == nullptr)
        return QMI_CLIENT_INVALID_CLIENT;
    if (const int failed =
            call_result(platform_call("qmi_client_message_decode", message_name(*client, msg_id))))
        return failed;
    const std::optional<uint32_t> size = message_struct_len(client->service, type, msg_id);
    if (!size || *size != dst_len || dst == nullptr || (src == nullptr && src_len > 0))
        return QMI_CLIENT_PARAM_ERR;
    const ByteView tlvs(static_cast<const uint8_t*>(src), src_len);
    return decode_message(client->service, type, msg_id, tlvs, dst) ? QMI_NO_ERR : QMI_INTERNAL_ERR;
}

qmi_client_error_type qmi_client_register_error_cb(qmi_client_type handle, qmi_client_error_cb cb,
                                                   void* data) {
    const std::shared_ptr<Client> client = Framework::instance().find(handle);
    if (const int failed = begin_call("qmi_client_register_error_cb",
                                      client != nullptr ? client->service : nullptr))
        return failed;
    const bool changed = Framework::instance().change(handle, [&](Client& c) {
        c.error_cb = cb;
        c.error_cb_data = data;
    });
    return changed ? QMI_NO_ERR : QMI_CLIENT_INVALID_CLIENT;
}

qmi_client_error_type qmi_client_register_notify_cb(qmi_client_type handle, qmi_client_notify_cb cb,
                                                    void* data) {
    const std::shared_ptr<Client> client = Framework::instance().find(handle);
    if (const int failed = begin_call("qmi_client_register_notify_cb",
                                      client != nullptr ? client->service : nullptr))
        return failed;
    const bool changed = Framework::instance().change(handle, [&](Client& c) {
        c.notify_cb = cb;
        c.notify_cb_data = data;
        c.told_up = false;
    });
    return changed ? QMI_NO_ERR : QMI_CLIENT_INVALID_CLIENT;
}

qmi_client_error_type qmi_client_release(qmi_client_type handle) {
    const std::shared_ptr<Client> client = Framework::instance().find(handle);
    const int failed =
        begin_call("qmi_client_release", client != nullptr ? client->service : nullptr);
    /* Released even when the call is made to fail: a handle is never of use afterwards. */
    if (!Framework::instance().remove(handle))
        return QMI_CLIENT_INVALID_CLIENT;
    return failed;
}

void qmi_cci_os_signal_wait(qmi_client_os_params* params, unsigned int timeout_ms) {
    if (call_result(platform_call("qmi_cci_os_signal_wait")) != QMI_NO_ERR)
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
