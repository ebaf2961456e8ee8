// SPDX-License-Identifier: Apache-2.0
/* Requests and indications: the users of a client's handle. */
#include "service_client_core.h"
#include "traced_alloc.h"

namespace {

constexpr unsigned send_timeout_ms = 30000;

/* No handle is released before its last user has left. */
void leave(service_client& c) {
    const std::lock_guard lock(c.mutex);
    --c.users;
    c.changed.notify_all();
}

void decode_and_hand_on(service_client& c, const char* function, qmi_client_type handle,
                        qmi_idl_service_object_type service, client_indication_handler handler,
                        uint32_t msg_id, void* buf, uint32_t len) {
    uint32_t size = 0;
    qmi_idl_get_message_c_struct_len(service, QMI_IDL_INDICATION, static_cast<uint16_t>(msg_id),
                                     &size);
    void* const decoded = ravex_malloc_adv(size > 0 ? size : 1, function, __LINE__);
    if (decoded == nullptr)
        return;
    const int error =
        qmi_client_message_decode(handle, QMI_IDL_INDICATION, msg_id, buf, len, decoded, size);
    if (error != QMI_NO_ERR) {
        ravex_log_line(RAVEX_LOG_ERROR, function,
                       "Indication decode failed for msg 0x%x with error %d", msg_id, error);
    } else {
        CLIENT_LOG(c, "client_ind_hdlr", "Handling indication msg 0x%x", msg_id);
        bool known = false;
        if (c.traits.indication != nullptr)
            run_client_handler(
                c, [&] { known = c.traits.indication(handler, msg_id, decoded, size); });
        if (!known)
            CLIENT_LOG(c, "client_ind_hdlr", "Unknown indication msg %0x", msg_id);
    }
    ravex_free_adv(decoded, function, __LINE__);
}

} // namespace

bool service_client_handler_runs_here(uint32_t kind) {
    return kind < CLIENT_KINDS && (g_client_handlers_here >> kind & 1U) != 0;
}

void service_client_set_operational_status_callback(service_client& c,
                                                    client_operational_status_cb cb) {
    const std::lock_guard lock(c.mutex);
    c.context.operational_status_callback = cb;
}

int service_client_send_msg_sync(service_client& c, uint32_t msg_id, void* req, uint32_t req_len,
                                 void* resp, uint32_t resp_len) {
    qmi_client_type handle = nullptr;
    {
        const std::lock_guard lock(c.mutex);
        handle = c.context.client_handle;
        if (handle == nullptr)
            return QMI_CLIENT_INVALID_CLIENT;
        ++c.users;
    }
    const int error =
        qmi_client_send_msg_sync(handle, msg_id, req, req_len, resp, resp_len, send_timeout_ms);
    leave(c);
    return error;
}

void service_client_unsol_ind(service_client& c, const char* function, qmi_client_type handle,
                              uint32_t msg_id, void* buf, uint32_t len) {
    ravex_log_line(RAVEX_LOG_DEFAULT, function, "function entry");
    client_indication_handler handler = nullptr;
    qmi_idl_service_object_type service = nullptr;
    {
        const std::lock_guard lock(c.mutex);
        const bool ours = handle == c.context.client_handle ||
                          (c.making_handle && handle != c.last_client_handle);
        handler = c.context.indication_handler;
        if (handler == nullptr || handle == nullptr || !ours)
            return;
        service = c.context.service_object;
        ++c.users;
    }
    decode_and_hand_on(c, function, handle, service, handler, msg_id, buf, len);
    leave(c);
}
