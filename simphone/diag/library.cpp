// SPDX-License-Identifier: Apache-2.0
#include "library.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "phone/guarded.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

Library& Library::instance() {
    static Library& library = *new Library;
    return library;
}

void Library::up() {
    const std::lock_guard lock(mutex_);
    if (up_)
        return;
    up_ = true;
    ++session_;
    mode_ = DIAG_USB_MODE;
}

void Library::down() {
    const bool loose = setting_number("diag/loose") != 0;
    std::unique_lock lock(mutex_);
    up_ = false;
    callbacks_.clear();
    queue_.clear(); /* what is on its way reaches nobody any more */
    if (!loose)
        wait_for_callback(lock);
}

bool Library::is_up() {
    const std::lock_guard lock(mutex_);
    return up_;
}

void Library::set_mode(int mode) {
    const std::lock_guard lock(mutex_);
    if (up_)
        mode_ = mode;
}

bool Library::register_callback(int processor, diag_packet_cb callback, void* context) {
    const std::lock_guard lock(mutex_);
    if (!up_)
        return false;
    callbacks_[processor] = {callback, context};
    return true;
}

int Library::add_client() {
    const std::lock_guard lock(mutex_);
    if (!up_)
        return 0;
    clients_[++last_client_] = {session_};
    return last_client_;
}

bool Library::has_client(int id) {
    const std::lock_guard lock(mutex_);
    return up_ && clients_.count(id) == 1;
}

bool Library::set_streams(int id, diag_dci_stream_cb log, diag_dci_stream_cb event) {
    const std::lock_guard lock(mutex_);
    const auto it = clients_.find(id);
    if (!up_ || it == clients_.end())
        return false;
    it->second.log = log;
    it->second.event = event;
    return true;
}

bool Library::remove_client(int id) {
    const bool loose = setting_number("diag/loose") != 0;
    std::unique_lock lock(mutex_);
    const bool known = clients_.erase(id) == 1;
    if (!loose)
        wait_for_callback(lock);
    return known;
}

void Library::wait_for_callback(std::unique_lock<std::mutex>& lock) {
    /* Bounded: a callback may itself wait for the caller. */
    idle_.wait_for(lock, std::chrono::seconds(1), [this] { return !delivering_; });
}

void Library::deliver(Deliveries deliveries) {
    const std::lock_guard lock(mutex_);
    if (!started_)
        std::thread([this] { run(); }).detach();
    started_ = true;
    for (auto& [due, delivery] : deliveries)
        delivery.session = session_;
    queue_.merge(deliveries);
    wake_.notify_one();
}

void Library::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (queue_.empty()) {
            wake_.wait(lock);
            continue;
        }
        const Clock::time_point due = queue_.begin()->first;
        if (due > Clock::now()) {
            wake_.wait_until(lock, due);
            continue;
        }
        auto first = queue_.extract(queue_.begin());
        lock.unlock();
        /* Without memory for it a packet is lost. */
        guarded(false, [&] { return hand_over(first.mapped()); });
        lock.lock();
        delivering_ = false;
        idle_.notify_all();
    }
}

bool Library::hand_over(Delivery& delivery) {
    std::unique_lock lock(mutex_);
    const bool taken = up_ && delivery.session == session_ &&
                       (delivery.kind == Delivery::Kind::packet ? hand_over_packet(lock, delivery)
                                                                : hand_over_dci(lock, delivery));
    if (!taken) {
        lock.unlock();
        log_line("diag", "lost " + to_hex(delivery.bytes));
    }
    return taken;
}

namespace {

/* Of an empty answer too there is an address. */
unsigned char* bytes_of(Delivery& delivery) {
    static unsigned char nothing;
    return delivery.bytes.empty() ? &nothing : delivery.bytes.data();
}

} // namespace

/* Both give the lock away when they call, and the bytes that they hand over are the phone's own:
 * they stay as they are whatever the callback's owner frees meanwhile. */

bool Library::hand_over_packet(std::unique_lock<std::mutex>& lock, Delivery& delivery) {
    const auto it = callbacks_.find(delivery.processor);
    if (mode_ != DIAG_CALLBACK_MODE || it == callbacks_.end() || it->second.function == nullptr)
        return false;
    const Callback callback = it->second;
    delivering_ = true;
    lock.unlock();
    log_line("diag", "rx " + to_hex(delivery.bytes));
    callback.function(bytes_of(delivery), static_cast<int>(delivery.bytes.size()),
                      delivery.no_context ? nullptr : callback.context);
    return true;
}

bool Library::hand_over_dci(std::unique_lock<std::mutex>& lock, Delivery& delivery) {
    const auto it = clients_.find(delivery.client);
    if (it == clients_.end() || it->second.session != session_)
        return false;
    const Client client = it->second;
    const auto length = static_cast<int>(delivery.bytes.size());
    if (delivery.kind == Delivery::Kind::dci_response && length > 0)
        std::memcpy(delivery.area, delivery.bytes.data(),
                    std::min(delivery.bytes.size(), delivery.area_size));
    delivering_ = true;
    lock.unlock();
    log_line("diag", "rx " + to_hex(delivery.bytes));
    switch (delivery.kind) {
    case Delivery::Kind::dci_log:
        if (client.log != nullptr)
            client.log(bytes_of(delivery), length);
        break;
    case Delivery::Kind::dci_event:
        if (client.event != nullptr)
            client.event(bytes_of(delivery), length);
        break;
    default:
        if (delivery.response != nullptr)
            delivery.response(bytes_of(delivery), length, delivery.response_context);
        break;
    }
    return true;
}

} // namespace simphone
