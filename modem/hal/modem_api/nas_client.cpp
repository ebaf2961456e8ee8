// SPDX-License-Identifier: Apache-2.0
#include "nas_client.h"

#include "ravex_log.h"
#include "service_client.h"

namespace {

constexpr unsigned bind_timeout_ms = 30000;

void bind(qmi_client_type handle, uint32_t subscription) {
    nas_bind_subscription_req_v01 req{};
    req.subscription = subscription;
    nas_response_v01 resp{};
    qmi_client_send_msg_sync(handle, QMI_NAS_BIND_SUBSCRIPTION, &req, sizeof req, &resp,
                             sizeof resp, bind_timeout_ms);
}

} // namespace

void nas_0_client_bind(qmi_client_type handle) { bind(handle, 0); }
void nas_1_client_bind(qmi_client_type handle) { bind(handle, 1); }

int nas_client_register_indications(client_send_msg_sync send, nas_response_v01& resp) {
    nas_indication_register_req_v01 req{};
    req.choices[QMI_NAS_CHOICE_SERVING_SYSTEM].valid = 1;
    resp = {};
    return send(QMI_NAS_INDICATION_REGISTER, &req, sizeof req, &resp, sizeof resp);
}

static int set_networking_indications(const char* function, client_send_msg_sync send) {
    nas_response_v01 resp{};
    const int result = nas_client_register_indications(send, resp);
    ravex_log_line(RAVEX_LOG_DEFAULT, function, "enable_indication result: %d", result);
    return result;
}

int nas_0_client_set_networking_indications() {
    return set_networking_indications(__func__, nas_0_client_send_msg_sync);
}

int nas_1_client_set_networking_indications() {
    return set_networking_indications(__func__, nas_1_client_send_msg_sync);
}
