// SPDX-License-Identifier: Apache-2.0
/* Service objects of the QMI IDL library, version 6, and the function for run time that kvt calls.
 *
 * A service object is data: for each kind of message a table from message id to the message's TLVs,
 * encoded as bytes. The encoding is described at the constants below. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    QMI_IDL_REQUEST,
    QMI_IDL_RESPONSE,
    QMI_IDL_INDICATION,
    QMI_IDL_NUM_MSG_TYPES
} qmi_idl_type_of_message_type;

typedef struct {
    uint16_t qmi_message_id;
    uint16_t message_table_message_id; /* bits 12..15 referenced table, 0..11 message in it */
    uint16_t max_msg_len;              /* bytes of TLVs on the wire, without the QMI header */
} qmi_idl_service_message_table_entry;

typedef struct {
    uint32_t c_struct_sz;
    const uint8_t* p_encoded_type_data; /* run of elements ended by QMI_IDL_TYPE_END */
} qmi_idl_type_table_entry;

typedef struct {
    uint32_t c_struct_sz;
    const uint8_t* p_encoded_tlv_data; /* run of TLVs; null: a message without TLVs */
} qmi_idl_message_table_entry;

typedef struct qmi_idl_type_table_object qmi_idl_type_table_object;
struct qmi_idl_type_table_object {
    uint16_t n_types;
    uint16_t n_messages;
    uint8_t n_referenced_tables;
    const qmi_idl_type_table_entry* p_types;
    const qmi_idl_message_table_entry* p_messages;
    const qmi_idl_type_table_object** p_referenced_tables; /* [0] is usually the object itself */
    const void* p_ranges;                                  /* null */
};

typedef struct qmi_idl_service_object {
    uint32_t library_version; /* QMI_IDL_LIBRARY_VERSION */
    uint32_t idl_version;     /* major */
    uint32_t service_id;
    uint32_t max_msg_len;
    uint16_t n_msgs[QMI_IDL_NUM_MSG_TYPES];
    const qmi_idl_service_message_table_entry* msgid_to_msg[QMI_IDL_NUM_MSG_TYPES]; /* by id */
    const qmi_idl_type_table_object* p_type_table;
    uint32_t idl_minor_version;
    struct qmi_idl_service_object* parent_service_obj;
} qmi_idl_service_object;

typedef const struct qmi_idl_service_object* qmi_idl_service_object_type;

enum { QMI_IDL_LIBRARY_VERSION = 6 };

/* A TLV: a flags byte, for an optional TLV its type byte, and one element. A mandatory TLV keeps
 * its type in the low 4 bits; an optional one keeps there the distance from valid flag to field. */
enum {
    QMI_IDL_TLV_LAST = 0x80,
    QMI_IDL_TLV_OPTIONAL = 0x40,
    QMI_IDL_TLV_LOW_MASK = 0x0F,
};

/* An element: a flags byte, which also holds the type; the field's offset (1 byte, 2 or 3 by
 * flags); for an array its size (1 byte, or 2); for a variable-length array the distance from its
 * u32 count to the array (1 byte); for an aggregate its type (2 bytes: low 8 bits of the index,
 * then high bits in the upper nibble and the referenced table in the lower). */
enum {
    QMI_IDL_OFFSET_16 = 0x80,
    QMI_IDL_ARRAY = 0x40,
    QMI_IDL_SIZE_16 = 0x20,
    QMI_IDL_VARIABLE = 0x10,
    QMI_IDL_EXTENDED = 0x08, /* a second flags byte follows the first */
    QMI_IDL_TYPE_MASK = 0x07,

    /* Types: wire and structure width in bytes, except where said. */
    QMI_IDL_1_BYTE = 0,
    QMI_IDL_2_BYTE = 1,
    QMI_IDL_4_BYTE = 2,
    QMI_IDL_8_BYTE = 3,
    QMI_IDL_1_BYTE_ENUM = 4, /* 1 on the wire, 4 in the structure */
    QMI_IDL_2_BYTE_ENUM = 5, /* 2 on the wire, 4 in the structure */
    QMI_IDL_STRING = 6,
    QMI_IDL_AGGREGATE = 7,

    QMI_IDL_EXTENDED_OFFSET_24 = 0x02, /* in the second flags byte */
    QMI_IDL_TYPE_END = 0x20,           /* ends the data of an aggregate type */
};

/* Size in bytes of the C structure of a message. Returns 0, or a negative number when the service
 * has no such message (*len is then left as it was). */
int32_t qmi_idl_get_message_c_struct_len(qmi_idl_service_object_type service,
                                         qmi_idl_type_of_message_type message_type,
                                         uint16_t message_id, uint32_t* len);

#ifdef __cplusplus
}
#endif
