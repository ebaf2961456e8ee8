// SPDX-License-Identifier: Apache-2.0
/* NV items and EFS files. Log lines show this source's name, so both stay here, however long it
 * grows. */
#include "orvik_extend_nvefs.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "bytes.h"
#include "log_lines.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_idl.h"

namespace {

/* The payload of a request: 512 bytes, little-endian as both processors are; unused bytes are zero.
 */
struct nvefs_request {
    uint8_t op;
    uint8_t sub_id;
    uint16_t nv_id; /* of an EFS write the instance id */
    uint8_t path_len;
    uint8_t path[71];
    uint32_t data_len_all;  /* NV write: data length; EFS write: total length */
    uint32_t data_len_send; /* EFS write: bytes in this chunk */
    uint32_t data_len_cur;  /* EFS read and write: offset of this chunk */
    uint8_t data[424];
};
static_assert(sizeof(nvefs_request) == ORVIK_EXTEND_DATA_SIZE);
static_assert(offsetof(nvefs_request, path) == 5);
static_assert(offsetof(nvefs_request, data_len_all) == 76);
static_assert(offsetof(nvefs_request, data) == 88);

enum : uint8_t {
    op_nv_read = 1,
    op_nv_write,
    op_nv_delete,
    op_efs_read,
    op_efs_write,
    op_efs_delete
};

struct nvefs_response {
    uint32_t spare;
    uint32_t data_len_all;  /* length of the item or file */
    uint32_t data_len_send; /* bytes of data in this response */
    uint32_t spare2;
    int32_t result; /* 0 success; of an EFS write the instance id, when not negative */
    uint8_t data[424];
};
static_assert(sizeof(nvefs_response) == 444);
static_assert(offsetof(nvefs_response, result) == 16);
static_assert(offsetof(nvefs_response, data) == 20);

constexpr uint32_t subscriptions = 2;
constexpr uint16_t new_instance = 255;
constexpr uint32_t write_chunk = 414;
constexpr uint32_t read_stop = 102409; /* no further pass once more than this was received */
constexpr uint32_t max_passes = 300;

std::mutex g_nv_mutex;
std::mutex g_efs_mutex;

/* The length that a response states, cut to its data. If less arrived, the rest is zero. */
uint32_t held(uint32_t stated) { return std::min<uint32_t>(stated, sizeof(nvefs_response::data)); }

/* One exchange with a cleared response, its result mapped. rsp_len: in the capacity, out the bytes
 * received. */
int32_t send(const nvefs_request& request, nvefs_response& response, uint32_t& rsp_len) {
    response = {};
    return orvik_qmi_result_map(orvik_extend_qmi_send_sync(REQUEST_ID_EFS, bytes_of(request),
                                                           sizeof request, &response, &rsp_len));
}

nvefs_request request_for(uint8_t op, uint32_t sub_id, uint32_t nv_id = 0) {
    nvefs_request request{};
    request.op = op;
    request.sub_id = static_cast<uint8_t>(sub_id);
    request.nv_id = static_cast<uint16_t>(nv_id);
    return request;
}

/* The path as far as the request carries it. */
void put_path(const char* function, nvefs_request& request, const char* efs_path,
              uint32_t path_len) {
    const size_t length = std::min<size_t>(path_len, sizeof request.path);
    request.path_len = static_cast<uint8_t>(path_len);
    std::memcpy(request.path, efs_path, length);
    ORVIK_DBG_IN(function, "path_value: %.*s", static_cast<int>(length), efs_path);
}

} // namespace

int32_t orvik_qmi_result_map(int32_t result) {
    const int32_t mapped = result >= -3 && result <= -1 ? result - 100 : result;
    ORVIK_DBG("orvik_qmi_result_map, old_result %d, new_result %d", result, mapped);
    return mapped;
}

/* ==== checks and exchanges, logged under the function that asks ==== */

namespace {

int32_t check_sub(const char* function, uint32_t sub_id) {
    return sub_id < subscriptions
               ? 0
               : ORVIK_FAILED_IN(function, ORVIK_NVEFS_SUB_INVALID, "sub invalid");
}

int32_t check_item(const char* function, uint32_t sub_id, uint32_t nv_id) {
    if (const int32_t failed = check_sub(function, sub_id))
        return failed;
    if (nv_id > ORVIK_NV_ID_MAX)
        return ORVIK_FAILED_IN(function, ORVIK_NVEFS_NV_ID_INVALID, "nv_id is out range(%d)",
                               ORVIK_NV_ID_MAX);
    return 0;
}

int32_t check_file(const char* function, uint32_t sub_id, const char* efs_path, uint32_t path_len,
                   uint32_t path_max) {
    if (const int32_t failed = check_sub(function, sub_id))
        return failed;
    if (efs_path == nullptr)
        return ORVIK_FAILED_IN(function, ORVIK_NVEFS_PATH_NULL, "efs_path is null");
    if (path_len < 1 || path_len > path_max)
        return ORVIK_FAILED_IN(function, ORVIK_NVEFS_PATH_LEN_INVALID, "len invalid");
    return 0;
}

int32_t check_buf(const char* function, const void* buf) {
    return buf != nullptr ? 0 : ORVIK_FAILED_IN(function, ORVIK_NVEFS_BUF_NULL, "buf is null");
}

int32_t check_read_buf(const char* function, const void* buf, const uint32_t* buf_len) {
    if (const int32_t failed = check_buf(function, buf))
        return failed;
    if (buf_len == nullptr)
        return ORVIK_FAILED_IN(function, ORVIK_NVEFS_BUF_LEN_INVALID, "p_buf_len is null");
    ORVIK_DBG_IN(function, "buf_len: %d", *buf_len);
    if (*buf_len == 0)
        return ORVIK_FAILED_IN(function, ORVIK_NVEFS_BUF_LEN_INVALID, "buf_len is invalid");
    return 0;
}

int32_t check_write_buf(const char* function, const void* buf, uint32_t len, uint32_t max) {
    if (const int32_t failed = check_buf(function, buf))
        return failed;
    if (len < 1 || len > max)
        return ORVIK_FAILED_IN(function, ORVIK_NVEFS_BUF_LEN_INVALID, "buf_len is invalid");
    return 0;
}

/* An NV exchange: the failure of the send, else the service's result. */
int32_t send_nv(const char* function, const nvefs_request& request, nvefs_response& response) {
    uint32_t rsp_len = sizeof response;
    const int32_t result = send(request, response, rsp_len);
    ORVIK_DBG_IN(function, "result = %d, rsp.result = %d", result, response.result);
    if (result != 0)
        return ORVIK_FAILED_IN(function, result, "orvik_extend_qmi_send_sync fail");
    if (response.result != 0)
        ORVIK_DBG_IN(function, "qmi response fail");
    return response.result;
}

} // namespace

/* ==== NV items ==== */

int32_t orvik_nv_read(uint32_t sub_id, uint32_t nv_id, void* buf, uint32_t* buf_len) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_nv_mutex);
    ORVIK_DBG("orvik_nv_read, sub_id %d, nv_id: %d", sub_id, nv_id);
    if (const int32_t failed = check_item(__func__, sub_id, nv_id))
        return failed;
    if (const int32_t failed = check_read_buf(__func__, buf, buf_len))
        return failed;

    nvefs_request request = request_for(op_nv_read, sub_id, nv_id);
    nvefs_response response{};
    if (const int32_t failed = send_nv(__func__, request, response))
        return failed;
    ORVIK_DBG("rsp.data_len_all = %d", response.data_len_all);
    const uint32_t length = held(response.data_len_all);
    if (length == 0)
        return ORVIK_FAILED(ORVIK_NVEFS_BUF_LEN_INVALID, "rsp.data_len_all is invalid");
    *buf_len = std::min(*buf_len, length);
    std::memcpy(buf, response.data, *buf_len);
    return 0;
}

int32_t orvik_nv_write_ex(uint32_t sub_id, uint32_t nv_id, const uint8_t* buf, uint32_t len) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_nv_mutex);
    ORVIK_DBG("orvik_nv_write, sub_id %d, nv_id: %d, buf_len: %d", sub_id, nv_id, len);
    if (const int32_t failed = check_item(__func__, sub_id, nv_id))
        return failed;
    if (const int32_t failed = check_write_buf(__func__, buf, len, ORVIK_NV_DATA_MAX))
        return failed;

    nvefs_request request = request_for(op_nv_write, sub_id, nv_id);
    nvefs_response response{};
    request.data_len_all = len;
    std::memcpy(request.data, buf, len);
    return send_nv(__func__, request, response);
}

int32_t orvik_nv_delete(uint32_t sub_id, uint32_t nv_id) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_nv_mutex);
    ORVIK_DBG("orvik_nv_delete, sub_id %d, nv_id: %d", sub_id, nv_id);
    if (const int32_t failed = check_item(__func__, sub_id, nv_id))
        return failed;

    nvefs_request request = request_for(op_nv_delete, sub_id, nv_id);
    nvefs_response response{};
    return send_nv(__func__, request, response);
}

/* ==== EFS files ==== */

int32_t orvik_efs_read(uint32_t sub_id, const char* efs_path, uint32_t path_len, uint8_t* buf,
                       uint32_t* buf_len) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_efs_mutex);
    ORVIK_DBG("orvik_efs_read, sub_id %d, path_len: %d", sub_id, path_len);
    if (const int32_t failed =
            check_file(__func__, sub_id, efs_path, path_len, ORVIK_EFS_READ_PATH_MAX))
        return failed;
    if (const int32_t failed = check_read_buf(__func__, buf, buf_len))
        return failed;

    nvefs_request request = request_for(op_efs_read, sub_id);
    nvefs_response response{};
    put_path(__func__, request, efs_path, path_len);

    const uint32_t capacity = *buf_len;
    uint32_t received = 0;
    /* Published: set once, so no pass receives more than the pass before. */
    uint32_t rsp_len = sizeof response;
    for (uint32_t pass = 0; pass < max_passes; ++pass) {
        const uint32_t offset = received;
        request.data_len_cur = offset;
        const int32_t result = send(request, response, rsp_len);
        ORVIK_DBG("result = %d, rsp.result = %d", result, response.result);
        if (result != 0)
            return ORVIK_FAILED(result, "orvik_extend_qmi_send_sync fail, ABORT");
        if (response.result != 0)
            return ORVIK_FAILED(response.result, "qmi response fail");
        const uint32_t chunk = held(response.data_len_send);
        received += chunk;
        ORVIK_DBG("data_len_all = %d, data_len_send = %d, data_len_recv = %d, read_count = %d, "
                  "data_len_cur = %d",
                  response.data_len_all, response.data_len_send, received, pass + 1, offset);
        if (chunk == 0)
            return ORVIK_FAILED(ORVIK_NVEFS_BUF_LEN_INVALID, "abort, data_len_send <= 0");
        if (received >= capacity) {
            *buf_len = capacity;
            if (capacity > offset) {
                std::memcpy(buf + offset, response.data, capacity - offset);
                ORVIK_DBG("abort, buf_len <= data_len_recv");
            } else {
                ORVIK_DBG("errro, abort, buf_len <= req.data_len_cur");
            }
            return 0;
        }
        std::memcpy(buf + offset, response.data, chunk);
        *buf_len = received;
        if (received >= response.data_len_all || received > read_stop)
            return 0;
    }
    return 0;
}

int32_t orvik_efs_write(uint32_t sub_id, const char* efs_path, uint32_t path_len,
                        const uint8_t* buf, uint32_t buf_len) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_efs_mutex);
    ORVIK_DBG("orvik_efs_write, sub_id %d, path_len: %d, buf_len: %d", sub_id, path_len, buf_len);
    if (const int32_t failed =
            check_file(__func__, sub_id, efs_path, path_len, ORVIK_EFS_WRITE_PATH_MAX))
        return failed;
    if (const int32_t failed = check_write_buf(__func__, buf, buf_len, ORVIK_EFS_FILE_MAX))
        return failed;

    nvefs_request request = request_for(op_efs_write, sub_id, new_instance);
    nvefs_response response{};
    put_path(__func__, request, efs_path, path_len);
    request.data_len_all = buf_len;

    uint32_t sent = 0;
    for (uint32_t pass = 0; pass < max_passes && sent < buf_len; ++pass) {
        const uint32_t left = buf_len - sent;
        ORVIK_DBG("left_num(%d)", left);
        const uint32_t chunk = std::min(left, write_chunk);
        ORVIK_DBG("send_num(%d)", chunk);
        request.data_len_cur = sent;
        request.data_len_send = chunk;
        std::memset(request.data, 0, sizeof request.data);
        std::memcpy(request.data, buf + sent, chunk);
        uint32_t rsp_len = sizeof response;
        const int32_t result = send(request, response, rsp_len);
        ORVIK_DBG("result = %d, rsp.result[>=0 is instance id] = %d", result, response.result);
        if (result != 0)
            return ORVIK_FAILED(result, "orvik_extend_qmi_send_sync fail");
        if (response.result < 0)
            return ORVIK_FAILED(response.result, "qmi response fail");
        sent += chunk;
        request.nv_id = static_cast<uint16_t>(response.result);
        ORVIK_DBG("data_len_all = %d, data_len_send = %d, data_len_recv = %d, send_count = %d, "
                  "data_len_cur = %d",
                  buf_len, chunk, sent, pass + 1, request.data_len_cur);
    }
    return 0;
}

int32_t orvik_efs_delete(uint32_t sub_id, const char* efs_path, uint32_t path_len) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_efs_mutex);
    ORVIK_DBG("orvik_efs_delete, sub_id %d, path_len: %d", sub_id, path_len);
    if (const int32_t failed =
            check_file(__func__, sub_id, efs_path, path_len, ORVIK_EFS_WRITE_PATH_MAX))
        return failed;

    nvefs_request request = request_for(op_efs_delete, sub_id);
    nvefs_response response{};
    put_path(__func__, request, efs_path, path_len);
    uint32_t rsp_len = sizeof response;
    const int32_t result = send(request, response, rsp_len);
    if (result != 0)
        return ORVIK_FAILED(result, "orvik_extend_qmi_send_sync fail");
    if (response.result != 0)
        return ORVIK_FAILED(response.result, "qmi response fail");
    return 0;
}
