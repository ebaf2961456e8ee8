// SPDX-License-Identifier: Apache-2.0
/* Connecting, suspending, resuming and releasing: all that a client does in turns. */
#include <chrono>
#include <cstdio>
#include <utility>

#include "service_client_core.h"

std::atomic<unsigned> g_client_retry_wait_ms{1000};

int (*g_client_thread_create)(pthread_t*, const pthread_attr_t*, void* (*)(void*),
                              void*) = pthread_create;

client_function_name::client_function_name(const service_client& c, const char* name) {
    std::snprintf(shown, sizeof shown, "%s_%s", c.traits.prefix, name);
}

namespace {

using lock_type = std::unique_lock<std::mutex>;

constexpr qmi_service_instance any_port = QMI_CLIENT_INSTANCE_ANY;
constexpr int connection_attempts = 10;
constexpr uint32_t init_timeout = 4;

/* ==== in a turn ==== */

void report(service_client& c, int32_t status) {
    client_operational_status_cb cb = nullptr;
    {
        const lock_type lock(c.mutex);
        cb = c.context.operational_status_callback;
    }
    if (cb != nullptr)
        run_client_handler(c, [&] { cb(static_cast<int32_t>(c.traits.kind), status); });
}

/* Takes the handle out of the context and releases it once the client has no user. The client handle
 * and the notifier never exist at the same time, so what is due belongs to the one that goes. */
void drop_handle(service_client& c, qmi_client_type service_client_context::*which) {
    lock_type lock(c.mutex);
    const qmi_client_type handle = std::exchange(c.context.*which, nullptr);
    c.changed.wait(lock, [&] { return c.users == 0; });
    if (handle == nullptr)
        return;
    c.due = service_client::nothing;
    c.context.connected = 0;
    lock.unlock();
    qmi_client_release(handle);
}

void drop_handles(service_client& c) {
    drop_handle(c, &service_client_context::client_handle);
    drop_handle(c, &service_client_context::notifier_handle);
}

bool wait_for_next_attempt(service_client& c) {
    lock_type lock(c.mutex);
    return !c.changed.wait_for(lock, std::chrono::milliseconds(g_client_retry_wait_ms),
                               [&] { return c.ending > 0; });
}

/* Up to ten attempts. */
bool connect(service_client& c) {
    static constexpr const char* name = "client_init_client_handles";
    drop_handles(c);
    {
        const lock_type lock(c.mutex);
        c.making_handle = true;
    }
    CLIENT_LOG(c, "client_get_master_port", "using port %d", static_cast<int>(any_port));
    qmi_client_type handle = nullptr;
    int error = QMI_INTERNAL_ERR;
    for (int attempt = 0; attempt < connection_attempts; ++attempt) {
        if (attempt > 0 && !wait_for_next_attempt(c))
            break;
        CLIENT_LOG(c, name, "Trying qmi_client_init_instance() try # %d port[%d]", attempt,
                   static_cast<int>(any_port));
        handle = nullptr;
        error = qmi_client_init_instance(c.context.service_object, any_port, c.traits.unsol_ind_cb,
                                         nullptr, &c.context.os_params, init_timeout, &handle);
        if (c.traits.after_attempt != nullptr)
            c.traits.after_attempt(error == QMI_NO_ERR ? handle : nullptr);
        if (error == QMI_NO_ERR)
            break;
    }
    const bool connected = error == QMI_NO_ERR;
    {
        const lock_type lock(c.mutex);
        c.making_handle = false;
        if (connected) {
            c.context.client_handle = c.last_client_handle = handle;
            c.context.connected = 1;
        }
    }
    CLIENT_LOG(c, name, "qmi_client_init_instance returned (%d)", error);
    if (!connected) {
        CLIENT_LOG(c, name, "qmi_client_init_instance returned failure(%d)", error);
    } else {
        qmi_client_register_error_cb(handle, c.traits.service_down_event, nullptr);
        if (c.traits.after_connect != nullptr)
            c.traits.after_connect();
    }
    CLIENT_LOG(c, name, "function exit with ret %ld", connected ? 0L : 1L);
    return connected;
}

void suspend(service_client& c) {
    static constexpr const char* name = "client_release_qmi_client_thread";
    drop_handle(c, &service_client_context::client_handle);
    report(c, CLIENT_SUSPENDED);
    qmi_client_type notifier = nullptr;
    int error = qmi_client_notifier_init(c.context.service_object, &c.context.os_params, &notifier);
    CLIENT_LOG(c, name, "qmi_client_notifier_init return %d", error);
    if (error != QMI_NO_ERR)
        return;
    {
        const lock_type lock(c.mutex);
        c.context.notifier_handle = notifier;
    }
    error = qmi_client_register_notify_cb(notifier, c.traits.service_up_event, nullptr);
    CLIENT_LOG(c, name, "qmi_client_register_notify_cb %d", error);
}

void resume(service_client& c) {
    const bool connected = connect(c); /* releases the notifier first */
    report(c, connected ? CLIENT_CONNECTED : CLIENT_RESUME_FAILED);
}

void* run_worker(void* client) {
    service_client_work(*static_cast<service_client*>(client));
    return nullptr;
}

/* Detached: nobody joins a worker. */
bool start_worker(service_client& c) {
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0)
        return false;
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    pthread_t thread{};
    const bool started = g_client_thread_create(&thread, &attr, run_worker, &c) == 0;
    pthread_attr_destroy(&attr);
    return started;
}

/* What an event leads to; it is down or up. The worker that is started here waits for the end of
 * this turn. If it can't be started, the handle stays: a notifier may report the service once more.
 */
void act_on_event(service_client& c, service_client::due_type event) {
    const bool down = event == service_client::down;
    report(c, down ? CLIENT_SUSPENDING : CLIENT_RESUMING);
    if (start_worker(c))
        return;
    {
        const lock_type lock(c.mutex);
        c.due = service_client::nothing;
    }
    report(c, down ? CLIENT_RELEASED : CLIENT_RESUME_FAILED);
}

/* ==== turns ==== */

/* Called after an event was noted and at the end of each turn. During somebody's turn it does
 * nothing, since the end of that turn calls it again: no event is lost and no callback waits. */
void act_on_events(service_client& c, lock_type& lock) {
    while (!c.in_turn && (c.due == service_client::down || c.due == service_client::up)) {
        const service_client::due_type event = c.due;
        c.due = event == service_client::down ? service_client::suspend : service_client::resume;
        c.in_turn = true;
        lock.unlock();
        act_on_event(c, event);
        lock.lock();
        c.in_turn = false;
        c.changed.notify_all();
    }
}

/* A turn first finishes what is due. The worker for it, if it comes later, then finds nothing due.
 */
class turn {
  public:
    explicit turn(service_client& c) : c_(c) {
        lock_type lock(c.mutex);
        c.changed.wait(lock, [&] { return !c.in_turn; });
        c.in_turn = true;
        const service_client::due_type due = c.due;
        lock.unlock();
        if (due == service_client::suspend)
            suspend(c);
        else if (due == service_client::resume)
            resume(c);
    }
    ~turn() {
        lock_type lock(c_.mutex);
        c_.in_turn = false;
        c_.changed.notify_all();
        act_on_events(c_, lock);
    }
    turn(const turn&) = delete;
    turn& operator=(const turn&) = delete;

  private:
    service_client& c_;
};

/* Releases the handles and clears the context. A connection under way makes no further attempt.
 * anew: reports nothing, and fetches the service object again. */
qmi_idl_service_object_type end_client(service_client& c, bool anew) {
    {
        const lock_type lock(c.mutex);
        ++c.ending;
        c.changed.notify_all();
    }
    const turn mine(c);
    if (!anew)
        report(c, CLIENT_RELEASED);
    drop_handles(c);
    lock_type lock(c.mutex);
    --c.ending;
    c.context = {}; /* only now: the OS parameters must outlive both handles */
    if (anew) {
        c.context.command_callback = c.traits.command_cb;
        c.context.service_object =
            c.traits.service_object(1, c.traits.minor, QMI_IDL_LIBRARY_VERSION);
    }
    return c.context.service_object;
}

} // namespace

/* ==== the functions of an instance ==== */

qmi_idl_service_object_type service_client_start(service_client& c) { return end_client(c, true); }

int service_client_release(service_client& c) {
    end_client(c, false);
    return 1;
}

int service_client_init(service_client& c, client_indication_handler handler) {
    static constexpr const char* name = "client_init";
    const turn mine(c);
    {
        const lock_type lock(c.mutex);
        c.context.indication_handler = handler;
    }
    CLIENT_LOG_AT(RAVEX_LOG_DEBUG, c, name, "Client connecting to QMI FW");
    report(c, CLIENT_CONNECTING);
    const bool connected = connect(c);
    report(c, connected ? CLIENT_CONNECTED : CLIENT_INIT_FAILED);
    CLIENT_LOG(c, name, "function exit with ret %ld", connected ? 1L : 0L);
    return connected ? 1 : 0;
}

int service_client_init_client_handles(service_client& c) {
    const turn mine(c);
    return connect(c) ? 1 : 0;
}

void service_client_work(service_client& c) { const turn mine(c); }

void service_client_service_down(service_client& c, qmi_client_type handle, int32_t error) {
    CLIENT_LOG(c, "client_service_down_event", "service down with error %d", error);
    lock_type lock(c.mutex);
    /* from a client that was released already */
    if (handle == nullptr || handle != c.context.client_handle || c.due != service_client::nothing)
        return;
    c.due = service_client::down;
    act_on_events(c, lock);
}

void service_client_service_up(service_client& c, int32_t event) {
    lock_type lock(c.mutex);
    if (event != QMI_CLIENT_SERVICE_COUNT_INC || c.context.notifier_handle == nullptr ||
        c.due != service_client::nothing)
        return;
    c.due = service_client::up;
    act_on_events(c, lock);
}
