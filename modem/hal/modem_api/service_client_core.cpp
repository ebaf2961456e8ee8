/* Connecting and releasing. */
#include <chrono>
#include <cstdio>

#include "service_client_detail.h"

std::atomic<unsigned> g_client_retry_wait_ms{1000};

client_function_name::client_function_name(const service_client& c, const char* name) {
    std::snprintf(shown, sizeof shown, "%s_%s", c.traits.prefix, name);
}

namespace service_client_detail {

namespace {

constexpr qmi_service_instance any_port = QMI_CLIENT_INSTANCE_ANY;
constexpr int connection_attempts = 10;
constexpr uint32_t init_timeout = 4;
constexpr unsigned send_timeout_ms = 30000;

} // namespace

bool current(service_client& c, uint64_t generation) {
    const lock_type lock(c.mutex);
    return c.generation == generation;
}

void report(service_client& c, uint64_t generation, int32_t status) {
    client_operational_status_cb cb = nullptr;
    {
        const lock_type lock(c.mutex);
        if (c.generation == generation)
            cb = c.context.operational_status_callback;
    }
    if (cb != nullptr)
        cb(static_cast<int32_t>(c.traits.kind), status);
}

void drop_client_handle(service_client& c, lock_type& lock) {
    const qmi_client_type handle = std::exchange(c.context.client_handle, nullptr);
    c.context.connected = 0;
    if (handle == nullptr)
        return;
    c.released_handle = handle;
    c.changed.wait(lock, [&] { return c.handle_users == 0; });
    lock.unlock();
    qmi_client_release(handle);
    lock.lock();
}

static void drop_notifier(service_client& c, lock_type& lock) {
    const qmi_client_type notifier = std::exchange(c.context.notifier_handle, nullptr);
    if (notifier == nullptr)
        return;
    lock.unlock();
    qmi_client_release(notifier);
    lock.lock();
}

/* ---- connect ---- */

static bool wait_for_next_attempt(service_client& c, uint64_t generation) {
    lock_type lock(c.mutex);
    return !c.changed.wait_for(lock, std::chrono::milliseconds(g_client_retry_wait_ms),
                               [&] { return c.generation != generation; });
}

/* The phase is connecting: nobody else makes or drops handles, except a release, which waits until
 * this thread has left and then finds them in the context. */
bool connect(service_client& c, uint64_t generation) {
    static constexpr const char* name = "client_init_client_handles";
    qmi_idl_service_object_type service = nullptr;
    {
        lock_type lock(c.mutex);
        drop_client_handle(c, lock);
        drop_notifier(c, lock);
        service = c.context.service_object;
    }
    CLIENT_LOG(c, "client_get_master_port", "using port %d", static_cast<int>(any_port));
    qmi_client_type handle = nullptr;
    int error = QMI_INTERNAL_ERR;
    for (int attempt = 0; attempt < connection_attempts; ++attempt) {
        if (attempt > 0 && !wait_for_next_attempt(c, generation))
            break;
        CLIENT_LOG(c, name, "Trying qmi_client_init_instance() try # %d port[%d]", attempt,
                   static_cast<int>(any_port));
        handle = nullptr;
        error = qmi_client_init_instance(service, any_port, c.traits.unsol_ind_cb, nullptr,
                                         &c.context.os_params, init_timeout, &handle);
        if (c.traits.after_attempt != nullptr)
            c.traits.after_attempt(error == QMI_NO_ERR ? handle : nullptr);
        if (error == QMI_NO_ERR)
            break;
    }
    CLIENT_LOG(c, name, "qmi_client_init_instance returned (%d)", error);
    const bool connected = error == QMI_NO_ERR;
    if (!connected) {
        CLIENT_LOG(c, name, "qmi_client_init_instance returned failure(%d)", error);
    } else {
        {
            const lock_type lock(c.mutex);
            c.context.client_handle = handle;
        }
        qmi_client_register_error_cb(handle, c.traits.service_down_event, nullptr);
        {
            const lock_type lock(c.mutex);
            c.context.connected = 1;
        }
        if (c.traits.after_connect != nullptr)
            c.traits.after_connect();
    }
    CLIENT_LOG(c, name, "function exit with ret %ld", connected ? 0L : 1L);
    return connected;
}

namespace {

/* Claims the client for connecting; false while somebody else connects or suspends it. */
bool begin_connecting(service_client& c, lock_type& lock) {
    c.changed.wait(lock, [&] { return !c.taking_down; });
    if (c.phase != service_client::idle && c.phase != service_client::connected &&
        c.phase != service_client::suspended)
        return false;
    c.phase = service_client::connecting;
    c.event_pending = false;
    return true;
}

/* ---- release ---- */

/* Ends whatever the client is doing, releases its handles and clears the context. */
void take_down(service_client& c, bool tell) {
    lock_type lock(c.mutex);
    c.changed.wait(lock, [&] { return !c.taking_down; });
    c.taking_down = true;
    ++c.generation;
    c.phase = service_client::idle;
    c.event_pending = false;
    c.changed.notify_all(); /* ends the wait between two connection attempts */
    c.changed.wait(lock, [&] { return c.inside == 0; });

    const client_operational_status_cb cb = c.context.operational_status_callback;
    if (tell && cb != nullptr) {
        lock.unlock();
        cb(static_cast<int32_t>(c.traits.kind), CLIENT_RELEASED);
        lock.lock();
    }
    drop_client_handle(c, lock);
    drop_notifier(c, lock);
    /* Only now: the OS parameters must outlive both handles. */
    c.context = {};
    c.taking_down = false;
    c.changed.notify_all();
}

} // namespace

} // namespace service_client_detail

using namespace service_client_detail;

qmi_idl_service_object_type service_client_start(service_client& c) {
    take_down(c, false);
    const qmi_idl_service_object_type service =
        c.traits.service_object(1, c.traits.minor, QMI_IDL_LIBRARY_VERSION);
    const lock_type lock(c.mutex);
    c.context.command_callback = c.traits.command_cb;
    c.context.service_object = service;
    return service;
}

int service_client_init(service_client& c, client_indication_handler handler) {
    static constexpr const char* name = "client_init";
    visit inside(c);
    uint64_t generation = 0;
    bool claimed = false;
    {
        lock_type lock(c.mutex);
        claimed = begin_connecting(c, lock);
        if (claimed) {
            inside.enter();
            c.context.indication_handler = handler;
            generation = c.generation;
        }
    }
    CLIENT_LOG_AT(RAVEX_LOG_DEBUG, c, name, "Client connecting to QMI FW");
    bool connected = false;
    if (claimed) {
        report(c, generation, CLIENT_CONNECTING);
        connected = current(c, generation) && connect(c, generation);
        report(c, generation, connected ? CLIENT_CONNECTED : CLIENT_INIT_FAILED);
        finish_connecting(c, generation, connected);
    }
    CLIENT_LOG(c, name, "function exit with ret %ld", connected ? 1L : 0L);
    return connected ? 1 : 0;
}

int service_client_init_client_handles(service_client& c) {
    visit inside(c);
    uint64_t generation = 0;
    {
        lock_type lock(c.mutex);
        if (!begin_connecting(c, lock))
            return 0;
        inside.enter();
        generation = c.generation;
    }
    const bool connected = connect(c, generation);
    finish_connecting(c, generation, connected);
    return connected ? 1 : 0;
}

int service_client_release(service_client& c) {
    take_down(c, true);
    return 1;
}

void service_client_set_operational_status_callback(service_client& c,
                                                    client_operational_status_cb cb) {
    const lock_type lock(c.mutex);
    c.context.operational_status_callback = cb;
}

int service_client_send_msg_sync(service_client& c, uint32_t msg_id, void* req, uint32_t req_len,
                                 void* resp, uint32_t resp_len) {
    visit inside(c);
    qmi_client_type handle = nullptr;
    {
        const lock_type lock(c.mutex);
        handle = c.context.client_handle;
        if (handle == nullptr || c.taking_down)
            return QMI_CLIENT_INVALID_CLIENT;
        inside.enter_with_handle();
    }
    return qmi_client_send_msg_sync(handle, msg_id, req, req_len, resp, resp_len, send_timeout_ms);
}
