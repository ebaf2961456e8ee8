// SPDX-License-Identifier: Apache-2.0
/* The client side of QMI: clients and notifiers of this process, and the framework's thread, which
 * tells them of restarts, services and indications. */
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "qmi_cci.h"

#include "modem/modem.h"

namespace simphone {

struct Client {
    qmi_client_type handle = nullptr;
    qmi_idl_service_object_type service = nullptr;
    qmi_client_os_params* os_params = nullptr;
    bool notifier = false;

    std::unique_ptr<Service> modem_side; /* guarded by the phone's lock and exchange */
    std::mutex exchange;                 /* one request at a time in the modem */
    uint16_t transaction = 0;            /* guarded by exchange */
    uint32_t born = 0;                   /* restarts of the modem before this client */

    /* Guarded by the framework's mutex. */
    qmi_client_ind_cb ind_cb = nullptr;
    void* ind_cb_data = nullptr;
    qmi_client_error_cb error_cb = nullptr;
    void* error_cb_data = nullptr;
    qmi_client_notify_cb notify_cb = nullptr;
    void* notify_cb_data = nullptr;
    bool reported_gone = false;
    bool reported_up = false;
    uint32_t reported_restarts = 0; /* restarts of the modem when reported_up was true last */
};

/* Never destroyed: its thread may still run when the process ends. */
class Framework {
  public:
    static Framework& instance();

    /* Handles are small fixed numbers: 1, 2, 3... in the order of creation. Throws, and adds
     * nothing, when there is no memory or thread for it. */
    qmi_client_type add(const std::shared_ptr<Client>& client);
    std::shared_ptr<Client> find(qmi_client_type handle);
    bool remove(qmi_client_type handle);

    /* Runs change(client) under the framework's mutex and makes sure that its thread runs; without
     * a thread it throws and changes nothing. */
    bool change(qmi_client_type handle, const std::function<void(Client&)>& change);

    /* Looks at restarts, services and waiting indications now, on the framework's thread, and waits
     * until that is done: what reached the client side before an answer is delivered before it.
     * Does nothing on the framework's own thread. */
    void deliver_waiting();

    /* True while indications wait in the phone's folder ind or are being delivered. */
    bool indications_under_way();

  private:
    Framework() = default;
    void start_thread();
    void run();
    void look(); /* one round on the framework's thread */
    void report_restart();
    void report_services();
    void report_indications();
    std::vector<std::shared_ptr<Client>> snapshot();
    bool registered(const Client& client) const; /* the mutex is held */

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    std::map<uintptr_t, std::shared_ptr<Client>> clients_;
    uintptr_t last_handle_ = 0;
    bool started_ = false;
    std::thread::id thread_id_;
    uint64_t requested_ = 0; /* looks at the phone that somebody waits for */
    uint64_t completed_ = 0;
    std::atomic<bool> delivering_{false};
};

} // namespace simphone
