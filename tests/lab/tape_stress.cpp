// SPDX-License-Identifier: Apache-2.0
/* Many DIAG exchanges, or many restarts of the modem under a service client, in one process: what
 * recorder and replayer are tried with.
 *
 *     tape_stress diag N        exchanges, in both modes in turn
 *     tape_stress restarts N
 *
 * Prints what it got. Status 0 when all went well. */
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "log_lines.h"
#include "orvik_diag_send.h"
#include "orvik_extend_idl.h"
#include "qmi_vs.h"
#include "vs_client.h"

namespace {

int exchanges(int wanted) {
    g_orvik_diag_pauses.tick = 2000;
    int good = 0;
    for (int i = 0; i < wanted; ++i) {
        const uint8_t packet[] = {0x7B, static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8)};
        uint8_t reply[64] = {};
        uint32_t length = sizeof reply;
        const auto send = i % 2 == 0 ? orvik_diag_cmd_send_with_result_by_callback_mode
                                     : orvik_diag_cmd_send_with_result_by_dci_mode;
        const int result = send(packet, sizeof packet, 60'000, reply, &length);
        /* DCI appends to what an answer before it left. */
        if (result == 0 && length >= sizeof packet &&
            std::memcmp(reply + length - sizeof packet, packet, sizeof packet) == 0)
            ++good;
    }
    std::printf("%d of %d exchanges answered\n", good, wanted);
    return good == wanted ? 0 : 1;
}

std::mutex& g_mutex = *new std::mutex;
std::condition_variable& g_changed = *new std::condition_variable;
int g_connected; /* how many times */

void on_status(int32_t, int32_t status) {
    if (status != CLIENT_CONNECTED)
        return;
    const std::lock_guard guard(g_mutex);
    ++g_connected;
    g_changed.notify_all();
}

bool wait_connected(int times) {
    std::unique_lock lock(g_mutex);
    return g_changed.wait_for(lock, std::chrono::seconds(30), [&] { return g_connected >= times; });
}

/* By a client of its own, since a restart ends every client. */
bool restart_modem() {
    qmi_client_os_params os_params{};
    qmi_client_type client = nullptr;
    if (qmi_client_init_instance(
            orvik_extend_get_service_object_internal_v01(1, 1, QMI_IDL_LIBRARY_VERSION),
            QMI_CLIENT_INSTANCE_ANY, nullptr, nullptr, &os_params, 1000, &client) != QMI_NO_ERR)
        return false;
    orvik_extend_common_record request{}, response{};
    request.id = REQUEST_ID_COMMON;
    request.data_len = sizeof request.data;
    request.data_valid = 1;
    const uint32_t words[] = {2, 0, 31, 4, 4096}; /* a typed record: restart */
    std::memcpy(request.data, words, sizeof words);
    const int sent = qmi_client_send_msg_sync(client, ORVIK_EXTEND_REQUEST, &request,
                                              sizeof request, &response, sizeof response, 3000);
    qmi_client_release(client);
    return sent == QMI_NO_ERR;
}

int restarts(int wanted) {
    g_client_retry_wait_ms = 5;
    vs_init();
    vs_client_set_operational_status_callback(on_status);
    if (vs_client_init(nullptr) != 1)
        return 1;
    int good = 0;
    for (int i = 0; i < wanted; ++i) {
        if (!wait_connected(i + 1))
            break;
        vs_set_feature_req_v01 request{static_cast<uint32_t>(i), 1, 1, 1, 0};
        vs_set_feature_resp_v01 response{};
        if (vs_client_send_msg_sync(QMI_VS_SET_FEATURE, &request, sizeof request, &response,
                                    sizeof response) == QMI_NO_ERR &&
            restart_modem())
            ++good;
    }
    const bool back = wait_connected(wanted + 1);
    vs_client_release();
    std::printf("%d of %d restarts gone through\n", good, wanted);
    return good == wanted && back ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const bool diag = std::strcmp(argv[1], "diag") == 0;
    const int count = std::atoi(argv[2]);
    const int status = diag ? exchanges(count) : restarts(count);
    std::fflush(stdout);
    return status;
}
