// SPDX-License-Identifier: Apache-2.0
/* The modem API's life and its clients. */
#include "modem_api.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <tuple>
#include <utility>

#include <unistd.h>

#include "client_table.h"
#include "ravex_log.h"
#include "traced_alloc.h"

modem_api_client_table g_modem_api_clients;

namespace {

/* Held while a client is freed: neither an init nor a release of the API comes between. */
std::mutex g_modem_api_mutex;

std::atomic<uint32_t> g_client_serial; /* of the last record */

struct client_kind_row {
    const char* name;         /* in the text for a client that is connected */
    const char* not_yet_name; /* in the text for one that is not */
    int (*init)(client_indication_handler handler);
    int (*release)();
    void (*set_status_callback)(client_operational_status_cb cb);
    int32_t second_sub; /* of a NAS client: its networking indications; else -1 */
};

/* By kind. */
constexpr client_kind_row kinds[CLIENT_KINDS] = {
    {"vs", "vs", vs_client_init, vs_client_release, vs_client_set_operational_status_callback, -1},
    {"sar", "sar", sar_client_init, sar_client_release, sar_client_set_operational_status_callback,
     -1},
    {"nas", "nas 0", nas_0_client_init, nas_0_client_release,
     nas_0_client_set_operational_status_callback, 0},
    {"nas", "nas 0", nas_1_client_init, nas_1_client_release,
     nas_1_client_set_operational_status_callback, 1},
};

void free_record(modem_api_client* record) { ravex_free_adv(record, "modem_api", __LINE__); }

/* Puts a record into the first empty slot and returns its id; TABLE_FULL; or KIND_TAKEN when there
 * is a client of that kind, and *other gets its status. */
enum { TABLE_FULL = -1, KIND_TAKEN = -2 };

int32_t add_record(modem_api_client* record, int32_t* other) {
    modem_api_client_table& table = g_modem_api_clients;
    const std::lock_guard guard(table.slots_mutex);
    for (const modem_api_client* client : table.slots) {
        if (client == nullptr || client->kind != record->kind)
            continue;
        *other = client->operational_status;
        if (*other == CLIENT_CONNECTED)
            record->next_kept = std::exchange(table.kept, record);
        return KIND_TAKEN;
    }
    for (size_t id = 0; id < table.slots.size(); ++id) {
        if (table.slots[id] != nullptr)
            continue;
        table.slots[id] = record;
        return static_cast<int32_t>(id);
    }
    return TABLE_FULL;
}

/* Empties the slot if it still holds the record of that serial, which is then freed. */
void remove_record(size_t id, uint32_t serial) {
    modem_api_client_table& table = g_modem_api_clients;
    modem_api_client* record = nullptr;
    {
        const std::lock_guard guard(table.slots_mutex);
        if (table.slots[id] == nullptr || table.slots[id]->serial != serial)
            return;
        record = std::exchange(table.slots[id], nullptr);
    }
    free_record(record);
}

} // namespace

int modem_api_init() {
    { const std::lock_guard guard(g_modem_api_mutex); }
    vs_init();
    sar_init();
    nas_0_init();
    nas_1_init();
    return MODEM_API_OK;
}

int modem_api_release() {
    const std::lock_guard guard(g_modem_api_mutex);
    return MODEM_API_OK;
}

int modem_api_init_client(uint32_t kind, client_indication_handler indication_handler,
                          modem_api_status_notifier status_notifier, int32_t* client_id) {
    RAVEX_ENTRY();
    if (client_id == nullptr) {
        RAVEX_LOG("Unexpected NULL pointer, return error %d!", MODEM_API_BAD_ARGUMENT);
        return MODEM_API_BAD_ARGUMENT;
    }
    auto* const record = static_cast<modem_api_client*>(
        ravex_malloc_adv(sizeof(modem_api_client), __func__, __LINE__));
    if (record == nullptr) {
        RAVEX_LOG("could not allocate memory");
        return MODEM_API_NO_RESPONSE;
    }
    if (kind >= CLIENT_KINDS) {
        RAVEX_LOG("modem api client type %d not supported", static_cast<int>(kind));
        free_record(record);
        return MODEM_API_NOT_SUPPORTED;
    }
    const client_kind_row& row = kinds[kind];
    record->kind = kind;
    record->pid = ::getpid();
    const uint32_t serial = record->serial = ++g_client_serial;
    record->indication_handler = indication_handler;
    record->status_notifier = status_notifier;

    int32_t other = 0;
    const int32_t id = add_record(record, &other);
    if (id == KIND_TAKEN && other == CLIENT_CONNECTED) {
        RAVEX_LOG("Already another client init %s client successfully", row.name);
        return MODEM_API_OK; /* the record is kept, see the table */
    }
    if (id == KIND_TAKEN) {
        RAVEX_LOG("Another client init %s client with operational status %d", row.not_yet_name,
                  other);
        free_record(record);
        return MODEM_API_CLIENT_NOT_CONNECTED;
    }
    if (id == TABLE_FULL) {
        RAVEX_LOG("no more client can be added");
        free_record(record);
        return MODEM_API_NO_RESPONSE;
    }

    row.set_status_callback(modem_api_operational_status_cb);
    if (row.init(indication_handler) == 0) {
        remove_record(static_cast<size_t>(id), serial);
        return MODEM_API_FAILURE;
    }
    if (row.second_sub >= 0)
        modem_api_util_enable_networking_indications(id, row.second_sub);
    *client_id = id;
    RAVEX_LOG("new client: type %d, id %d", static_cast<int>(kind), id);
    return MODEM_API_OK;
}

int modem_api_free_client(int32_t client_id) {
    constexpr size_t slots_max = std::tuple_size_v<decltype(modem_api_client_table::slots)>;
    const bool in_table = client_id >= 0 && static_cast<size_t>(client_id) < slots_max;
    const auto id = static_cast<size_t>(client_id);
    modem_api_client found{};
    const auto find = [&] {
        const std::lock_guard slots(g_modem_api_clients.slots_mutex);
        if (g_modem_api_clients.slots[id] != nullptr)
            found = *g_modem_api_clients.slots[id];
        return g_modem_api_clients.slots[id] != nullptr;
    };
    /* It would wait for its own end. */
    if (!in_table || (find() && service_client_handler_runs_here(found.kind))) {
        RAVEX_LOG("Unexpected condition, return error %d!", MODEM_API_UNEXPECTED);
        return MODEM_API_UNEXPECTED;
    }
    const std::lock_guard api(g_modem_api_mutex);
    if (!find()) {
        RAVEX_LOG("client already freed");
        return MODEM_API_OK;
    }
    if (found.kind < CLIENT_KINDS)
        kinds[found.kind].release();
    remove_record(id, found.serial);
    return MODEM_API_OK;
}

void modem_api_operational_status_cb(int32_t kind, int32_t status) {
    modem_api_client_table& table = g_modem_api_clients;
    std::array<modem_api_status_notifier, std::tuple_size_v<decltype(table.slots)>> notifiers{};
    {
        const std::lock_guard guard(table.slots_mutex);
        for (size_t id = 0; id < table.slots.size(); ++id) {
            modem_api_client* const client = table.slots[id];
            if (client == nullptr || client->kind != static_cast<uint32_t>(kind))
                continue;
            client->operational_status = status;
            notifiers[id] = client->status_notifier;
            RAVEX_LOG("client type %d, client id %d, operational_status %d", kind,
                      static_cast<int>(id), status);
        }
    }
    if (status != CLIENT_CONNECTED && status != CLIENT_SUSPENDING)
        return;
    const uint32_t event =
        status == CLIENT_CONNECTED ? MODEM_API_EVENT_CONNECTED : MODEM_API_EVENT_SUSPEND;
    for (const modem_api_status_notifier notifier : notifiers)
        if (notifier != nullptr)
            notifier(event, static_cast<uint32_t>(kind));
}
