#include "orvik_extend_cmn.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>

#include <unistd.h>

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
std::atomic<bool> g_orvik_extend_service_object_fetched;

/* Guards the state block and the handle. Recursive, since the send opens the client under it. */
std::recursive_mutex g_orvik_extend_mutex;

using common_ind_handler = void (*)(uint32_t id, const uint8_t* data, uint32_t data_len);
using other_ind_handler = void (*)(uint32_t msg_id, const void* decoded, uint32_t size);

/* Nothing in the tool registers one. */
constexpr uint32_t max_common_ind = 6;
common_ind_handler g_common_ind_handlers[max_common_ind + 1];
other_ind_handler g_other_ind_handler;

void fetch_service_object() {
    if (g_orvik_extend_service_object_fetched)
        return;
    const std::lock_guard guard(g_orvik_extend_mutex);
    if (g_orvik_extend_service_object_fetched)
        return;
    orvik_extend_state = {};
    g_orvik_extend_service_object =
        orvik_extend_get_service_object_internal_v01(1, 1, QMI_IDL_LIBRARY_VERSION);
    if (g_orvik_extend_service_object == nullptr)
        std::puts("QMI get service obj failed. Check .c and .h");
    g_orvik_extend_service_object_fetched = true; /* a failure is not tried again */
}

/* Waits until the notifier is signalled or the time is up. A signal of the past must not end the
 * wait: the caller has just found the service down. Without a notifier there is only the time. */
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

template <typename Record>
void handle_other_ind(qmi_client_type handle, unsigned msg_id, const void* buf, unsigned buf_len) {
    Record record{};
    qmi_client_message_decode(handle, QMI_IDL_INDICATION, msg_id, buf, buf_len, &record,
                              sizeof record);
    if (g_other_ind_handler != nullptr)
        g_other_ind_handler(msg_id, &record, sizeof record);
}

void handle_common_ind(qmi_client_type handle, unsigned msg_id, const void* buf, unsigned buf_len) {
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

/* One exchange; the mutex is held. */
int32_t exchange(uint32_t id, const uint8_t* data, int32_t len, void* rsp, uint32_t* rsp_len) {
    if (g_orvik_extend_client == nullptr)
        g_orvik_extend_client = orvik_extend_qmi_client_open();
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
        if (orvik_stdout_print_on())
            std::printf("send msg sync failed:%d\n", error);
        return -3;
    }
    if (response.id != 0) {
        if (orvik_stdout_print_on())
            std::printf("%d QMI service framework error. Check client\n", response.id);
        return -3;
    }
    /* Neither the caller's capacity nor the record reaches further, whatever data_len says. */
    *rsp_len = response.data_valid != 0 ? std::min(*rsp_len, response.data_len) : 0;
    std::memcpy(rsp, response.data, *rsp_len);
    if (orvik_stdout_print_on())
        std::printf("orvik_extend_qmi_send_sync resp_len:%d\n", *rsp_len);
    return 0;
}

} // namespace

qmi_client_type orvik_extend_qmi_client_open() {
    fetch_service_object();
    const std::lock_guard guard(g_orvik_extend_mutex);
    if (g_orvik_extend_client != nullptr)
        return g_orvik_extend_client;
    if (g_orvik_extend_service_object == nullptr)
        return nullptr;

    const qmi_idl_service_object_type service = g_orvik_extend_service_object;
    /* The notifier stays for the life of the process; a later try uses the one there is. */
    if (g_orvik_extend_notifier == nullptr)
        qmi_client_notifier_init(service, &g_orvik_extend_os_params, &g_orvik_extend_notifier);

    unsigned num_services = 0;
    for (int i = 0; i < service_tries; ++i) {
        const int error = qmi_client_get_service_list(service, nullptr, nullptr, &num_services);
        if (orvik_stdout_print_on())
            std::printf(
                "ORVIK_QMI_NV: qmi_client_get_service_list() returned %d num_services = %d\n",
                error, num_services);
        if (error == QMI_NO_ERR)
            break;
        wait_for_service();
    }

    qmi_service_info info[max_services] = {};
    unsigned num_entries = std::min(num_services, max_services);
    int error = qmi_client_get_service_list(service, info, &num_entries, &num_services);
    if (orvik_stdout_print_on())
        std::printf("qmi_client_get_service_list, err = %d, num_entries = %d, num_services = %d",
                    error, num_entries, num_services);

    qmi_client_type handle = nullptr;
    error = qmi_client_init(&info[0], service, orvik_extend_qmi_ind_cb, nullptr, nullptr, &handle);
    if (orvik_stdout_print_on())
        std::printf("qmi_client_init, err = %d, handle = %d, client_handle = %d", error,
                    low_word(handle), low_word(g_orvik_extend_client));
    if (error != QMI_NO_ERR) {
        std::printf("%d QMI client init failed\n", error);
        return nullptr;
    }
    if (orvik_stdout_print_on())
        std::puts("QMI client inited");
    g_orvik_extend_inited = true;
    return handle;
}

int32_t orvik_extend_qmi_send_sync(uint32_t id, const uint8_t* data, int32_t len, void* rsp,
                                   uint32_t* rsp_len) {
    fetch_service_object();
    if (data == nullptr || rsp == nullptr || rsp_len == nullptr) {
        if (orvik_stdout_print_on())
            std::printf("%x,  put Invalid param\n", static_cast<unsigned>(low_word(data)));
        return -1;
    }
    if (len < 0 || len > ORVIK_EXTEND_DATA_SIZE || *rsp_len > ORVIK_EXTEND_DATA_SIZE) {
        if (orvik_stdout_print_on())
            std::printf("put data_len %d > max %d\n", len, ORVIK_EXTEND_DATA_SIZE);
        return -1;
    }
    const std::lock_guard guard(g_orvik_extend_mutex);
    const int32_t result = exchange(id, data, len, rsp, rsp_len);
    if (orvik_stdout_print_on())
        std::printf("orvik_extend_qmi_handle_req_cb result:%d\n", result);
    return result;
}

void orvik_extend_qmi_ind_cb(qmi_client_type handle, unsigned int msg_id, void* buf,
                             unsigned int buf_len, void*) {
    switch (msg_id) {
    case ORVIK_EXTEND_IND_COMMON:
        return handle_common_ind(handle, msg_id, buf, buf_len);
    case ORVIK_EXTEND_IND_05:
        return handle_other_ind<orvik_extend_ind_05>(handle, msg_id, buf, buf_len);
    case ORVIK_EXTEND_IND_06:
        return handle_other_ind<orvik_extend_ind_06>(handle, msg_id, buf, buf_len);
    case ORVIK_EXTEND_IND_07:
        return handle_other_ind<orvik_extend_pair>(handle, msg_id, buf, buf_len);
    case ORVIK_EXTEND_IND_08:
        return handle_other_ind<orvik_extend_ind_08>(handle, msg_id, buf, buf_len);
    default:
        return;
    }
}

void orvik_qcril_qmi_client_common_empty_unsol_ind_cb(qmi_client_type, unsigned int msg_id, void*,
                                                      unsigned int, void*) {
    ORVIK_DBG("msg_id %d", msg_id);
}

/* ==== common requests ==== */

namespace {

constexpr uint32_t typed_record = 2;
constexpr size_t req_data_offset = 8;
constexpr uint32_t req_max_len = 499;
constexpr size_t msg_type_offset = 8;
constexpr size_t msg_len_offset = 12;
constexpr size_t msg_data_offset = 16;
constexpr uint32_t msg_max_len = 491;

void put_u32(uint8_t* payload, size_t offset, uint32_t value) {
    for (size_t i = 0; i < 4; ++i)
        payload[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

int32_t send_common(const uint8_t (&payload)[ORVIK_EXTEND_DATA_SIZE], void* rsp) {
    uint32_t rsp_len = ORVIK_COMMON_REPLY_SIZE;
    return orvik_extend_qmi_send_sync(REQUEST_ID_COMMON, payload, sizeof payload, rsp, &rsp_len);
}

} // namespace

int32_t orvik_common_qmi_req(uint32_t qmi_id, uint32_t len, const uint8_t* data, void* rsp) {
    ORVIK_FUNCTION_SCOPE();
    if (rsp == nullptr) {
        ORVIK_DBG("rsp is NULL");
        return ORVIK_USAGE_ERROR;
    }
    if (len > req_max_len) {
        ORVIK_DBG("l is out of range");
        return ORVIK_USAGE_ERROR;
    }
    uint8_t payload[ORVIK_EXTEND_DATA_SIZE] = {};
    std::memset(rsp, 0, ORVIK_COMMON_REPLY_SIZE);
    if (len > 0 && data == nullptr) {
        ORVIK_DBG("v is null");
        return ORVIK_USAGE_ERROR;
    }
    put_u32(payload, 0, qmi_id);
    if (len > 0)
        std::memcpy(payload + req_data_offset, data, len);
    return send_common(payload, rsp);
}

int32_t orvik_send_common_qmi_msg(uint32_t t, uint32_t l, const void* v, void* rsp) {
    ORVIK_FUNCTION_SCOPE();
    if (rsp == nullptr) {
        ORVIK_DBG("rsp is NULL");
        return ORVIK_USAGE_ERROR;
    }
    uint8_t payload[ORVIK_EXTEND_DATA_SIZE] = {};
    std::memset(rsp, 0, ORVIK_COMMON_REPLY_SIZE);
    ORVIK_DBG("t %d", t);
    ORVIK_DBG("l %d", l);
    if (l > msg_max_len) {
        ORVIK_DBG("l is out of range");
        return ORVIK_USAGE_ERROR;
    }
    if (l > 0 && v == nullptr) {
        ORVIK_DBG("v is null");
        return ORVIK_USAGE_ERROR;
    }
    put_u32(payload, 0, typed_record);
    put_u32(payload, msg_type_offset, t);
    put_u32(payload, msg_len_offset, l);
    if (l > 0)
        std::memcpy(payload + msg_data_offset, v, l);
    return send_common(payload, rsp);
}

/* ==== SAR ==== */

namespace {

constexpr uint32_t sar_service_wait_ms = 4; /* short on purpose: no SAR service, no waiting */
constexpr unsigned sar_timeout_ms = 30000;

} // namespace

int32_t orvik_get_sar_dsi() {
    static qmi_client_os_params os_params; /* the client stays, so they must too */
    qmi_client_type handle = nullptr;
    int error = qmi_client_init_instance(
        sar_get_service_object_internal_v01(ORVIK_IDL_MAJOR, ORVIK_SAR_IDL_MINOR,
                                            QMI_IDL_LIBRARY_VERSION),
        QMI_CLIENT_INSTANCE_ANY, orvik_qcril_qmi_client_common_empty_unsol_ind_cb, nullptr,
        &os_params, sar_service_wait_ms, &handle);
    if (error != QMI_NO_ERR) {
        ORVIK_DBG("qmi_client_init_instance failed, qmi_client_error = %d", error);
        return -1;
    }

    sar_rf_get_state_resp_v01 response{};
    error = qmi_client_send_msg_sync(handle, QMI_SAR_RF_GET_STATE, nullptr, 0, &response,
                                     sizeof response, sar_timeout_ms);
    if (error != QMI_NO_ERR) {
        ORVIK_DBG("qmi_client_send_msg_sync failed, qmi_client_error = %d", error);
        return -1;
    }
    ORVIK_DBG("dsi vailid = %d , dsi value = %d", response.state_valid, response.state);
    return static_cast<int32_t>(response.state);
}

/* ==== UIM client ==== */

namespace {

constexpr uint32_t uim_service_wait_ms = 4000;
constexpr uint8_t uim_max_failures = 3;

qmi_client_type uim_qmi_client;
qmi_client_os_params g_uim_os_params; /* of the one client there is at a time */
std::atomic<uint8_t> SSR_Detected;    /* set on the framework's thread */
uint8_t failed_cnt;                   /* failed exchanges of this client */

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
    /* A restart since the registration may be forgotten here: the next exchange then returns -2,
     * which makes the client anew all the same. */
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

/* A message's records, zeroed; freed when the operation ends. */
template <typename Request, typename Response> struct uim_records {
    std::unique_ptr<Request, qcril_free> request{
        static_cast<Request*>(qcril_malloc_adv(sizeof(Request)))};
    std::unique_ptr<Response, qcril_free> response{
        static_cast<Response*>(qcril_malloc_adv(sizeof(Response)))};
    bool allocated() const { return request != nullptr && response != nullptr; }
};

/* The log lines below appear under the name of the operation that they are written for. */

void uim_recover_from_ssr(const char* operation) {
    if (SSR_Detected == 0)
        return;
    ORVIK_DBG_IN(operation, "SSR_Detected, try recovery");
    uim_qmi_client_recovery();
}

/* name: what the texts call the operation. */
bool uim_client_ready(const char* operation, const char* name) {
    if (uim_qmi_client == nullptr) {
        ORVIK_DBG_IN(operation, "%s try init_uim_qmi_client %p", name,
                     static_cast<const void*>(uim_qmi_client));
        if (!init_uim_qmi_client()) {
            ORVIK_DBG_IN(operation, "init_uim_qmi_client failed");
            return false;
        }
    }
    ORVIK_DBG_IN(operation, "%s uim_qmi_client %p", name, static_cast<const void*>(uim_qmi_client));
    return true;
}

/* Sends; a transport error is told and counted. */
template <typename Request, typename Response>
int32_t uim_send(const char* operation, unsigned msg_id,
                 const uim_records<Request, Response>& records, bool tell_count = false) {
    const int32_t result =
        qmi_client_send_msg_sync(uim_qmi_client, msg_id, records.request.get(), sizeof(Request),
                                 records.response.get(), sizeof(Response), uim_timeout_ms);
    if (result == QMI_NO_ERR)
        return result;
    if (tell_count)
        ORVIK_DBG_IN(operation, "send msg sync client error = %d, failed_cnt = %d", result,
                     failed_cnt);
    else
        ORVIK_DBG_IN(operation, "send msg sync client error = %d", result);
    ++failed_cnt;
    return result;
}

void uim_operation_end(const char* operation, int32_t transport_result) {
    if (transport_result != QMI_SERVICE_ERR && failed_cnt < uim_max_failures)
        return;
    ORVIK_DBG_IN(operation, "QMI error, try recovery");
    uim_qmi_client_recovery();
}

int32_t uim_power_down(const char* operation, uint32_t slot) {
    ORVIK_DBG_IN(operation, "orvik_uim_request_uicc_power_ex power down sim");
    const uim_records<uim_power_down_req_v01, uim_plain_resp_v01> records;
    if (!records.allocated()) {
        ORVIK_DBG_IN(operation, "uim_power_down malloc failed");
        return uim_failed;
    }
    records.request->slot = slot;
    return uim_send(operation, QMI_UIM_POWER_DOWN, records, true);
}

int32_t uim_power_up(const char* operation, uint32_t slot, bool ignore_hotswap) {
    ORVIK_DBG_IN(operation, "orvik_uim_request_uicc_power_ex power up sim, ignore hotswap = %d ",
                 ignore_hotswap ? 1 : 0);
    const uim_records<uim_power_up_req_v01, uim_plain_resp_v01> records;
    if (!records.allocated()) {
        ORVIK_DBG_IN(operation, "uim_power_up malloc failed");
        return uim_failed;
    }
    records.request->slot = slot;
    records.request->ignore_hotswap_valid = 1;
    records.request->ignore_hotswap = ignore_hotswap ? 1 : 0;
    records.request->card_mode_valid = 1;
    records.request->card_mode = 0;
    return uim_send(operation, QMI_UIM_POWER_UP, records, true);
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
    if (!uim_client_ready(__func__, __func__))
        return uim_failed;
    const uim_records<uim_get_eid_req_v01, uim_get_eid_resp_v01> records;
    if (!records.allocated()) {
        ORVIK_DBG("orvik_uim_request_eid malloc failed");
        return uim_failed;
    }
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
    /* A noted restart is not looked at here. */
    if (!uim_client_ready(__func__, __func__))
        return uim_failed;
    const uim_records<uim_get_card_status_req_v01, uim_get_card_status_resp_v01> records;
    if (!records.allocated()) {
        ORVIK_DBG("orvik_uim_get_card_status malloc failed");
        return uim_failed;
    }
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
    if (!uim_client_ready(__func__, __func__))
        return uim_failed;
    const uim_records<uim_open_logical_channel_req_v01, uim_logical_channel_resp_v01> records;
    if (!records.allocated()) {
        ORVIK_DBG("orvik_uim_open_channel malloc failed");
        return uim_failed;
    }
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
    if (!uim_client_ready(__func__, __func__))
        return uim_failed;
    const uim_records<uim_logical_channel_req_v01, uim_logical_channel_resp_v01> records;
    if (!records.allocated()) {
        ORVIK_DBG("orvik_uim_close_channel malloc failed");
        return uim_failed;
    }
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
    /* Its lines about the client bear the close operation's name, on purpose. */
    if (!uim_client_ready(__func__, "orvik_uim_close_channel"))
        return uim_failed;
    const uim_records<uim_send_apdu_req_v01, uim_send_apdu_resp_v01> records;
    if (!records.allocated()) {
        ORVIK_DBG("orvik_uim_send_apdu malloc failed");
        return uim_failed;
    }
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
        /* One byte holds the length: a reply of 256 bytes or more keeps its low byte only, and no
         * more bytes than that are told. */
        rsp[0] = static_cast<uint8_t>(response.apdu_len);
        std::memcpy(rsp + 1, response.apdu, rsp[0]);
    } else if (sent == QMI_NO_ERR) {
        ORVIK_DBG("orvik_uim_send_apdu failed");
        result = uim_failed;
    }
    uim_operation_end(__func__, sent);
    return result;
}
