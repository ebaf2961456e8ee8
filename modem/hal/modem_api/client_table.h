// SPDX-License-Identifier: Apache-2.0
/* The modem API's clients. */
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "modem_api.h"

/* A block of the traced allocator. */
struct modem_api_client {
    uint32_t kind;
    int32_t pid; /* of the creator */
    int32_t operational_status;
    uint32_t serial; /* differs for every record, unlike the address */
    client_indication_handler indication_handler;
    modem_api_status_notifier status_notifier;
    modem_api_client* next_kept;
};
static_assert(sizeof(void*) != 8 || sizeof(modem_api_client) == 40);

struct modem_api_client_table {
    /* Guards the slots and the records. Never held while a service client or a handler is called,
     * so a status may arrive at any time, even while a client is freed. */
    std::mutex slots_mutex;
    std::array<modem_api_client*, 10> slots; /* the index is the client id */

    /* Published: records that modem_api_init_client leaves unfreed when a client of their kind is
     * connected already. */
    modem_api_client* kept;
};

extern modem_api_client_table g_modem_api_clients;

/* Fills out from a response, with the count and each length cut to what their arrays hold. */
void modem_api_fill_stats(const vs_get_stats_resp_v01& resp, modem_api_stats& out);
