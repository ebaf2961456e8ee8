// SPDX-License-Identifier: Apache-2.0
/* NV items and EFS files of the modem, over request kind 2 of the vendor-extended service.
 *
 * Results: 0 success; -101 bad argument or length at the send, -102 the client could not be opened,
 * -103 the send failed or the service reported an error; the codes below for bad arguments; any
 * other value is the service's own result. sub_id is the subscription, 0 or 1. */
#pragma once

#include <cstdint>

enum {
    ORVIK_NVEFS_SUB_INVALID = -104,
    ORVIK_NVEFS_PATH_NULL = -105,
    ORVIK_NVEFS_PATH_LEN_INVALID = -106,
    ORVIK_NVEFS_BUF_NULL = -107,
    ORVIK_NVEFS_BUF_LEN_INVALID = -108,
    ORVIK_NVEFS_NV_ID_INVALID = -109,
};

enum {
    ORVIK_NV_ID_MAX = 7232,
    ORVIK_NV_DATA_MAX = 424,       /* bytes of an NV item */
    ORVIK_EFS_READ_PATH_MAX = 71,  /* characters without NUL */
    ORVIK_EFS_WRITE_PATH_MAX = 70, /* for delete too */
    ORVIK_EFS_FILE_MAX = 102410,   /* bytes of a file */
};

/* Maps the send's -1, -2, -3 to -101, -102, -103; every other value stays. */
int32_t orvik_qmi_result_map(int32_t result);

/* buf_len: in the capacity of buf, out the bytes copied. */
int32_t orvik_nv_read(uint32_t sub_id, uint32_t nv_id, void* buf, uint32_t* buf_len);

/* len: 1 to ORVIK_NV_DATA_MAX. */
int32_t orvik_nv_write_ex(uint32_t sub_id, uint32_t nv_id, const uint8_t* buf, uint32_t len);

int32_t orvik_nv_delete(uint32_t sub_id, uint32_t nv_id);

/* path_len: characters without NUL. buf_len: in the capacity of buf, out the bytes read. */
int32_t orvik_efs_read(uint32_t sub_id, const char* efs_path, uint32_t path_len, uint8_t* buf,
                       uint32_t* buf_len);

/* buf_len: 1 to ORVIK_EFS_FILE_MAX. */
int32_t orvik_efs_write(uint32_t sub_id, const char* efs_path, uint32_t path_len,
                        const uint8_t* buf, uint32_t buf_len);

int32_t orvik_efs_delete(uint32_t sub_id, const char* efs_path, uint32_t path_len);
