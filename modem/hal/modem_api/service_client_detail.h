/* What the sources of the service client share. */
#pragma once

#include <utility>

#include "service_client_core.h"

namespace service_client_detail {

using lock_type = std::unique_lock<std::mutex>;

/* Counts the thread as inside from enter to the end of the scope. Declared before the scope's lock,
 * so that it ends after it. */
class visit {
  public:
    enum already_type { already };

    explicit visit(service_client& c) : c_(c) {}
    visit(service_client& c, already_type) : c_(c), entered_(true) {}
    ~visit() {
        if (!entered_)
            return;
        const lock_type lock(c_.mutex);
        --c_.inside;
        c_.handle_users -= using_handle_ ? 1 : 0;
        c_.changed.notify_all();
    }
    visit(const visit&) = delete;
    visit& operator=(const visit&) = delete;

    /* Both with the mutex held. */
    void enter() {
        entered_ = true;
        ++c_.inside;
    }
    void enter_with_handle() {
        enter();
        using_handle_ = true;
        ++c_.handle_users;
    }

    /* Another thread ends the visit. */
    void leave_to_another() { entered_ = false; }

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

/* False when the client was released or initialised anew since generation. */
bool current(service_client& c, uint64_t generation);

/* Tells a status while the client is current. */
void report(service_client& c, uint64_t generation, int32_t status);

/* Takes the handle out of the context and releases it once nobody uses it. The mutex is held, but
 * not during the release. */
void drop_client_handle(service_client& c, lock_type& lock);

/* Up to ten attempts; the phase is connecting. */
bool connect(service_client& c, uint64_t generation);

/* Ends the connecting phase, after its status was told, and acts on a service that went down in the
 * meantime. */
void finish_connecting(service_client& c, uint64_t generation, bool connected);

} // namespace service_client_detail
