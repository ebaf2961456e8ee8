#include "service_client_core.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include "traced_alloc.h"

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
constexpr unsigned send_timeout_ms = 30000;

/* How deep this thread is inside each client. */
thread_local int t_inside[CLIENT_KINDS];

/* Counts the thread as inside from enter to the end of the scope. Declared before the scope's lock,
 * so that it ends after it. */
class visit {
  public:
    explicit visit(service_client& c) : c_(c) {}
    ~visit() {
        if (!entered_)
            return;
        const lock_type lock(c_.mutex);
        --c_.inside;
        --t_inside[c_.traits.kind];
        c_.handle_users -= using_handle_ ? 1 : 0;
        c_.changed.notify_all();
    }
    visit(const visit&) = delete;
    visit& operator=(const visit&) = delete;

    /* Both with the mutex held. */
    void enter() {
        entered_ = true;
        ++c_.inside;
        ++t_inside[c_.traits.kind];
    }
    void enter_with_handle() {
        enter();
        using_handle_ = true;
        ++c_.handle_users;
    }

    void done_with_handle() {
        const lock_type lock(c_.mutex);
        using_handle_ = false;
        --c_.handle_users;
        c_.changed.notify_all();
    }

  private:
    service_client& c_;
    bool entered_ = false;
    bool using_handle_ = false;
};

/* While a thread waits for the others to leave, it counts as outside: a callback may release its
 * own client, and two may do it at once. The mutex is held. */
class stand_aside {
  public:
    explicit stand_aside(service_client& c) : c_(c), depth_(t_inside[c.traits.kind]) {
        c_.inside -= depth_;
        c_.changed.notify_all();
    }
    ~stand_aside() { c_.inside += depth_; }
    stand_aside(const stand_aside&) = delete;
    stand_aside& operator=(const stand_aside&) = delete;

  private:
    service_client& c_;
    int depth_;
};

bool current(service_client& c, uint64_t generation) {
    const lock_type lock(c.mutex);
    return c.generation == generation;
}

/* Tells a status, unless the client was released or initialised anew since generation. */
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

/* Workers are detached: nobody joins them, and release waits for them by count. */
bool start_worker(void* (*body)(void*)) {
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0)
        return false;
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    pthread_t thread{};
    const int error = g_client_thread_create(&thread, &attr, body, nullptr);
    pthread_attr_destroy(&attr);
    return error == 0;
}

/* Takes the handle out of the context and releases it once nobody uses it. The mutex is held, but
 * not during the release. */
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

void drop_notifier(service_client& c, lock_type& lock) {
    const qmi_client_type notifier = std::exchange(c.context.notifier_handle, nullptr);
    if (notifier == nullptr)
        return;
    lock.unlock();
    qmi_client_release(notifier);
    lock.lock();
}

/* ---- connect ---- */

bool wait_for_next_attempt(service_client& c, uint64_t generation) {
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

/* Claims the client for connecting; false while somebody else connects or suspends it. */
bool begin_connecting(service_client& c, lock_type& lock) {
    const stand_aside aside(c);
    c.changed.wait(lock, [&] { return !c.taking_down; });
    if (c.phase != service_client::idle && c.phase != service_client::connected &&
        c.phase != service_client::suspended)
        return false;
    c.phase = service_client::connecting;
    c.event_pending = false;
    return true;
}

void enter_suspend(service_client& c, uint64_t generation) {
    report(c, generation, CLIENT_SUSPENDING);
    if (!current(c, generation) || start_worker(c.traits.release_worker))
        return;
    {
        const lock_type lock(c.mutex);
        if (c.generation == generation)
            c.phase = service_client::idle;
    }
    report(c, generation, CLIENT_RELEASED);
}

void enter_resume(service_client& c, uint64_t generation) {
    report(c, generation, CLIENT_RESUMING);
    if (!current(c, generation) || start_worker(c.traits.resume_worker))
        return;
    {
        const lock_type lock(c.mutex);
        if (c.generation == generation)
            c.phase = service_client::idle;
    }
    report(c, generation, CLIENT_RESUME_FAILED);
}

/* Ends the connecting phase, after its status was told, and acts on a service that went down in the
 * meantime. */
void finish_connecting(service_client& c, uint64_t generation, bool connected) {
    {
        const lock_type lock(c.mutex);
        if (c.generation != generation)
            return;
        const bool down = std::exchange(c.event_pending, false) && connected;
        c.phase = down        ? service_client::suspend_due
                  : connected ? service_client::connected
                              : service_client::idle;
        if (!down)
            return;
    }
    enter_suspend(c, generation);
}

/* The same for the suspending phase and a service that came up. */
void finish_suspending(service_client& c, uint64_t generation) {
    {
        const lock_type lock(c.mutex);
        if (c.generation != generation)
            return;
        const bool up = std::exchange(c.event_pending, false);
        c.phase = up ? service_client::resume_due : service_client::suspended;
        if (!up)
            return;
    }
    enter_resume(c, generation);
}

/* ---- release ---- */

/* Ends whatever the client is doing, releases its handles and clears the context. */
void take_down(service_client& c, bool tell) {
    lock_type lock(c.mutex);
    const stand_aside aside(c);
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

/* ---- the framework's callbacks ---- */

void service_client_unsol_ind(service_client& c, qmi_client_type handle, uint32_t msg_id, void* buf,
                              uint32_t len) {
    static constexpr const char* name = "client_unsol_ind_cb";
    CLIENT_LOG(c, name, "function entry");
    visit inside(c);
    client_indication_handler handler = nullptr;
    qmi_idl_service_object_type service = nullptr;
    {
        const lock_type lock(c.mutex);
        /* While connecting, the framework may know the new handle before we do. */
        const bool ours = handle == c.context.client_handle ||
                          (c.phase == service_client::connecting &&
                           c.context.client_handle == nullptr && handle != c.released_handle);
        handler = c.context.indication_handler;
        if (c.taking_down || handler == nullptr || handle == nullptr || !ours)
            return;
        service = c.context.service_object;
        inside.enter_with_handle();
    }
    uint32_t size = 0;
    qmi_idl_get_message_c_struct_len(service, QMI_IDL_INDICATION, static_cast<uint16_t>(msg_id),
                                     &size);
    void* const decoded = ravex_malloc_adv(size > 0 ? size : 1, __func__, __LINE__);
    if (decoded == nullptr)
        return;
    const int error =
        qmi_client_message_decode(handle, QMI_IDL_INDICATION, msg_id, buf, len, decoded, size);
    inside.done_with_handle();
    if (error != QMI_NO_ERR) {
        CLIENT_LOG_AT(RAVEX_LOG_ERROR, c, name,
                      "Indication decode failed for msg 0x%x with error %d", msg_id, error);
    } else {
        CLIENT_LOG(c, "client_ind_hdlr", "Handling indication msg 0x%x", msg_id);
        if (c.traits.indication == nullptr || !c.traits.indication(handler, msg_id, decoded, size))
            CLIENT_LOG(c, "client_ind_hdlr", "Unknown indication msg %0x", msg_id);
    }
    ravex_free_adv(decoded, __func__, __LINE__);
}

void service_client_service_down(service_client& c, qmi_client_type handle, int32_t error) {
    CLIENT_LOG(c, "client_service_down_event", "service down with error %d", error);
    visit inside(c);
    uint64_t generation = 0;
    {
        const lock_type lock(c.mutex);
        if (c.taking_down || handle == nullptr || handle != c.context.client_handle)
            return; /* of a client that is no more */
        if (c.phase == service_client::connecting)
            c.event_pending = true;
        if (c.phase != service_client::connected)
            return;
        c.phase = service_client::suspend_due;
        generation = c.generation;
        inside.enter();
    }
    enter_suspend(c, generation);
}

void service_client_service_up(service_client& c, int32_t event) {
    if (event != QMI_CLIENT_SERVICE_COUNT_INC)
        return;
    visit inside(c);
    uint64_t generation = 0;
    {
        const lock_type lock(c.mutex);
        if (c.taking_down)
            return;
        if (c.phase == service_client::suspending)
            c.event_pending = true;
        if (c.phase != service_client::suspended)
            return;
        c.phase = service_client::resume_due;
        generation = c.generation;
        inside.enter();
    }
    enter_resume(c, generation);
}

/* ---- workers ---- */

void service_client_release_worker(service_client& c) {
    static constexpr const char* name = "client_release_qmi_client_thread";
    visit inside(c);
    uint64_t generation = 0;
    qmi_idl_service_object_type service = nullptr;
    {
        lock_type lock(c.mutex);
        if (c.taking_down || c.phase != service_client::suspend_due)
            return;
        c.phase = service_client::suspending;
        c.event_pending = false;
        generation = c.generation;
        inside.enter();
        drop_client_handle(c, lock);
    }
    report(c, generation, CLIENT_SUSPENDED);
    qmi_client_type notifier = nullptr;
    {
        const lock_type lock(c.mutex);
        if (c.generation != generation)
            return;
        notifier = c.context.notifier_handle;
        service = c.context.service_object;
    }
    int error = QMI_NO_ERR;
    if (notifier == nullptr) {
        error = qmi_client_notifier_init(service, &c.context.os_params, &notifier);
        CLIENT_LOG(c, name, "qmi_client_notifier_init return %d", error);
        const lock_type lock(c.mutex);
        c.context.notifier_handle = error == QMI_NO_ERR ? notifier : nullptr;
    }
    if (error == QMI_NO_ERR) {
        error = qmi_client_register_notify_cb(notifier, c.traits.service_up_event, nullptr);
        CLIENT_LOG(c, name, "qmi_client_register_notify_cb %d", error);
    }
    finish_suspending(c, generation);
}

void service_client_resume_worker(service_client& c) {
    visit inside(c);
    uint64_t generation = 0;
    {
        const lock_type lock(c.mutex);
        if (c.taking_down || c.phase != service_client::resume_due)
            return;
        c.phase = service_client::connecting;
        c.event_pending = false;
        generation = c.generation;
        inside.enter();
    }
    const bool connected = connect(c, generation); /* releases the notifier first */
    report(c, generation, connected ? CLIENT_CONNECTED : CLIENT_RESUME_FAILED);
    finish_connecting(c, generation, connected);
}
