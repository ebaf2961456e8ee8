// SPDX-License-Identifier: Apache-2.0
/* DIAG library (libdiag): prototypes that kvt calls. */
#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { DIAG_USB_MODE = 1, DIAG_CALLBACK_MODE = 6 };

/* Peripheral bit of the modem processor, and the success code of every DCI call. */
enum { DIAG_CON_MPSS = 2, DIAG_DCI_NO_ERROR = 1001 };

typedef int (*diag_packet_cb)(unsigned char* ptr, int len, void* context);
typedef void (*diag_dci_stream_cb)(unsigned char* ptr, int len);
typedef void (*diag_dci_response_cb)(unsigned char* ptr, int len, void* context);

bool Diag_LSM_Init(unsigned char* env); /* true on success */
bool Diag_LSM_DeInit(void);
void diag_switch_logging(int mode, char* dir);

/* Keeps context, the address of the caller's processor word, and hands it back with every packet.
 * Results of the callback-mode calls: 0 on success. */
int diag_register_callback(diag_packet_cb cb, void* context);
int diag_register_remote_callback(diag_packet_cb cb, int proc, void* context);
int diag_has_remote_device(uint16_t* remote_mask);
int diag_callback_send_data(int proc, unsigned char* buf, int len);

/* DCI: each returns DIAG_DCI_NO_ERROR on success. */
int diag_register_dci_client(int* client_id, uint16_t* peripherals, int proc, void* os_params);
int diag_register_dci_signal_data(int client_id, int signal);
int diag_get_dci_support_list_proc(int proc, uint16_t* peripherals);
int diag_register_dci_stream_proc(int client_id, diag_dci_stream_cb log_cb,
                                  diag_dci_stream_cb event_cb);
int diag_send_dci_async_req(int client_id, unsigned char buf[], int len, unsigned char* rsp,
                            int rsp_len, diag_dci_response_cb cb, void* context);
int diag_release_dci_client(int* client_id);

#ifdef __cplusplus
}
#endif
