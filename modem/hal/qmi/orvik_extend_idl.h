// SPDX-License-Identifier: Apache-2.0
/* The vendor-extended QMI service 0xFFE4: its records in memory and its service object. Message
 * 0x02 is the only one that the tool sends; the others complete the service's description. */
#pragma once

#include <cstddef>
#include <cstdint>

#include "qmi_services.h"

enum {
    ORVIK_EXTEND_SERVICE_ID = QMI_VENDOR_SERVICE,
    ORVIK_EXTEND_MAX_MSG_LEN = 1227,

    ORVIK_EXTEND_REQUEST = 0x02,    /* request and response: orvik_extend_common_record */
    ORVIK_EXTEND_REQUEST_03 = 0x03, /* the same, and as indication */
    ORVIK_EXTEND_REQUEST_04 = 0x04,
    ORVIK_EXTEND_IND_COMMON = 0x03,
    ORVIK_EXTEND_IND_05 = 0x05,
    ORVIK_EXTEND_IND_06 = 0x06,
    ORVIK_EXTEND_IND_07 = 0x07,
    ORVIK_EXTEND_IND_08 = 0x08,
};

/* Request kinds: the id of a request 0x02. Kinds 0, 1, 3 and 5 belong to the modem alone. */
enum { REQUEST_ID_EFS = 2, REQUEST_ID_COMMON = 4 };

enum { ORVIK_EXTEND_DATA_SIZE = 512 };

struct orvik_extend_common_record {
    uint32_t id;       /* request: the kind; response: framework result, 0 for success */
    uint32_t data_len; /* meaningful bytes of data */
    uint8_t data_valid;
    uint8_t data[ORVIK_EXTEND_DATA_SIZE];
};
static_assert(sizeof(orvik_extend_common_record) == 524);
static_assert(offsetof(orvik_extend_common_record, data) == 9);

struct orvik_extend_request_04 {
    uint32_t id;
    uint32_t data_len;
    uint8_t data_valid;
    uint8_t data[ORVIK_EXTEND_DATA_SIZE];
    uint8_t extra_valid;
    uint8_t extra;
};
static_assert(sizeof(orvik_extend_request_04) == 524);

struct orvik_extend_pair { /* response 0x04, indication 0x07 */
    uint32_t first;
    uint32_t second;
};
static_assert(sizeof(orvik_extend_pair) == 8);

/* Item types of the indications; their fields have no names. */
struct orvik_extend_item_a {
    uint64_t value;
    uint32_t values[12];
};
static_assert(sizeof(orvik_extend_item_a) == 56);

struct orvik_extend_item_b {
    uint64_t value;
    uint32_t values[4];
};
static_assert(sizeof(orvik_extend_item_b) == 24);

struct orvik_extend_item_c {
    uint32_t items_len;
    orvik_extend_item_b items[5];
};
static_assert(sizeof(orvik_extend_item_c) == 128);

struct orvik_extend_ind_05 {
    uint32_t first;
    uint32_t second;
    orvik_extend_item_a items[20];
};
static_assert(sizeof(orvik_extend_ind_05) == 1128);

struct orvik_extend_ind_06 {
    uint32_t first;
    uint32_t second;
    orvik_extend_item_c items[10];
};
static_assert(sizeof(orvik_extend_ind_06) == 1288);

struct orvik_extend_ind_08 {
    uint32_t first;
    uint32_t second;
    orvik_extend_item_b item;
};
static_assert(sizeof(orvik_extend_ind_08) == 32);

/* The service object for exactly the version triple (1, 1, 6), else null. */
qmi_idl_service_object_type orvik_extend_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                         int32_t idl_min_version,
                                                                         int32_t library_version);
