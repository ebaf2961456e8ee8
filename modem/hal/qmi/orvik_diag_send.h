// SPDX-License-Identifier: Apache-2.0
/* DIAG commands to the modem, and the hex dump of the debug log.
 *
 * A command is one raw DIAG packet of 1 to 4096 bytes. It goes out in one of two modes: callback
 * mode (libdiag's callback logging, answers on a registered callback) or DCI mode (a short-lived
 * DCI client and one asynchronous request). "With result" waits for the answer; "without result"
 * hands the packet to a worker thread and returns.
 *
 * Results are 0 for success and 1 for failure. Every function may be called from any thread. */
#pragma once

#include <atomic>
#include <cstdint>

#include "diag.h"

/* Logs 1 to 4096 bytes as upper-case hex; complains about any other length and about null. */
void orvik_print_data_with_hex(const uint8_t* data, uint32_t len);

/* ==== the four ways to send ==== */

/* *p_reply_len: in the capacity of reply_buf, out the bytes copied.
 *
 * Published: nothing clears the latest response before a command. After a time-out (result 1) in
 * callback mode the caller gets the bytes of an earlier response, if any. DCI mode frees the
 * response's bytes but keeps its length: if that is a multiple of 4096, the next DCI wait ends at
 * once with result 0 and 0 bytes.
 *
 * time_out_ms counts in steps of 100 ms. In callback mode 0 and anything above 60000 mean 3000. In
 * DCI mode it is taken as it is; below 100 means one step. */
int orvik_diag_cmd_send_with_result_by_callback_mode(const uint8_t* data, uint32_t data_len,
                                                     uint32_t time_out_ms, uint8_t* reply_buf,
                                                     uint32_t* p_reply_len);
int orvik_diag_cmd_send_with_result_by_dci_mode(const uint8_t* data, uint32_t data_len,
                                                uint32_t time_out_ms, uint8_t* reply_buf,
                                                uint32_t* p_reply_len);

/* Return 0 once a worker was asked for. The packet is copied; failures of the worker are only
 * logged. */
int orvik_diag_cmd_send_without_result_by_callback_mode(const uint8_t* data, uint32_t data_len);
int orvik_diag_cmd_send_without_result_by_dci_mode(const uint8_t* data, uint32_t data_len);

/* Waits until every worker has written its last line. False after time_out_ms. */
bool orvik_diag_wait_for_workers(uint32_t time_out_ms);

/* Pauses in microseconds. Tests shorten them; the tool itself never changes them. */
struct orvik_diag_pauses {
    std::atomic<uint32_t> tick{100'000};            /* of the wait thread */
    std::atomic<uint32_t> callback_worker{200'000}; /* how long a worker listens for answers */
    std::atomic<uint32_t> dci_worker{1'000'000};
};
extern orvik_diag_pauses g_orvik_diag_pauses;

/* ==== what they are made of ==== */

/* Init brings libdiag up once and counts further calls; deinit takes it down whatever the count. */
void orvik_diag_init_with_result();
void orvik_diag_deinit_with_result();

int orvik_diag_comand_input_check(const uint8_t* data, uint32_t data_len);
int orvik_diag_comand_output_check(uint8_t* reply_buf, uint32_t* p_reply_len);
/* 0 when a response of 1 to 10240 bytes may be used. */
int orvik_diag_cmd_response_check(const uint8_t* ptr, int32_t len, const uint32_t* context_data);

/* Registers for the local processor and every remote one that libdiag reports. */
void orvik_diag_register_callback(diag_packet_cb callback);

/* Called on libdiag's thread. context_data points to the number of the processor that answers. */
int orvik_diag_cmd_response_by_callback(uint8_t* ptr, int32_t len, uint32_t* context_data);
void orvik_diag_cmd_response_by_callback_no_handle(uint8_t* ptr, int32_t len);
void orvik_diag_cmd_response_by_dci(uint8_t* ptr, int32_t len, uint32_t* context_data);
void orvik_diag_cmd_response_by_dci_log_stream(uint8_t* ptr, int32_t len);
void orvik_diag_cmd_response_by_dci_event_stream(uint8_t* ptr, int32_t len);
void orvik_diag_cmd_response_by_dci_no_handle(uint8_t* ptr, int32_t len, uint32_t* context_data);
void orvik_diag_cmd_response_by_dci_log_stream_no_handle(uint8_t* ptr, int32_t len);
void orvik_diag_cmd_response_by_dci_event_stream_no_handle(uint8_t* ptr, int32_t len);

/* Watch the current wait and end it when its time is up: in a new thread, and in the caller's own,
 * which does not use its argument. */
void orvik_diag_cmd_send_with_result_wait_create_thread();
void* orvik_diag_cmd_send_with_result_wait_thread_proc(void* arg);

/* diag_work_mode: 0 callback, any other DCI. A worker gets a malloc'd block, which it frees: the
 * packet's length (u32 in host order), then the packet. */
int orvik_diag_cmd_send_without_result_start_thread(const uint8_t* data, uint32_t data_len,
                                                    uint32_t diag_work_mode);
void* orvik_diag_cmd_send_without_result_by_callback_mode_thread_proc(void* block);
void* orvik_diag_cmd_send_without_result_by_dci_mode_thread_proc(void* block);
