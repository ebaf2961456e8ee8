// SPDX-License-Identifier: Apache-2.0
/* The DIAG engine. Log lines show this source's name, so both modes stay here, however long it
 * grows. */
#include "orvik_diag_send.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

#include <pthread.h>
#include <semaphore.h>

#include "immortal.h"
#include "log_lines.h"

/* ==== state ==== */

orvik_diag_pauses g_orvik_diag_pauses;

namespace {

constexpr uint32_t hex_dump_max = 4096;
constexpr int32_t command_max = 4096;
constexpr int32_t response_max = 10240;
constexpr int32_t full_chunk = 4096; /* a DCI chunk of this size means that more is coming */

constexpr int32_t default_ticks = 30;
constexpr uint32_t tick_ms = 100;
constexpr uint32_t time_out_max_ms = 60000;
constexpr uint32_t time_out_default_ms = 3000;

constexpr int local_processor = 0;

/* One wait for a response. It is never freed: a late post must meet a semaphore that exists, and
 * kvt waits once a run. */
struct diag_wait {
    diag_wait() { sem_init(&done, 0, 0); }

    sem_t done;
    std::atomic<bool> waiting{false};
    std::atomic<int32_t> timed_out{0};
    std::atomic<int32_t> limit{default_ticks};
    diag_wait* earlier = nullptr;
};

/* The latest response. Both blocks come from malloc and are one byte longer than their content.
 * Guarded by the response mutex. */
struct diag_rsp_buf {
    uint8_t* data;
    int32_t length; /* Published: kept when a DCI command frees data */
    uint8_t* prev_data;
};

/* Initialisations since libdiag came up. Changed under the send mutex. */
std::atomic<int32_t> g_diag_init_status{0};
diag_rsp_buf g_qcril_diag_rsp_buf{};

/* Never destroyed: callbacks, wait threads and workers may use it while the process ends. */
struct diag_shared {
    std::mutex send_mutex;     /* a whole "with result" command */
    std::mutex worker_mutex;   /* a worker's whole run */
    std::mutex response_mutex; /* g_qcril_diag_rsp_buf */

    diag_wait first_wait;
    std::atomic<diag_wait*> wait{&first_wait}; /* the current one */

    std::mutex event_mutex; /* the count below */
    std::condition_variable worker_ended;
    int workers = 0;
};
immortal<diag_shared> g_diag_immortal;
diag_shared& g_diag_shared = g_diag_immortal.value;

/* False when there is no memory; the current wait then stays. The send mutex is held. */
bool begin_new_wait() {
    auto* const wait = new (std::nothrow) diag_wait;
    if (wait == nullptr)
        return false;
    wait->earlier = g_diag_shared.wait;
    g_diag_shared.wait = wait;
    return true;
}

/* The number of each processor. libdiag keeps a pointer to one and passes it to the callback. */
uint32_t g_processor_words[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

constexpr const char* processor_labels[] = {"MSM", "MDM", "MDM_2"};

const char* processor_label(int32_t id) {
    return id >= 0 && id < static_cast<int32_t>(std::size(processor_labels)) ? processor_labels[id]
                                                                             : "Unknown";
}

uint8_t* allocate(int32_t content) {
    return static_cast<uint8_t*>(std::malloc(static_cast<size_t>(content) + 1));
}

void pause_us(uint32_t us) { std::this_thread::sleep_for(std::chrono::microseconds(us)); }

int create_detached_thread(void* (*proc)(void*), void* arg) {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const int conf = pthread_create(&thread, &attr, proc, arg);
    pthread_attr_destroy(&attr);
    return conf;
}

/* For the thread itself: its creator must not touch a detached thread, which may have ended. */
void name_this_thread() { pthread_setname_np(pthread_self(), "ORVK DIAG"); }

} // namespace

/* ==== hex dump ==== */

void orvik_print_data_with_hex(const uint8_t* data, uint32_t len) {
    if (data == nullptr) {
        ORVIK_DBG("print_data_with_hex, data is null");
        return;
    }
    if (len < 1 || len > hex_dump_max) {
        ORVIK_DBG("print_data_with_hex, invalid data len(%d)", len);
        return;
    }
    static constexpr char digits[] = "0123456789ABCDEF";
    char text[3 * hex_dump_max]; /* with blanks between the bytes, and the NUL */
    char* end = text;
    for (uint32_t i = 0; i < len; ++i) {
        if (i > 0)
            *end++ = ' ';
        *end++ = digits[data[i] >> 4];
        *end++ = digits[data[i] & 15];
    }
    *end = '\0';
    ORVIK_DBG("data hex show, len(%d), data: %s", len, text);
}

/* ==== libdiag up and down ==== */

void orvik_diag_init_with_result() {
    ORVIK_FUNCTION_SCOPE();
    if (g_diag_init_status != 0) {
        ORVIK_DBG("diag init done, g_diag_init_status = %d", g_diag_init_status.load());
        ++g_diag_init_status;
        return;
    }
    /* Even if the library does not come up: the command goes on and may wait. */
    const bool ready = begin_new_wait();
    if (ready && Diag_LSM_Init(nullptr))
        g_diag_init_status = 1;
    else
        ORVIK_DBG("LSM init failed");
}

void orvik_diag_deinit_with_result() {
    ORVIK_FUNCTION_SCOPE();
    Diag_LSM_DeInit();
    g_diag_init_status = 0;
}

/* ==== checks ==== */

int orvik_diag_comand_input_check(const uint8_t* data, uint32_t data_len) {
    const auto len = static_cast<int32_t>(data_len);
    ORVIK_DBG("diag_comand, data_len = %d", len);
    if (data == nullptr)
        return ORVIK_FAILED(1, "data is null");
    if (len < 1 || len > command_max)
        return ORVIK_FAILED(1, "Invalid input parameter, data_len = %d", len);
    orvik_print_data_with_hex(data, data_len);
    return 0;
}

int orvik_diag_comand_output_check(uint8_t* reply_buf, uint32_t* p_reply_len) {
    if (reply_buf == nullptr)
        return ORVIK_FAILED(1, "reply_buf is null");
    if (p_reply_len == nullptr)
        return ORVIK_FAILED(1, "p_reply_len is null");
    const auto len = static_cast<int32_t>(*p_reply_len);
    ORVIK_DBG("reply_len = %d", len);
    if (len <= 0)
        return ORVIK_FAILED(1, "Invalid output parameter, reply_len = %d", len);
    return 0;
}

int orvik_diag_cmd_response_check(const uint8_t* ptr, int32_t len, const uint32_t* context_data) {
    if (context_data == nullptr)
        ORVIK_DBG("context_data is null");
    const int32_t id = context_data != nullptr ? static_cast<int32_t>(*context_data) : -1;
    ORVIK_DBG("================ response from %d[%s], len = %d ========================", id,
              processor_label(id), len);
    if (ptr == nullptr)
        return ORVIK_FAILED(1, "ptr is null");
    if (len < 1 || len > response_max)
        return ORVIK_FAILED(1, "Invalid parameter, len = %d", len);
    orvik_print_data_with_hex(ptr, static_cast<uint32_t>(len));
    return 0;
}

/* Both checks of a "with result" command, logged under function. */
static bool buffers_usable(const char* function, const uint8_t* data, uint32_t data_len,
                           uint8_t* reply_buf, uint32_t* p_reply_len) {
    if (orvik_diag_comand_input_check(data, data_len) != 0)
        return ORVIK_FAILED_IN(function, false, "orvik_diag_comand_param_check fail");
    if (orvik_diag_comand_output_check(reply_buf, p_reply_len) != 0)
        return ORVIK_FAILED_IN(function, false, "orvik_diag_comand_output_check fail");
    return true;
}

/* ==== waiting for a response ==== */

/* Watches a wait until it is over or its time is up. True when the sender is still to be woken. */
static bool watch(diag_wait& wait) {
    static constexpr const char* function = "orvik_diag_cmd_send_with_result_wait_thread_proc";
    ORVIK_DBG_IN(function, "function entry ------------->");
    int32_t ticks = 0;
    do {
        pause_us(g_orvik_diag_pauses.tick);
        ++ticks;
        ORVIK_DBG_IN(function,
                     "orvik_diag_cmd_send_with_result_wait_thread_proc, cnt_of_100ms = %d", ticks);
    } while (wait.waiting && ticks < wait.limit);

    int32_t length;
    {
        const std::lock_guard guard(g_diag_shared.response_mutex);
        length = g_qcril_diag_rsp_buf.length;
    }
    bool end = false;
    if (length != 0 && length % full_chunk == 0) {
        ORVIK_DBG_IN(function, "stop waiting, receive success, length is times of 4096");
        end = true;
    } else if (wait.waiting && ticks >= wait.limit) {
        ORVIK_DBG_IN(function, "stop waiting");
        wait.timed_out = 1;
        end = true;
    }
    ORVIK_DBG_IN(function, "function exit <-------------");
    return end;
}

/* The post comes last: once the sender is woken, the process may end before this thread does. */
static void* watch_and_post(void* wait) {
    name_this_thread();
    auto& watched = *static_cast<diag_wait*>(wait);
    if (watch(watched))
        sem_post(&watched.done);
    return nullptr;
}

void* orvik_diag_cmd_send_with_result_wait_thread_proc(void*) {
    return watch_and_post(g_diag_shared.wait);
}

void orvik_diag_cmd_send_with_result_wait_create_thread() {
    ORVIK_FUNCTION_SCOPE();
    const int conf = create_detached_thread(watch_and_post, g_diag_shared.wait);
    ORVIK_DBG("orvik daig is created, conf = %d", conf);
}

/* Blocks until the response arrives or the time is up. wait is the current one: only a sender
 * begins another, and the send mutex is held. */
static void wait_for_response(diag_wait& wait) {
    orvik_diag_cmd_send_with_result_wait_create_thread();
    while (sem_wait(&wait.done) != 0 && errno == EINTR) {
    }
    wait.waiting = false;
    wait.limit = default_ticks;
}

/* Copies the response to the caller. 1 after a time-out, else 0. */
static int take_response(const char* function, diag_wait& wait, uint8_t* reply_buf,
                         uint32_t* p_reply_len, int32_t capacity) {
    const std::lock_guard guard(g_diag_shared.response_mutex);
    const diag_rsp_buf& response = g_qcril_diag_rsp_buf;
    const int32_t n = std::min(response.length, capacity);
    ORVIK_DBG_IN(function,
                 "req end, data_size = %d, g_qcril_diag_rsp_buf.length = %d, reply_len = %d", n,
                 response.length, capacity);
    /* Published: DCI mode frees the response but keeps its length. Then there is nothing to copy.
     */
    const int32_t copied = response.data != nullptr ? n : 0;
    if (copied >= 1)
        std::memcpy(reply_buf, response.data, static_cast<size_t>(copied));
    *p_reply_len = static_cast<uint32_t>(copied);
    return wait.timed_out.exchange(0) == 1 ? 1 : 0;
}

/* ==== callback mode ==== */

void orvik_diag_register_callback(diag_packet_cb callback) {
    ORVIK_FUNCTION_SCOPE();
    uint32_t& data_primary = g_processor_words[local_processor];
    diag_register_callback(callback, &data_primary);
    uint16_t remote_mask = 0;
    diag_has_remote_device(&remote_mask);

    /* Published: one name, that of the lowest bit, even if several are set. */
    static constexpr const char* remote_labels[] = {" APSS",  " MPSS",    " LPASS",
                                                    " WCNSS", " SENSORS", " WDSP"};
    const char* label = "";
    for (size_t bit = std::size(remote_labels); bit-- > 0;)
        if ((remote_mask & (1u << bit)) != 0)
            label = remote_labels[bit];
    ORVIK_DBG("register call back, g_diag_channel = [%d]%s, data_primary = %d, remote_mask = "
              "[%d]%s",
              local_processor, processor_label(local_processor), data_primary, remote_mask, label);

    int number = 1;
    for (unsigned mask = remote_mask; mask != 0; mask >>= 1, ++number) {
        if ((mask & 1) == 0)
            continue;
        ORVIK_DBG("register remote call back, data_remote = %d", number);
        diag_register_remote_callback(callback, number, &g_processor_words[number]);
    }
}

int orvik_diag_cmd_response_by_callback(uint8_t* ptr, int32_t len, uint32_t* context_data) {
    diag_wait* const wait = g_diag_shared.wait;
    ORVIK_FUNCTION_SCOPE();
    if (orvik_diag_cmd_response_check(ptr, len, context_data) != 0)
        return ORVIK_FAILED(1, "orvik_diag_cmd_response_check fail");
    uint8_t* const ptr_out = allocate(len);
    if (ptr_out == nullptr) {
        ORVIK_ERR("Failed to allocate memory for ptr_out");
        return 1;
    }
    std::memcpy(ptr_out, ptr, static_cast<size_t>(len));
    {
        const std::lock_guard guard(g_diag_shared.response_mutex);
        std::free(g_qcril_diag_rsp_buf.data);
        g_qcril_diag_rsp_buf.data = ptr_out;
        g_qcril_diag_rsp_buf.length = len;
    }
    ORVIK_DBG("callback, cmd_code = 0x%02x, data_size = %d", ptr[0], len);
    sem_post(&wait->done);
    return 0;
}

void orvik_diag_cmd_response_by_callback_no_handle(uint8_t*, int32_t len) {
    ORVIK_DBG("len = %d", len);
}

/* What libdiag calls. */
static int on_packet(unsigned char* ptr, int len, void* context) {
    return orvik_diag_cmd_response_by_callback(ptr, len, static_cast<uint32_t*>(context));
}

static int on_packet_no_handle(unsigned char* ptr, int len, void*) {
    orvik_diag_cmd_response_by_callback_no_handle(ptr, len);
    return 0;
}

/* libdiag's prototypes lack const; it only reads the packet. */
static unsigned char* packet_bytes(const uint8_t* data) { return const_cast<uint8_t*>(data); }

int orvik_diag_cmd_send_with_result_by_callback_mode(const uint8_t* data, uint32_t data_len,
                                                     uint32_t time_out_ms, uint8_t* reply_buf,
                                                     uint32_t* p_reply_len) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_diag_shared.send_mutex);
    if (!buffers_usable(__func__, data, data_len, reply_buf, p_reply_len))
        return 1;
    const auto capacity = static_cast<int32_t>(*p_reply_len);

    orvik_diag_init_with_result();
    diag_wait* const wait = g_diag_shared.wait;
    orvik_diag_register_callback(on_packet);
    diag_switch_logging(DIAG_CALLBACK_MODE, nullptr);
    int result = 1;
    const int ret =
        diag_callback_send_data(local_processor, packet_bytes(data), static_cast<int>(data_len));
    ORVIK_DBG("ret_send = %d, will wait callback", ret);
    if (ret != 0) {
        ORVIK_DBG("Fail to send diag cmd");
    } else {
        if (time_out_ms == 0 || time_out_ms > time_out_max_ms) {
            ORVIK_DBG("Time out is invalid, set default");
            time_out_ms = time_out_default_ms;
        }
        wait->waiting = true;
        const auto ticks = static_cast<int32_t>((time_out_ms & 0xFFFF) / tick_ms);
        wait->limit = ticks;
        ORVIK_DBG("Command time = %d * 100ms", ticks);
        wait_for_response(*wait);
        result = take_response(__func__, *wait, reply_buf, p_reply_len, capacity);
    }
    diag_switch_logging(DIAG_USB_MODE, nullptr);
    orvik_diag_deinit_with_result();
    return result;
}

/* ==== DCI mode ==== */

constexpr int dci_response_size = 16384;

/* Appends a chunk to the response. The response mutex is held. */
static bool keep_dci_chunk(const char* function, const uint8_t* ptr, int32_t len) {
    diag_rsp_buf& response = g_qcril_diag_rsp_buf;
    if (response.data == nullptr) {
        uint8_t* const ptr_out_1 = allocate(len);
        if (ptr_out_1 == nullptr)
            return ORVIK_FAILED_IN(function, false, "Failed to allocate memory for ptr_out_1");
        std::memcpy(ptr_out_1, ptr, static_cast<size_t>(len));
        response.data = ptr_out_1;
        response.length = len;
        return true;
    }
    const auto old_length = static_cast<size_t>(response.length);
    uint8_t* const ptr_out_2 = allocate(response.length);
    if (ptr_out_2 == nullptr)
        return ORVIK_FAILED_IN(function, false, "Failed to allocate memory for ptr_out_2");
    std::memcpy(ptr_out_2, response.data, old_length);
    std::free(response.prev_data);
    response.prev_data = ptr_out_2;
    uint8_t* const ptr_out_3 =
        response.length <= INT32_MAX - len ? allocate(response.length + len) : nullptr;
    if (ptr_out_3 == nullptr)
        return ORVIK_FAILED_IN(function, false, "Failed to allocate memory for ptr_out_3");
    std::memcpy(ptr_out_3, ptr_out_2, old_length);
    std::memcpy(ptr_out_3 + old_length, ptr, static_cast<size_t>(len));
    std::free(response.data);
    response.data = ptr_out_3;
    response.length += len;
    return true;
}

/* Published: the length stays. */
static void free_response() {
    const std::lock_guard guard(g_diag_shared.response_mutex);
    std::free(g_qcril_diag_rsp_buf.prev_data);
    std::free(g_qcril_diag_rsp_buf.data);
    g_qcril_diag_rsp_buf.prev_data = nullptr;
    g_qcril_diag_rsp_buf.data = nullptr;
}

void orvik_diag_cmd_response_by_dci(uint8_t* ptr, int32_t len, uint32_t* context_data) {
    diag_wait* const wait = g_diag_shared.wait;
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_diag_shared.response_mutex);
    if (orvik_diag_cmd_response_check(ptr, len, context_data) != 0) {
        ORVIK_DBG("orvik_diag_cmd_response_check fail");
        return;
    }
    if (!keep_dci_chunk(__func__, ptr, len))
        return;
    ORVIK_DBG("response, cmd_code = 0x%02x, data_size = %d", ptr[0], len);
    if (len != full_chunk)
        sem_post(&wait->done);
}

void orvik_diag_cmd_response_by_dci_log_stream(uint8_t* ptr, int32_t len) {
    ORVIK_FUNCTION_SCOPE();
    orvik_print_data_with_hex(ptr, static_cast<uint32_t>(len));
}

void orvik_diag_cmd_response_by_dci_event_stream(uint8_t* ptr, int32_t len) {
    ORVIK_FUNCTION_SCOPE();
    orvik_print_data_with_hex(ptr, static_cast<uint32_t>(len));
}

void orvik_diag_cmd_response_by_dci_no_handle(uint8_t*, int32_t len, uint32_t*) {
    ORVIK_DBG("len = %d", len);
}

void orvik_diag_cmd_response_by_dci_log_stream_no_handle(uint8_t*, int32_t len) {
    ORVIK_DBG("len = %d", len);
}

void orvik_diag_cmd_response_by_dci_event_stream_no_handle(uint8_t*, int32_t len) {
    ORVIK_DBG("len = %d", len);
}

namespace {

void on_dci_response(unsigned char* ptr, int len, void* context) {
    orvik_diag_cmd_response_by_dci(ptr, len, static_cast<uint32_t*>(context));
}

void on_dci_response_no_handle(unsigned char* ptr, int len, void* context) {
    orvik_diag_cmd_response_by_dci_no_handle(ptr, len, static_cast<uint32_t*>(context));
}

/* What libdiag calls for a DCI command with result, and for one without. */
struct dci_listeners {
    diag_dci_stream_cb log;
    diag_dci_stream_cb event;
    diag_dci_response_cb response;
};

constexpr dci_listeners with_result_listeners = {orvik_diag_cmd_response_by_dci_log_stream,
                                                 orvik_diag_cmd_response_by_dci_event_stream,
                                                 on_dci_response};

constexpr dci_listeners without_result_listeners = {
    orvik_diag_cmd_response_by_dci_log_stream_no_handle,
    orvik_diag_cmd_response_by_dci_event_stream_no_handle, on_dci_response_no_handle};

/* Where the result of a command goes. */
struct dci_reply {
    uint32_t time_out_ms;
    uint8_t* buf;
    uint32_t* len;
};

/* From the registered client to the request; 0 once it is sent. */
int send_dci_request(const char* function, const dci_listeners& listeners, int client_id,
                     uint16_t peripherals, const uint8_t* data, uint32_t data_len,
                     uint8_t* response_packet) {
    const int channel = local_processor;
    int err = diag_register_dci_signal_data(client_id, SIGRTMIN + 30);
    if (err != DIAG_DCI_NO_ERROR)
        return ORVIK_FAILED_IN(
            function, 1, "Could not register signal for DCI Data for ch:%d, err: %d, errno: %d",
            channel, err, errno);
    ORVIK_DBG_IN(function, "DCI Status on Processors for ch%d:", channel);
    err = diag_get_dci_support_list_proc(channel, &peripherals);
    if (err != DIAG_DCI_NO_ERROR)
        return ORVIK_FAILED_IN(function, 1,
                               "Could not get support list for ch %d, err: %d, errno: %d", channel,
                               err, errno);
    ORVIK_DBG_IN(function, "MPSS on ch:%d: %s", channel,
                 (peripherals & DIAG_CON_MPSS) != 0 ? "UP" : "DOWN");
    ORVIK_DBG_IN(function, "Opening Data Stream, registering listeners for ch:%d", channel);
    err = diag_register_dci_stream_proc(client_id, listeners.log, listeners.event);
    if (err != DIAG_DCI_NO_ERROR)
        return ORVIK_FAILED_IN(function, 1,
                               "Unable to register DCI stream for ch:%d, err: %d, errno: %d",
                               channel, err, errno);
    ORVIK_DBG_IN(function, "Sending Asynchronous Command for ch:%d", channel);
    err = diag_send_dci_async_req(client_id, packet_bytes(data), static_cast<int>(data_len),
                                  response_packet, dci_response_size, listeners.response, nullptr);
    if (err != DIAG_DCI_NO_ERROR)
        return ORVIK_FAILED_IN(function, 1,
                               "Error sending SEND_REQUEST_ASYNC to peripheral %d for ch:%d", err,
                               channel);
    return 0;
}

int await_dci_reply(const char* function, const dci_reply& reply) {
    diag_wait& wait = *g_diag_shared.wait;
    const auto capacity = static_cast<int32_t>(*reply.len);
    wait.waiting = true;
    const int32_t ticks = static_cast<int32_t>(reply.time_out_ms) / static_cast<int32_t>(tick_ms);
    wait.limit = ticks;
    ORVIK_DBG_IN(function, "Dci Command time = %d", ticks);
    wait_for_response(wait);
    const int result = take_response(function, wait, reply.buf, reply.len, capacity);
    free_response();
    return result;
}

/* A whole DCI command while libdiag is up, which it takes down. reply: null for a command without
 * result, which only waits a while. */
int run_dci_command(const char* function, const uint8_t* data, uint32_t data_len,
                    const dci_reply* reply) {
    const std::unique_ptr<void, void (*)(void*)> response_packet(std::malloc(dci_response_size),
                                                                 std::free);
    static int client_signal = 18; /* SIGCONT; libdiag takes its address */
    const int channel = local_processor;
    uint16_t peripherals = DIAG_CON_MPSS;
    int client_id = 0;
    int err = 0;
    int result = 1;
    if (response_packet == nullptr) {
        ORVIK_DBG_IN(function, "Unable to allocate memory for DCI rsp pkt, errno: %d", errno);
    } else if (err = diag_register_dci_client(&client_id, &peripherals, channel, &client_signal);
               err != DIAG_DCI_NO_ERROR) {
        ORVIK_DBG_IN(function, "Could not register with DCI, err: %d, errno: %d ch:%d", err, errno,
                     channel);
    } else {
        ORVIK_DBG_IN(function, "Successfully registered with DCI for ch:%d, client ID = %d",
                     channel, client_id);
        result = send_dci_request(
            function, reply != nullptr ? with_result_listeners : without_result_listeners,
            client_id, peripherals, data, data_len, static_cast<uint8_t*>(response_packet.get()));
        if (result == 0 && reply != nullptr)
            result = await_dci_reply(function, *reply);
        else if (result == 0)
            pause_us(g_orvik_diag_pauses.dci_worker);
    }
    if (reply != nullptr)
        orvik_diag_deinit_with_result();
    else
        Diag_LSM_DeInit();
    if (err == DIAG_DCI_NO_ERROR) {
        err = diag_release_dci_client(&client_id);
        ORVIK_DBG_IN(function, "Releasing DCI connection, err: %d, errno: %d", err, errno);
    }
    return result;
}

} // namespace

int orvik_diag_cmd_send_with_result_by_dci_mode(const uint8_t* data, uint32_t data_len,
                                                uint32_t time_out_ms, uint8_t* reply_buf,
                                                uint32_t* p_reply_len) {
    ORVIK_FUNCTION_SCOPE();
    const std::lock_guard guard(g_diag_shared.send_mutex);
    if (!buffers_usable(__func__, data, data_len, reply_buf, p_reply_len))
        return 1;
    orvik_diag_init_with_result();
    const dci_reply reply = {time_out_ms, reply_buf, p_reply_len};
    return run_dci_command(__func__, data, data_len, &reply);
}

/* ==== without result ==== */

namespace {

constexpr uint32_t work_mode_callback = 0;
constexpr uint32_t work_mode_dci = 1;

void worker_begins() {
    const std::lock_guard guard(g_diag_shared.event_mutex);
    ++g_diag_shared.workers;
}

void worker_ends() {
    const std::lock_guard guard(g_diag_shared.event_mutex);
    --g_diag_shared.workers;
    g_diag_shared.worker_ended.notify_all();
}

/* The workers' threads. worker_ends comes after the last line that the body logs. */
void* callback_worker(void* block) {
    name_this_thread();
    orvik_diag_cmd_send_without_result_by_callback_mode_thread_proc(block);
    worker_ends();
    return nullptr;
}

void* dci_worker(void* block) {
    name_this_thread();
    orvik_diag_cmd_send_without_result_by_dci_mode_thread_proc(block);
    worker_ends();
    return nullptr;
}

} // namespace

/* Sends the packet in the block, which it frees. libdiag is brought up without being counted. */
static void* run_worker(const char* function, void* block, bool dci) {
    const std::lock_guard guard(g_diag_shared.worker_mutex);
    const std::unique_ptr<void, void (*)(void*)> owned(block, std::free);
    if (block == nullptr) {
        ORVIK_DBG_IN(function, "param is null");
        return nullptr;
    }
    uint32_t data_len;
    std::memcpy(&data_len, block, sizeof data_len);
    const uint8_t* const data = static_cast<const uint8_t*>(block) + sizeof data_len;
    ORVIK_DBG_IN(function, "data_len = %d", data_len);
    if (!Diag_LSM_Init(nullptr)) {
        ORVIK_DBG_IN(function, "LSM init failed");
        return nullptr;
    }
    if (dci) {
        run_dci_command(function, data, data_len, nullptr);
        return nullptr;
    }
    orvik_diag_register_callback(on_packet_no_handle);
    diag_switch_logging(DIAG_CALLBACK_MODE, nullptr);
    const int ret =
        diag_callback_send_data(local_processor, packet_bytes(data), static_cast<int>(data_len));
    ORVIK_DBG_IN(function, "ret_send = %d, will wait callback", ret);
    pause_us(g_orvik_diag_pauses.callback_worker);
    diag_switch_logging(DIAG_USB_MODE, nullptr);
    Diag_LSM_DeInit();
    return nullptr;
}

void* orvik_diag_cmd_send_without_result_by_callback_mode_thread_proc(void* block) {
    ORVIK_FUNCTION_SCOPE();
    return run_worker(__func__, block, false);
}

void* orvik_diag_cmd_send_without_result_by_dci_mode_thread_proc(void* block) {
    ORVIK_FUNCTION_SCOPE();
    return run_worker(__func__, block, true);
}

int orvik_diag_cmd_send_without_result_start_thread(const uint8_t* data, uint32_t data_len,
                                                    uint32_t diag_work_mode) {
    ORVIK_FUNCTION_SCOPE();
    if (orvik_diag_comand_input_check(data, data_len) != 0)
        return ORVIK_FAILED(1, "orvik_diag_comand_input_check fail");
    auto* const block = static_cast<uint8_t*>(std::malloc(size_t{data_len} + 5));
    if (block == nullptr) {
        ORVIK_ERR("Failed to allocate memory for ptr_out");
        return 1;
    }
    std::memcpy(block, &data_len, sizeof data_len);
    std::memcpy(block + sizeof data_len, data, data_len);
    worker_begins();
    const int conf = create_detached_thread(
        diag_work_mode == work_mode_callback ? callback_worker : dci_worker, block);
    ORVIK_DBG("orvik daig is created, conf = %d, diag_work_mode = %d", conf, diag_work_mode);
    if (conf != 0) {
        std::free(block);
        worker_ends();
    }
    return 0;
}

int orvik_diag_cmd_send_without_result_by_callback_mode(const uint8_t* data, uint32_t data_len) {
    return orvik_diag_cmd_send_without_result_start_thread(data, data_len, work_mode_callback);
}

int orvik_diag_cmd_send_without_result_by_dci_mode(const uint8_t* data, uint32_t data_len) {
    return orvik_diag_cmd_send_without_result_start_thread(data, data_len, work_mode_dci);
}

bool orvik_diag_wait_for_workers(uint32_t time_out_ms) {
    std::unique_lock lock(g_diag_shared.event_mutex);
    return g_diag_shared.worker_ended.wait_for(lock, std::chrono::milliseconds(time_out_ms),
                                               [] { return g_diag_shared.workers == 0; });
}
