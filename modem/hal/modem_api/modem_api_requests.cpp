// SPDX-License-Identifier: Apache-2.0
/* The modem API's operations and its asynchronous responses. */
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "client_table.h"
#include "nas_client.h"
#include "ravex_log.h"
#include "traced_alloc.h"

namespace {

bool connected_client(int32_t client_id, uint32_t kind) {
    modem_api_client_table& table = g_modem_api_clients;
    if (client_id < 0 || static_cast<size_t>(client_id) >= table.slots.size())
        return false;
    const std::lock_guard guard(table.slots_mutex);
    const modem_api_client* const client = table.slots[static_cast<size_t>(client_id)];
    return client != nullptr && client->kind == kind &&
           client->operational_status == CLIENT_CONNECTED;
}

int unexpected_condition(const char* function, int error) {
    ravex_log_line(RAVEX_LOG_DEFAULT, function, "Unexpected condition, return error %d!", error);
    return error;
}

/* Error numbers of a QMI answer and what they mean here; any other is a general failure. */
struct qmi_error_row {
    uint32_t qmi_error;
    int error;
};

constexpr qmi_error_row qmi_errors[] = {
    {0, MODEM_API_OK},
    {26, MODEM_API_OK},
    {4, MODEM_API_QMI_ERROR_4},
    {17, MODEM_API_BAD_ARGUMENT},
    {19, MODEM_API_BAD_ARGUMENT},
    {48, MODEM_API_BAD_ARGUMENT},
    {49, MODEM_API_BAD_ARGUMENT},
    {24, MODEM_API_NOT_SUPPORTED},
    {42, MODEM_API_NOT_SUPPORTED},
    {77, MODEM_API_NOT_SUPPORTED},
    {94, MODEM_API_NOT_SUPPORTED},
    {52, MODEM_API_QMI_ERROR_52},
};

int map_answer(const qmi_response_type_v01& resp) {
    if (resp.result == 0)
        return MODEM_API_OK;
    if (resp.result != 1)
        return MODEM_API_FAILURE;
    for (const qmi_error_row& row : qmi_errors)
        if (row.qmi_error == resp.error)
            return row.error;
    return MODEM_API_FAILURE;
}

} // namespace

int modem_api_map_qmi_error_to_modem_api(int32_t qmi_err, const qmi_response_type_v01* resp) {
    switch (qmi_err) {
    case QMI_NO_ERR:
    case QMI_SERVICE_ERR: /* the answer may have come before the service went */
        return resp != nullptr ? map_answer(*resp) : MODEM_API_NO_RESPONSE;
    case QMI_INTERNAL_ERR:
    case QMI_PORT_NOT_OPEN_ERR:
        return MODEM_API_TRANSPORT;
    case QMI_TIMEOUT_ERR:
        return MODEM_API_TIMEOUT;
    default:
        return MODEM_API_FAILURE;
    }
}

int modem_api_util_enable_networking_indications(int32_t client_id, int32_t second_sub) {
    const bool first = second_sub == 0;
    const uint32_t kind = first ? CLIENT_KIND_NAS_0 : CLIENT_KIND_NAS_1;
    if ((!first && second_sub != 1) || !connected_client(client_id, kind))
        return unexpected_condition(__func__, MODEM_API_UNEXPECTED);
    nas_response_v01 resp{};
    const int qmi_error = nas_client_register_indications(
        first ? nas_0_client_send_msg_sync : nas_1_client_send_msg_sync, resp);
    const int result = modem_api_map_qmi_error_to_modem_api(qmi_error, &resp.resp);
    RAVEX_LOG("enable_indication result: %d", result);
    return result;
}

int modem_api_set_ravex_feature_status(int32_t client_id, uint32_t feature, uint8_t a, uint8_t b,
                                       uint8_t c) {
    if (!connected_client(client_id, CLIENT_KIND_VS))
        return unexpected_condition(__func__, MODEM_API_UNEXPECTED);
    vs_set_feature_req_v01 req{};
    req.feature = feature;
    req.a = a;
    req.b = b;
    req.c = c;
    vs_set_feature_resp_v01 resp{};
    const int qmi_error =
        vs_client_send_msg_sync(QMI_VS_SET_FEATURE, &req, sizeof req, &resp, sizeof resp);
    const int result = modem_api_map_qmi_error_to_modem_api(qmi_error, &resp.resp);
    RAVEX_LOG("result %d", result);
    return result;
}

void modem_api_fill_stats(const vs_get_stats_resp_v01& resp, modem_api_stats& out) {
    out.count = std::min<uint32_t>(resp.entries_len, QMI_VS_MAX_ENTRIES);
    for (uint32_t i = 0; i < out.count; ++i) {
        const vs_stats_entry_v01& from = resp.entries[i];
        modem_api_stats_entry& to = out.entries[i];
        to.sub = from.sub;
        to.id = from.id;
        to.data_len = std::min<uint32_t>(from.data_len, sizeof to.data);
        std::memcpy(to.data, from.data, to.data_len);
    }
}

int modem_api_get_stats_parameter(int32_t client_id, uint16_t sub, uint16_t number,
                                  int32_t id_count, const uint32_t* ids, uint32_t* out) {
    if (!connected_client(client_id, CLIENT_KIND_VS))
        return unexpected_condition(__func__, MODEM_API_UNEXPECTED);
    if (id_count < 1 || id_count > QMI_VS_MAX_IDS)
        return unexpected_condition(__func__, MODEM_API_BAD_ARGUMENT);
    if (ids == nullptr || out == nullptr) {
        RAVEX_LOG("Unexpected NULL pointer, return error %d!", MODEM_API_BAD_ARGUMENT);
        return MODEM_API_BAD_ARGUMENT;
    }
    vs_get_stats_req_v01 req{};
    req.sub = sub;
    req.number = number;
    req.ids_len = static_cast<uint32_t>(id_count);
    std::copy(ids, ids + id_count, req.ids);
    vs_get_stats_resp_v01 resp{};
    const int qmi_error =
        vs_client_send_msg_sync(QMI_VS_GET_STATS, &req, sizeof req, &resp, sizeof resp);
    const int result = modem_api_map_qmi_error_to_modem_api(qmi_error, &resp.resp);
    if (result != MODEM_API_OK)
        return result;
    if (resp.entries_valid == 0)
        return MODEM_API_FAILURE;
    /* Through a structure of our own: out is only known to be words. */
    modem_api_stats stats{};
    modem_api_fill_stats(resp, stats);
    std::memcpy(out, &stats, sizeof stats);
    return MODEM_API_OK;
}

constexpr uint32_t length_at = sizeof(qmi_response_type_v01);
constexpr uint32_t payload_at = length_at + 4;

/* The payload of a response to message 0, in a block that the callback owns. */
static void tell_payload(const uint8_t* resp, uint32_t resp_len, const modem_api_completion& done) {
    uint32_t length = 0;
    if (resp_len >= payload_at) {
        std::memcpy(&length, resp + length_at, sizeof length);
        length = std::min(length, resp_len - payload_at);
    }
    void* const block = ravex_malloc_adv(length, "modem_api_common_command_cb_handler", __LINE__);
    if (block == nullptr)
        return done.callback(nullptr, 0, done.user_data, MODEM_API_NO_RESPONSE);
    if (length > 0)
        std::memcpy(block, resp + payload_at, length);
    done.callback(block, length, done.user_data, MODEM_API_OK);
}

static void tell_response(uint32_t msg_id, const void* resp, uint32_t resp_len,
                          const modem_api_completion& done, int32_t transport_error) {
    if (resp == nullptr || resp_len == 0)
        return done.callback(nullptr, 0, done.user_data, MODEM_API_NO_RESPONSE);
    /* Too short for a result: not a success. */
    qmi_response_type_v01 result{};
    const bool whole = resp_len >= sizeof result;
    if (whole)
        std::memcpy(&result, resp, sizeof result);
    const int error =
        modem_api_map_qmi_error_to_modem_api(transport_error, whole ? &result : nullptr);
    if (error != MODEM_API_OK)
        return done.callback(nullptr, 0, done.user_data, static_cast<uint32_t>(error));
    if (msg_id == 0)
        tell_payload(static_cast<const uint8_t*>(resp), resp_len, done);
    done.callback(nullptr, 0, done.user_data, MODEM_API_RESPONSE_END);
}

void modem_api_process_response(uint32_t msg_id, void* resp, uint32_t resp_len,
                                modem_api_completion* done, int32_t transport_error) {
    if (done != nullptr && done->callback != nullptr)
        tell_response(msg_id, resp, resp_len, *done, transport_error);
    ravex_free_adv(resp, __func__, __LINE__);
    ravex_free_adv(done, __func__, __LINE__);
}
