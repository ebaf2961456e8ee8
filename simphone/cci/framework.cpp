// SPDX-License-Identifier: Apache-2.0
#include "framework.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <sys/stat.h>

#include "phone/complaint.h"
#include "phone/guarded.h"
#include "phone/lock.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

/* How often the framework's thread looks at the phone's directory. */
constexpr auto look_interval = std::chrono::milliseconds(10);

/* An indication that waits in the phone's directory: ind/SERVICE.0xID or ind/SERVICE.0xID.ANYTHING,
 * its TLVs as bytes. */
struct Waiting {
    std::string service;
    uint32_t msg_id;
    Bytes tlvs;
};

std::vector<Waiting> take_indications(const std::vector<std::string>& services) {
    std::vector<Waiting> taken;
    const Lock lock;
    if (!lock.held())
        return taken;
    for (const std::string& text : list_folder("ind")) {
        const fs::path name = fs::path("ind") / text;
        struct stat info {};
        if (text[0] == '.' || ::stat((root() / name).c_str(), &info) != 0 || info.st_size == 0)
            continue; /* somebody is about to write it */
        const size_t dot = text.find('.');
        const std::string service = text.substr(0, dot);
        const std::string id_text =
            dot == std::string::npos ? "" : text.substr(dot + 1, text.find('.', dot + 1) - dot - 1);
        const std::optional<int64_t> id = whole_number(id_text);
        if (!is_service(service) || !id || *id < 0 || *id > UINT16_MAX) {
            complain("ind/" + text, 0, "no indication's name: SERVICE.0xID, or SERVICE.0xID.ANY");
            continue;
        }
        if (std::find(services.begin(), services.end(), service) == services.end())
            continue;
        const std::optional<Bytes> tlvs = read_file(name);
        if (!tlvs || remove_file(name) != 0)
            continue;
        taken.push_back({service, static_cast<uint32_t>(*id), *tlvs});
    }
    return taken;
}

/* True when files of waiting indications lie in the phone's folder ind. */
bool indications_wait() { return !list_folder("ind").empty(); }

} // namespace

bool Framework::indications_under_way() { return indications_wait() || delivering_; }

Framework& Framework::instance() {
    static Framework& framework = *new Framework;
    return framework;
}

qmi_client_type Framework::add(const std::shared_ptr<Client>& client) {
    const std::lock_guard guard(mutex_);
    if (client->ind_cb != nullptr || client->notifier)
        start_thread();
    client->handle = reinterpret_cast<qmi_client_type>(last_handle_ + 1);
    clients_[last_handle_ + 1] = client;
    ++last_handle_;
    return client->handle;
}

std::shared_ptr<Client> Framework::find(qmi_client_type handle) {
    const std::lock_guard guard(mutex_);
    const auto it = clients_.find(reinterpret_cast<uintptr_t>(handle));
    return it == clients_.end() ? nullptr : it->second;
}

bool Framework::remove(qmi_client_type handle) {
    const std::lock_guard guard(mutex_);
    return clients_.erase(reinterpret_cast<uintptr_t>(handle)) == 1;
}

bool Framework::change(qmi_client_type handle, const std::function<void(Client&)>& change) {
    const std::lock_guard guard(mutex_);
    const auto it = clients_.find(reinterpret_cast<uintptr_t>(handle));
    if (it == clients_.end())
        return false;
    start_thread();
    change(*it->second);
    return true;
}

void Framework::start_thread() {
    if (started_)
        return;
    std::thread([this] { run(); }).detach();
    started_ = true;
}

void Framework::run() {
    std::unique_lock lock(mutex_);
    thread_id_ = std::this_thread::get_id();
    for (;;) {
        const uint64_t requested = requested_;
        lock.unlock();
        /* What there is no memory for now is looked at in the next round. */
        guarded(false, [this] { return look(), true; });
        delivering_ = false;
        lock.lock();
        completed_ = requested;
        done_.notify_all();
        wake_.wait_for(lock, look_interval, [&] { return requested_ != completed_; });
    }
}

void Framework::deliver_waiting() {
    std::unique_lock lock(mutex_);
    if (!started_ || thread_id_ == std::this_thread::get_id())
        return;
    const uint64_t mine = ++requested_;
    wake_.notify_all();
    /* Bounded: a callback may itself wait for the caller. */
    done_.wait_for(lock, std::chrono::seconds(1), [&] { return completed_ >= mine; });
}

std::vector<std::shared_ptr<Client>> Framework::snapshot() {
    const std::lock_guard guard(mutex_);
    std::vector<std::shared_ptr<Client>> all;
    for (const auto& [number, client] : clients_)
        all.push_back(client);
    return all;
}

bool Framework::registered(const Client& client) const {
    const auto it = clients_.find(reinterpret_cast<uintptr_t>(client.handle));
    return it != clients_.end() && it->second.get() == &client;
}

void Framework::look() {
    report_restart();
    report_services();
    report_indications();
}

void Framework::report_restart() {
    const uint32_t restarts = restart_count();
    for (const std::shared_ptr<Client>& client : snapshot()) {
        qmi_client_error_cb cb = nullptr;
        void* data = nullptr;
        {
            const std::lock_guard guard(mutex_);
            if (!registered(*client) || client->notifier || client->reported_gone ||
                client->born == restarts || client->error_cb == nullptr)
                continue;
            client->reported_gone = true;
            cb = client->error_cb;
            data = client->error_cb_data;
        }
        cb(client->handle, QMI_SERVICE_ERR, data);
    }
}

void Framework::report_services() {
    for (const std::shared_ptr<Client>& client : snapshot()) {
        if (!client->notifier)
            continue;
        const uint32_t restarts = restart_count();
        const bool up = service_up(client->service->service_id);
        std::vector<qmi_client_notify_event_type> events;
        qmi_client_notify_cb cb = nullptr;
        void* data = nullptr;
        {
            const std::lock_guard guard(mutex_);
            /* Released in the meantime: its OS parameters may be gone. */
            if (!registered(*client))
                continue;
            if (client->os_params != nullptr) {
                pthread_mutex_lock(&client->os_params->mutex);
                client->os_params->sig_set = up ? 1 : 0;
                if (up)
                    pthread_cond_broadcast(&client->os_params->cond);
                pthread_mutex_unlock(&client->os_params->mutex);
            }
            if (client->notify_cb == nullptr)
                continue;
            /* A restart that was over before it was seen is told all the same. */
            if (client->reported_up && (!up || client->reported_restarts != restarts))
                events.push_back(QMI_CLIENT_SERVICE_COUNT_DEC);
            if (up && (!client->reported_up || client->reported_restarts != restarts))
                events.push_back(QMI_CLIENT_SERVICE_COUNT_INC);
            client->reported_up = up;
            client->reported_restarts = restarts;
            cb = client->notify_cb;
            data = client->notify_cb_data;
        }
        for (const qmi_client_notify_event_type event : events)
            cb(client->handle, client->service, event, data);
    }
}

void Framework::report_indications() {
    if (!indications_wait())
        return;
    delivering_ = true; /* before the files go */
    const std::vector<std::shared_ptr<Client>> all = snapshot();
    std::vector<std::string> listening;
    for (const std::shared_ptr<Client>& client : all)
        if (client->ind_cb != nullptr)
            listening.push_back(service_name(client->service->service_id));
    for (Waiting& indication : take_indications(listening)) {
        Bytes message = {4, 0, 0}; /* header: indication, no transaction, message id, length */
        put_le(message, indication.msg_id, 2);
        put_le(message, indication.tlvs.size(), 2);
        message.insert(message.end(), indication.tlvs.begin(), indication.tlvs.end());
        log_line("qmi", indication.service + " ind " + to_hex(message));
        for (const std::shared_ptr<Client>& client : all) {
            if (client->ind_cb == nullptr ||
                service_name(client->service->service_id) != indication.service)
                continue;
            {
                const std::lock_guard guard(mutex_);
                if (!registered(*client))
                    continue;
            }
            client->ind_cb(client->handle, indication.msg_id, indication.tlvs.data(),
                           static_cast<unsigned>(indication.tlvs.size()), client->ind_cb_data);
        }
    }
    delivering_ = false;
}

} // namespace simphone
