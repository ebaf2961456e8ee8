// SPDX-License-Identifier: Apache-2.0
/* All QMI clients but the modem API's. Log lines show this source's name, so they stay here
 * together, however long it grows. */
#include "orvik_extend_cmn.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>

#include <pthread.h>
#include <unistd.h>

#include "bytes.h"
#include "log_lines.h"
#include "orvik_extend_idl.h"
#include "qmi_sar.h"
#include "qmi_uim.h"
#include "service_objects.h"
#include "traced_alloc.h"

/* ==== vendor-extended client ==== */

namespace {

constexpr int service_tries = 50;
constexpr unsigned service_wait_ms = 20;
constexpr unsigned send_timeout_ms = 3000;
constexpr unsigned max_services = 10;

/* Cleared as a whole at first use; request and response again before each send. */
struct orvik_extend_state_type {
    orvik_extend_common_record request;
    orvik_extend_common_record response;
    uint8_t spare[1192];
};
static_assert(sizeof(orvik_extend_state_type) == 2240);

orvik_extend_state_type orvik_extend_state;
qmi_idl_service_object_type g_orvik_extend_service_object;
qmi_client_type g_orvik_extend_client;
qmi_client_type g_orvik_extend_notifier;
qmi_client_os_params g_orvik_extend_os_params;
bool g_orvik_extend_inited;
std::once_flag g_orvik_extend_service_object_fetched;

/* Guards the state block, the handle and the notifier, for a whole exchange. */
std::mutex g_orvik_extend_mutex;

using common_ind_handler = void (*)(uint32_t id, const uint8_t* data, uint32_t data_len);
using other_ind_handler = void (*)(uint32_t msg_id, const void* decoded, uint32_t size);

/* Nothing in the tool registers one, so nothing guards them. */
constexpr uint32_t max_common_ind = 6;
common_ind_handler g_common_ind_handlers[max_common_ind + 1];
other_ind_handler g_other_ind_handler;

/* A failure is not tried again. */
void fetch_service_object() {
    std::call_once(g_orvik_extend_service_object_fetched, [] {
        orvik_extend_state = {};
        g_orvik_extend_service_object =
            orvik_extend_get_service_object_internal_v01(1, 1, QMI_IDL_LIBRARY_VERSION);
        if (g_orvik_extend_service_object == nullptr)
            std::puts("QMI get service obj failed. Check .c and .h");
    });
}

/* Waits for the notifier's signal, up to the time-out. An old signal is cleared first: the caller
 * has just found the service down. Without a notifier it only sleeps. */
void wait_for_service() {
    if (g_orvik_extend_notifier == nullptr) {
        usleep(service_wait_ms * 1000);
        return;
    }
    pthread_mutex_lock(&g_orvik_extend_os_params.mutex);
    g_orvik_extend_os_params.sig_set = 0;
    pthread_mutex_unlock(&g_orvik_extend_os_params.mutex);
    qmi_cci_os_signal_wait(&g_orvik_extend_os_params, service_wait_ms);
}

/* The low 32 bits of a pointer, as the texts show it. */
int low_word(const volatile void* pointer) {
    return static_cast<int>(reinterpret_cast<uintptr_t>(pointer));
}

/* Returns the open client or a new one, which the caller must keep. The mutex is held. */
qmi_client_type open_locked() {
    if (g_orvik_extend_client != nullptr)
        return g_orvik_extend_client;
    if (g_orvik_extend_service_object == nullptr)
        return nullptr;

    const qmi_idl_service_object_type service = g_orvik_extend_service_object;
    /* The notifier is never released; a later try uses it again. */
    if (g_orvik_extend_notifier == nullptr)
        qmi_client_notifier_init(service, &g_orvik_extend_os_params, &g_orvik_extend_notifier);

    unsigned num_services = 0;
    for (int i = 0; i < service_tries; ++i) {
        const int error = qmi_client_get_service_list(service, nullptr, nullptr, &num_services);
        orvik_print("ORVIK_QMI_NV: qmi_client_get_service_list() returned %d num_services = %d\n",
                    error, num_services);
        if (error == QMI_NO_ERR)
            break;
        wait_for_service();
    }

    qmi_service_info info[max_services] = {};
    unsigned num_entries = std::min(num_services, max_services);
    int error = qmi_client_get_service_list(service, info, &num_entries, &num_services);
    orvik_print("qmi_client_get_service_list, err = %d, num_entries = %d, num_services = %d", error,
                num_entries, num_services);

    qmi_client_type handle = nullptr;
    error = qmi_client_init(&info[0], service, orvik_extend_qmi_ind_cb, nullptr, nullptr, &handle);
    orvik_print("qmi_client_init, err = %d, handle = %d, client_handle = %d", error,
                low_word(handle), low_word(g_orvik_extend_client));
    if (error != QMI_NO_ERR) {
        std::printf("%d QMI client init failed\n", error);
        return nullptr;
    }
    orvik_print("QMI client inited\n");
    g_orvik_extend_inited = true;
    return handle;
}

/* One exchange; the mutex is held. */
int32_t exchange(uint32_t id, const uint8_t* data, int32_t len, void* rsp, uint32_t* rsp_len) {
    g_orvik_extend_client = open_locked();
    if (g_orvik_extend_client == nullptr)
        return -2;

    orvik_extend_common_record& request = orvik_extend_state.request;
    orvik_extend_common_record& response = orvik_extend_state.response;
    request = {};
    response = {};
    request.id = id;
    request.data_len = static_cast<uint32_t>(len);
    request.data_valid = 1;
    std::memcpy(request.data, data, static_cast<size_t>(len));

    const int error =
        qmi_client_send_msg_sync(g_orvik_extend_client, ORVIK_EXTEND_REQUEST, &request,
                                 sizeof request, &response, sizeof response, send_timeout_ms);
    if (error != QMI_NO_ERR) {
        orvik_print("send msg sync failed:%d\n", error);
        return -3;
    }
    if (response.id != 0) {
        orvik_print("%d QMI service framework error. Check client\n", response.id);
        return -3;
    }
    /* data_len may exceed both the caller's capacity and the record. */
    *rsp_len = response.data_valid != 0 ? std::min(*rsp_len, response.data_len) : 0;
    std::memcpy(rsp, response.data, *rsp_len);
    orvik_print("orvik_extend_qmi_send_sync resp_len:%d\n", *rsp_len);
    return 0;
}

} // namespace

qmi_client_type orvik_extend_qmi_client_open() {
    fetch_service_object();
    const std::lock_guard guard(g_orvik_extend_mutex);
    return open_locked();
}

int32_t orvik_extend_qmi_send_sync(uint32_t id, const uint8_t* data, int32_t len, void* rsp,
                                   uint32_t* rsp_len) {
    fetch_service_object();
    if (data == nullptr || rsp == nullptr || rsp_len == nullptr) {
        orvik_print("%x,  put Invalid param\n", static_cast<unsigned>(low_word(data)));
        return -1;
    }
    if (len < 0 || len > ORVIK_EXTEND_DATA_SIZE || *rsp_len > ORVIK_EXTEND_DATA_SIZE) {
        orvik_print("put data_len %d > max %d\n", len, ORVIK_EXTEND_DATA_SIZE);
        return -1;
    }
    const std::lock_guard guard(g_orvik_extend_mutex);
    const int32_t result = exchange(id, data, len, rsp, rsp_len);
    orvik_print("orvik_extend_qmi_handle_req_cb result:%d\n", result);
    return result;
}

static void handle_other_ind(qmi_client_type handle, unsigned msg_id, const void* buf,
                             unsigned buf_len, unsigned size) {
    alignas(uint64_t) uint8_t record[sizeof(orvik_extend_ind_06)] = {}; /* the largest */
    qmi_client_message_decode(handle, QMI_IDL_INDICATION, msg_id, buf, buf_len, record, size);
    if (g_other_ind_handler != nullptr)
        g_other_ind_handler(msg_id, record, size);
}

static void handle_common_ind(qmi_client_type handle, unsigned msg_id, const void* buf,
                              unsigned buf_len) {
    std::printf("ORVIK__EXTEND_QMI: Indication msg_id=0x%x buf_len=%d \n", msg_id, buf_len);
    orvik_extend_common_record record{};
    qmi_client_message_decode(handle, QMI_IDL_INDICATION, msg_id, buf, buf_len, &record,
                              sizeof record);
    if (record.id > max_common_ind) {
        std::printf("Indicaion: %d greater than maximum known indication.", record.id);
        return;
    }
    if (g_common_ind_handlers[record.id] == nullptr) {
        std::printf("No function defined to handle indication: %d", record.id);
        return;
    }
    const uint32_t data_len = record.data_valid != 0 ? record.data_len : 0;
    g_common_ind_handlers[record.id](record.id, record.data,
                                     std::min<uint32_t>(data_len, sizeof record.data));
}

void orvik_extend_qmi_ind_cb(qmi_client_type handle, unsigned int msg_id, void* buf,
                             unsigned int buf_len, void*) {
    switch (msg_id) {
    case ORVIK_EXTEND_IND_COMMON:
        return handle_common_ind(handle, msg_id, buf, buf_len);
    case ORVIK_EXTEND_IND_05:
        return handle_other_ind(handle, msg_id, buf, buf_len, sizeof(orvik_extend_ind_05));
    case ORVIK_EXTEND_IND_06:
        return handle_other_ind(handle, msg_id, buf, buf_len, sizeof(orvik_extend_ind_06));
    case ORVIK_EXTEND_IND_07:
        return handle_other_ind(handle, msg_id, buf, buf_len, sizeof(orvik_extend_pair));
    case ORVIK_EXTEND_IND_08:
        return handle_other_ind(handle, msg_id, buf, buf_len, sizeof(orvik_extend_ind_08));
    default:
        return;
    }
}

void orvik_qcril_qmi_client_common_empty_unsol_ind_cb(qmi_client_type, unsigned int msg_id, void*,
                                                      unsigned int, void*) {
    ORVIK_DBG("msg_id %d", msg_id);
}

/* ==== common requests ==== */

static int32_t send_common(const uint8_t* record, void* rsp) {
    uint32_t rsp_len = ORVIK_COMMON_REPLY_SIZE;
    return orvik_extend_qmi_send_sync(REQUEST_ID_COMMON, record, ORVIK_EXTEND_DATA_SIZE, rsp,
                                      &rsp_len);
}

int32_t orvik_common_qmi_req(uint32_t qmi_id, uint32_t len, const uint8_t* data, void* rsp) {
    ORVIK_FUNCTION_SCOPE();
    if (rsp == nullptr)
        return ORVIK_FAILED(ORVIK_USAGE_ERROR, "rsp is NULL");
    if (len > ORVIK_COMMON_DATA_MAX)
        return ORVIK_FAILED(ORVIK_USAGE_ERROR, "l is out of range");
    std::memset(rsp, 0, ORVIK_COMMON_REPLY_SIZE);
    if (len > 0 && data == nullptr)
        return ORVIK_FAILED(ORVIK_USAGE_ERROR, "v is null");
    orvik_common_record record{};
    record.code = qmi_id;
    if (len > 0)
        std::memcpy(record.data, data, len);
    return send_common(bytes_of(record), rsp);
}

int32_t orvik_send_common_qmi_msg(uint32_t t, uint32_t l, const void* v, void* rsp) {
    ORVIK_FUNCTION_SCOPE();
    if (rsp == nullptr)
        return ORVIK_FAILED(ORVIK_USAGE_ERROR, "rsp is NULL");
    std::memset(rsp, 0, ORVIK_COMMON_REPLY_SIZE);
    ORVIK_DBG("t %d", t);
    ORVIK_DBG("l %d", l);
    if (l > ORVIK_TYPED_DATA_MAX)
        return ORVIK_FAILED(ORVIK_USAGE_ERROR, "l is out of range");
    if (l > 0 && v == nullptr)
        return ORVIK_FAILED(ORVIK_USAGE_ERROR, "v is null");
    orvik_typed_record record{};
    record.code = COMMON_CODE_TYPED;
    record.type = t;
    record.len = l;
    if (l > 0)
        std::memcpy(record.data, v, l);
    return send_common(bytes_of(record), rsp);
}

/* ==== SAR ==== */

constexpr uint32_t sar_service_wait_ms = 4; /* short: without the service nobody is kept waiting */
constexpr unsigned sar_timeout_ms = 30000;

int32_t orvik_get_sar_dsi() {
    static qmi_client_os_params os_params; /* the client is never released */
    qmi_client_type handle = nullptr;
    int error = qmi_client_init_instance(
        sar_get_service_object_internal_v01(ORVIK_IDL_MAJOR, ORVIK_SAR_IDL_MINOR,
                                            QMI_IDL_LIBRARY_VERSION),
        QMI_CLIENT_INSTANCE_ANY, orvik_qcril_qmi_client_common_empty_unsol_ind_cb, nullptr,
        &os_params, sar_service_wait_ms, &handle);
    if (error != QMI_NO_ERR)
        return ORVIK_FAILED(-1, "qmi_client_init_instance failed, qmi_client_error = %d", error);

    sar_rf_get_state_resp_v01 response{};
    error = qmi_client_send_msg_sync(handle, QMI_SAR_RF_GET_STATE, nullptr, 0, &response,
                                     sizeof response, sar_timeout_ms);
    if (error != QMI_NO_ERR)
        return ORVIK_FAILED(-1, "qmi_client_send_msg_sync failed, qmi_client_error = %d", error);
    ORVIK_DBG("dsi vailid = %d , dsi value = %d", response.state_valid, response.state);
    return static_cast<int32_t>(response.state);
}

/* ==== UIM client ==== */

namespace {

constexpr uint32_t uim_service_wait_ms = 4000;
constexpr uint8_t uim_max_failures = 3;

/* Used by the one thread that runs operations; only the flag is set on the framework's thread. */
qmi_client_type uim_qmi_client;
qmi_client_os_params g_uim_os_params; /* of the one client there is at a time */
uint8_t failed_cnt;                   /* failed exchanges of this client */
std::atomic<uint8_t> SSR_Detected;

} // namespace

bool init_uim_qmi_client() {
    qmi_client_type handle = nullptr;
    const int error = qmi_client_init_instance(
        uim_get_service_object_internal_v01(ORVIK_IDL_MAJOR, ORVIK_UIM_IDL_MINOR,
                                            QMI_IDL_LIBRARY_VERSION),
        QMI_CLIENT_INSTANCE_ANY, orvik_qcril_qmi_client_common_empty_unsol_ind_cb, nullptr,
        &g_uim_os_params, uim_service_wait_ms, &handle);
    if (error != QMI_NO_ERR) {
        ORVIK_DBG("qmi_client_init UIM instance failed, qmi_client_error = %d", error);
        uim_qmi_client = nullptr;
        return false;
    }
    uim_qmi_client = handle;
    ORVIK_DBG("init_uim_qmi_client %p", static_cast<const void*>(uim_qmi_client));
    if (qmi_client_register_error_cb(uim_qmi_client, error_cb, nullptr) != QMI_NO_ERR)
        ORVIK_DBG("qmi_client_register_error_cb failed");
    /* This may forget a restart that came just now. The next exchange then returns -2, and the
     * client is replaced all the same. */
    SSR_Detected = 0;
    failed_cnt = 0;
    return true;
}

void error_cb(qmi_client_type, qmi_client_error_type error, void*) {
    ORVIK_DBG("QMI error callback %d", error);
    if (error == QMI_SERVICE_ERR) {
        ORVIK_DBG("SSR Detected, set SSR_Detected 1");
        SSR_Detected = 1;
    }
}

void uim_qmi_client_recovery() {
    if (uim_qmi_client == nullptr)
        return;
    ORVIK_DBG("uim_qmi_client_recovery qmi_client_release %p",
              static_cast<const void*>(uim_qmi_client));
    if (qmi_client_release(uim_qmi_client) != QMI_NO_ERR)
        ORVIK_DBG("qmi_client_release failed");
    uim_qmi_client = nullptr;
}

/* ==== SIM operations ==== */

namespace {

constexpr unsigned uim_timeout_ms = 3000;
constexpr int32_t uim_failed = -1;

/* The eUICC's issuer security domain. */
constexpr uint8_t isd_r_aid[] = {0xA0, 0x00, 0x00, 0x05, 0x59, 0x10, 0x10, 0xFF,
                                 0xFF, 0xFF, 0xFF, 0x89, 0x00, 0x00, 0x01, 0x00};

constexpr size_t sim_slots = 2;
constexpr uint8_t card_state_not_told = 3;

struct qcril_free {
    void operator()(void* block) const { qcril_free_adv(block, "qcril_free", __LINE__); }
};

/* A message's records; freed when the operation ends. */
template <typename Request, typename Response> struct uim_records {
    std::unique_ptr<Request, qcril_free> request;
    std::unique_ptr<Response, qcril_free> response;
};

/* function: the operation under whose name the lines below are logged. */

void uim_recover_from_ssr(const char* function) {
    if (SSR_Detected == 0)
        return;
    ORVIK_DBG_IN(function, "SSR_Detected, try recovery");
    uim_qmi_client_recovery();
}

/* name: what the texts call it. */
bool uim_client_ready(const char* function, const char* name) {
    if (uim_qmi_client == nullptr) {
        ORVIK_DBG_IN(function, "%s try init_uim_qmi_client %p", name,
                     static_cast<const void*>(uim_qmi_client));
        if (!init_uim_qmi_client())
            return ORVIK_FAILED_IN(function, false, "init_uim_qmi_client failed");
    }
    ORVIK_DBG_IN(function, "%s uim_qmi_client %p", name, static_cast<const void*>(uim_qmi_client));
    return true;
}

/* Zeroed records. name: what the text of a failure calls the operation. */
template <typename Request, typename Response>
bool uim_allocate(const char* function, const char* name, uim_records<Request, Response>& records) {
    records.request.reset(static_cast<Request*>(qcril_malloc_adv(sizeof(Request))));
    records.response.reset(static_cast<Response*>(qcril_malloc_adv(sizeof(Response))));
    if (records.request == nullptr || records.response == nullptr)
        return ORVIK_FAILED_IN(function, false, "%s malloc failed", name);
    return true;
}

/* Sends; logs and counts a transport error. */
template <typename Request, typename Response>
int32_t uim_send(const char* function, unsigned msg_id,
                 const uim_records<Request, Response>& records, bool tell_count = false) {
    const int32_t result =
        qmi_client_send_msg_sync(uim_qmi_client, msg_id, records.request.get(), sizeof(Request),
                                 records.response.get(), sizeof(Response), uim_timeout_ms);
    if (result == QMI_NO_ERR)
        return result;
    if (tell_count)
        ORVIK_DBG_IN(function, "send msg sync client error = %d, failed_cnt = %d", result,
                     failed_cnt);
    else
        ORVIK_DBG_IN(function, "send msg sync client error = %d", result);
    ++failed_cnt;
    return result;
}

void uim_operation_end(const char* function, int32_t transport_result) {
    if (transport_result != QMI_SERVICE_ERR && failed_cnt < uim_max_failures)
        return;
    ORVIK_DBG_IN(function, "QMI error, try recovery");
    uim_qmi_client_recovery();
}

int32_t uim_power_down(const char* function, uint32_t slot) {
    ORVIK_DBG_IN(function, "orvik_uim_request_uicc_power_ex power down sim");
    uim_records<uim_power_down_req_v01, uim_plain_resp_v01> records;
    if (!uim_allocate(function, "uim_power_down", records))
        return uim_failed;
    records.request->slot = slot;
    return uim_send(function, QMI_UIM_POWER_DOWN, records, true);
}

int32_t uim_power_up(const char* function, uint32_t slot, bool ignore_hotswap) {
    ORVIK_DBG_IN(function, "orvik_uim_request_uicc_power_ex power up sim, ignore hotswap = %d ",
                 ignore_hotswap ? 1 : 0);
    uim_records<uim_power_up_req_v01, uim_plain_resp_v01> records;
    if (!uim_allocate(function, "uim_power_up", records))
        return uim_failed;
    records.request->slot = slot;
    records.request->ignore_hotswap_valid = 1;
    records.request->ignore_hotswap = ignore_hotswap ? 1 : 0;
    records.request->card_mode_valid = 1;
    records.request->card_mode = 0;
    return uim_send(function, QMI_UIM_POWER_UP, records, true);
}

} // namespace

int32_t orvik_uim_request_uicc_power_ex(char* args) {
    uim_recover_from_ssr(__func__);
    if (!uim_client_ready(__func__, __func__))
        return uim_failed;
    uint32_t words[3];
    std::memcpy(words, args, sizeof words);
    const auto [up, slot, ignore_hotswap] = words;
    const int32_t result = up != 0 ? uim_power_up(__func__, slot, ignore_hotswap != 0)
                                   : uim_power_down(__func__, slot);
    ORVIK_DBG("uicc_power_ex res = %d, failed_cnt = %d", result, failed_cnt);
    uim_operation_end(__func__, result);
    return result;
}

int32_t orvik_uim_request_eid(char* args, uint8_t* eid) {
    uim_recover_from_ssr(__func__);
    uim_records<uim_get_eid_req_v01, uim_get_eid_resp_v01> records;
    if (!uim_client_ready(__func__, __func__) || !uim_allocate(__func__, __func__, records))
        return uim_failed;
    records.request->slot = static_cast<uint8_t>(args[0]);
    const int32_t result = uim_send(__func__, QMI_UIM_GET_EID, records);
    const uim_get_eid_resp_v01& response = *records.response;
    if (result == QMI_NO_ERR && response.resp.result == 0 && response.eid_valid != 0)
        std::memcpy(eid, response.eid, sizeof response.eid);
    uim_operation_end(__func__, result);
    return result;
}

int32_t orvik_uim_get_card_status(char* states) {
    std::memset(states, card_state_not_told, sim_slots);
    /* Published: does not recover from a restart. */
    uim_records<uim_get_card_status_req_v01, uim_get_card_status_resp_v01> records;
    if (!uim_client_ready(__func__, __func__) || !uim_allocate(__func__, __func__, records))
        return uim_failed;
    records.request->extended_valid = 1;
    records.request->extended = 1;
    const int32_t result = uim_send(__func__, QMI_UIM_GET_CARD_STATUS, records);
    const uim_get_card_status_resp_v01& response = *records.response;
    if (result == QMI_NO_ERR) {
        ORVIK_DBG("orvik_uim_get_card_status check response");
        const uint32_t cards = std::min<uint32_t>(response.extended.cards_len, QMI_UIM_CARDS_MAX);
        if (response.resp.result == 0 && response.extended_valid == 1 && cards > 0) {
            uint8_t told[sim_slots] = {card_state_not_told, card_state_not_told};
            for (uint32_t i = 0; i < cards; ++i) {
                const auto state = static_cast<uint8_t>(response.extended.cards[i].card_state);
                if (i < sim_slots)
                    told[i] = state;
                ORVIK_DBG("SIM[%d] State = %d", i, state);
            }
            std::memcpy(states, told, sizeof told);
        }
    }
    uim_operation_end(__func__, result);
    return result;
}

int32_t orvik_uim_open_channel(uint8_t* args, uint8_t* channel_id) {
    uim_recover_from_ssr(__func__);
    uim_records<uim_open_logical_channel_req_v01, uim_logical_channel_resp_v01> records;
    if (!uim_client_ready(__func__, __func__) || !uim_allocate(__func__, __func__, records))
        return uim_failed;
    uim_open_logical_channel_req_v01& request = *records.request;
    request.slot = args[0];
    request.aid_valid = 1;
    request.aid_len = sizeof isd_r_aid;
    std::memcpy(request.aid, isd_r_aid, sizeof isd_r_aid);
    request.fci_valid = 1;
    request.fci = args[1];
    const int32_t sent = uim_send(__func__, QMI_UIM_OPEN_LOGICAL_CHANNEL, records);
    int32_t result = sent;
    const uim_logical_channel_resp_v01& response = *records.response;
    if (sent == QMI_NO_ERR && response.resp.result == 0) {
        ORVIK_DBG("orvik_uim_open_channel successfully");
        if (response.channel_valid != 0)
            *channel_id = response.channel;
    } else if (sent == QMI_NO_ERR) {
        ORVIK_DBG("orvik_uim_open_channel failed");
        result = uim_failed;
    }
    uim_operation_end(__func__, sent);
    return result;
}

int32_t orvik_uim_close_channel(uint8_t* args) {
    uim_recover_from_ssr(__func__);
    uim_records<uim_logical_channel_req_v01, uim_logical_channel_resp_v01> records;
    if (!uim_client_ready(__func__, __func__) || !uim_allocate(__func__, __func__, records))
        return uim_failed;
    uim_logical_channel_req_v01& request = *records.request;
    request.slot = args[0];
    request.aid_valid = 0;
    request.channel_valid = 1;
    request.channel = args[1];
    request.terminate_valid = 1;
    request.terminate = 0;
    const int32_t result = uim_send(__func__, QMI_UIM_LOGICAL_CHANNEL, records);
    if (result == QMI_NO_ERR && records.response->resp.result == 0)
        ORVIK_DBG("orvik_uim_close_channel successfully");
    uim_operation_end(__func__, result);
    return result;
}

int32_t orvik_uim_send_apdu(char* args, uint8_t* rsp) {
    uim_recover_from_ssr(__func__);
    /* Published: the lines about the client name the close operation. */
    uim_records<uim_send_apdu_req_v01, uim_send_apdu_resp_v01> records;
    if (!uim_client_ready(__func__, "orvik_uim_close_channel") ||
        !uim_allocate(__func__, __func__, records))
        return uim_failed;
    uim_send_apdu_req_v01& request = *records.request;
    request.slot = static_cast<uint8_t>(args[0]);
    request.apdu_len = static_cast<uint8_t>(args[2]);
    ORVIK_DBG("orvik_uim_send_apdu apdu_len = %d", request.apdu_len);
    std::memcpy(request.apdu, args + 3, request.apdu_len);
    request.channel_valid = 1;
    request.channel = static_cast<uint8_t>(args[1]);
    request.procedure_valid = 1;
    request.procedure = 1;
    const int32_t sent = uim_send(__func__, QMI_UIM_SEND_APDU, records);
    int32_t result = sent;
    const uim_send_apdu_resp_v01& response = *records.response;
    if (sent == QMI_NO_ERR && response.resp.result == 0) {
        ORVIK_DBG("orvik_uim_send_apdu successfully");
        /* Published: one byte holds the length. Of a reply of 256 bytes or more only the low byte
         * counts, and only so many bytes are copied. */
        rsp[0] = static_cast<uint8_t>(response.apdu_len);
        std::memcpy(rsp + 1, response.apdu, rsp[0]);
    } else if (sent == QMI_NO_ERR) {
        ORVIK_DBG("orvik_uim_send_apdu failed");
        result = uim_failed;
    }
    uim_operation_end(__func__, sent);
    return result;
}
