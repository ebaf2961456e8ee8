#include "orvik_extend_cmn.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "log_lines.h"
#include "notes.h"
#include "orvik_extend_idl.h"

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
bool g_orvik_extend_service_object_fetched;

/* Guards the state block and the handle. Recursive, since the send opens the client under it. */
std::recursive_mutex g_orvik_extend_mutex;

using common_ind_handler = void (*)(uint32_t id, const uint8_t* data, uint32_t data_len);
using other_ind_handler = void (*)(uint32_t msg_id, const void* decoded, uint32_t size);

/* Nothing in the tool registers one. */
constexpr uint32_t max_common_ind = 6;
common_ind_handler g_common_ind_handlers[max_common_ind + 1];
other_ind_handler g_other_ind_handler;

void fetch_service_object() {
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
        qmi_cci_os_signal_wait(&g_orvik_extend_os_params, service_wait_ms);
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
