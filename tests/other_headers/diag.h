// SPDX-License-Identifier: Apache-2.0
/* libdiag as another phone's header has it. */
#ifndef OTHER_DIAG_H
#define OTHER_DIAG_H
#include <stdbool.h>
#include <stdint.h>
#define DIAG_USB_MODE 1
#define DIAG_CALLBACK_MODE 6
#define DIAG_CON_MPSS (1 << 1)
#define DIAG_DCI_NO_ERROR 1001
#ifdef __cplusplus
extern "C" {
#endif
typedef int (*diag_packet_cb)(unsigned char*, int, void*);
typedef void (*diag_dci_stream_cb)(unsigned char*, int);
typedef void (*diag_dci_response_cb)(unsigned char*, int, void*);
bool Diag_LSM_Init(unsigned char*);
bool Diag_LSM_DeInit(void);
void diag_switch_logging(int, char*);
int diag_register_callback(diag_packet_cb, void*);
int diag_register_remote_callback(diag_packet_cb, int, void*);
int diag_has_remote_device(uint16_t*);
int diag_callback_send_data(int, unsigned char*, int);
int diag_register_dci_client(int*, uint16_t*, int, void*);
int diag_register_dci_signal_data(int, int);
int diag_get_dci_support_list_proc(int, uint16_t*);
int diag_register_dci_stream_proc(int, diag_dci_stream_cb, diag_dci_stream_cb);
int diag_send_dci_async_req(int, unsigned char*, int, unsigned char*, int, diag_dci_response_cb,
                            void*);
int diag_release_dci_client(int*);
#ifdef __cplusplus
}
#endif
#endif
