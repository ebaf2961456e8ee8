/* The framework's callbacks and the two workers. */
#include "service_client_detail.h"
#include "traced_alloc.h"

int (*g_client_thread_create)(pthread_t*, const pthread_attr_t*, void* (*)(void*),
                              void*) = pthread_create;

using namespace service_client_detail;

namespace {

using worker_body = void (*service_client_traits::*)();

template <worker_body Body> void* run_worker(void* client) {
    auto& c = *static_cast<service_client*>(client);
    const visit inside(c, visit::already);
    (c.traits.*Body)();
    return nullptr;
}

/* Workers are detached: nobody joins them, and release waits for them by count. A worker counts
 * before it exists, so that none of an earlier generation is left to run. The caller is inside. */
template <worker_body Body> bool start_worker(service_client& c) {
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0)
        return false;
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    visit worker(c);
    {
        const lock_type lock(c.mutex);
        worker.enter();
    }
    pthread_t thread{};
    const bool started = g_client_thread_create(&thread, &attr, run_worker<Body>, &c) == 0;
    if (started)
        worker.leave_to_another();
    pthread_attr_destroy(&attr);
    return started;
}

void finish_suspending(service_client& c, uint64_t generation);

/* Both tell that a transition begins and start its worker. Without one, the client is idle again,
 * or still suspended: the notifier stands, so the next service up gives it another try. */
void enter_suspend(service_client& c, uint64_t generation) {
    report(c, generation, CLIENT_SUSPENDING);
    if (!current(c, generation) || start_worker<&service_client_traits::release_worker>(c))
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
    if (!current(c, generation) || start_worker<&service_client_traits::resume_worker>(c))
        return;
    report(c, generation, CLIENT_RESUME_FAILED);
    finish_suspending(c, generation);
}

/* The client is suspended now; acts on a service that came up in the meantime. */
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

} // namespace

void service_client_detail::finish_connecting(service_client& c, uint64_t generation,
                                              bool connected) {
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

/* ---- the framework's callbacks ---- */

void service_client_unsol_ind(service_client& c, const char* function, qmi_client_type handle,
                              uint32_t msg_id, void* buf, uint32_t len) {
    ravex_log_line(RAVEX_LOG_DEFAULT, function, "function entry");
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
    void* const decoded = ravex_malloc_adv(size > 0 ? size : 1, function, __LINE__);
    if (decoded == nullptr)
        return;
    const int error =
        qmi_client_message_decode(handle, QMI_IDL_INDICATION, msg_id, buf, len, decoded, size);
    inside.done_with_handle();
    if (error != QMI_NO_ERR) {
        ravex_log_line(RAVEX_LOG_ERROR, function,
                       "Indication decode failed for msg 0x%x with error %d", msg_id, error);
    } else {
        CLIENT_LOG(c, "client_ind_hdlr", "Handling indication msg 0x%x", msg_id);
        if (c.traits.indication == nullptr || !c.traits.indication(handler, msg_id, decoded, size))
            CLIENT_LOG(c, "client_ind_hdlr", "Unknown indication msg %0x", msg_id);
    }
    ravex_free_adv(decoded, function, __LINE__);
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
        if (c.phase == service_client::suspending || c.phase == service_client::resume_due)
            c.event_pending = true;
        if (c.phase != service_client::suspended)
            return;
        c.phase = service_client::resume_due;
        generation = c.generation;
        inside.enter();
    }
    enter_resume(c, generation);
}

/* ---- workers: counted as inside by who starts them ---- */

void service_client_release_worker(service_client& c) {
    static constexpr const char* name = "client_release_qmi_client_thread";
    uint64_t generation = 0;
    qmi_idl_service_object_type service = nullptr;
    {
        lock_type lock(c.mutex);
        if (c.taking_down || c.phase != service_client::suspend_due)
            return;
        c.phase = service_client::suspending;
        c.event_pending = false;
        generation = c.generation;
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
    uint64_t generation = 0;
    {
        const lock_type lock(c.mutex);
        if (c.taking_down || c.phase != service_client::resume_due)
            return;
        c.phase = service_client::connecting;
        c.event_pending = false;
        generation = c.generation;
    }
    const bool connected = connect(c, generation); /* releases the notifier first */
    report(c, generation, connected ? CLIENT_CONNECTED : CLIENT_RESUME_FAILED);
    finish_connecting(c, generation, connected);
}
