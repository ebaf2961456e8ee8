// SPDX-License-Identifier: Apache-2.0
#include "modem/common_requests.h"

#include <algorithm>
#include <cerrno>

#include "modem/card_requests.h"
#include "modem/maintenance.h"
#include "modem/request_numbers.h"
#include "modem/stats_debug_info.h"

namespace simphone {

namespace {

/* A typed request: kind u32, zero u32, type u32, payload length u32, payload. Its response has the
 * result in place of the zero. */
constexpr size_t typed_head = 16;
constexpr size_t record_head = 8;

struct TypedRow {
    uint32_t type;
    int32_t (*handle)(ByteView payload, Bytes& reply);
};

/* Types that change or tell something; any other succeeds with an empty reply. */
constexpr TypedRow typed_rows[] = {
    {type_restart, typed_restart},
    {type_nv_sync, typed_nv_sync},
    {type_card_status_query, card_status_query},
    {type_card_status_get, card_status_get},
    {type_card_type_query, card_type_query},
    {type_card_status_set, card_status_set},
    {type_card_hotswap, card_hotswap},
    {type_esim_switch, esim_switch},
    {type_full_dump, typed_full_dump},
};

Bytes typed_request(ByteView request) {
    const auto type = static_cast<uint32_t>(get_le(request.subspan(8), 4));
    const size_t length = get_le(request.subspan(12), 4);
    const ByteView rest = request.subspan(typed_head);
    Bytes reply;
    int32_t result = 0;
    for (const TypedRow& row : typed_rows)
        if (row.type == type)
            result = row.handle(rest.first(std::min(length, rest.size())), reply);
    Bytes bytes;
    put_le(bytes, record_kind_typed, 4);
    put_le(bytes, static_cast<uint32_t>(result), 4);
    put_le(bytes, type, 4);
    put_le(bytes, reply.size(), 4);
    bytes.insert(bytes.end(), reply.begin(), reply.end());
    return bytes;
}

/* Every other record: kind u32, zero u32, data. Its response has the result in place of the zero.
 */
struct RecordRow {
    uint32_t kind;
    int32_t (*handle)(ByteView data, Bytes& reply);
};

constexpr RecordRow record_rows[] = {
    {record_kind_gpio_test, record_gpio_test},
    {record_kind_tx_antenna, record_tx_antenna},
    {record_kind_stats_debug_info, stats_debug_info},
    {record_kind_stats_not_supported_logs, stats_not_supported_logs},
};

Bytes plain_request(uint32_t kind, ByteView request) {
    Bytes reply;
    int32_t result = 0;
    for (const RecordRow& row : record_rows)
        if (row.kind == kind)
            result = row.handle(request.subspan(record_head), reply);
    Bytes bytes;
    put_le(bytes, kind, 4);
    put_le(bytes, static_cast<uint32_t>(result), 4);
    bytes.insert(bytes.end(), reply.begin(), reply.end());
    return bytes;
}

} // namespace

Bytes common_request(ByteView request) {
    if (request.size() < typed_head) {
        Bytes bytes(4);
        put_le(bytes, static_cast<uint32_t>(-EINVAL), 4);
        return bytes;
    }
    const auto kind = static_cast<uint32_t>(get_le(request, 4));
    return kind == record_kind_typed ? typed_request(request) : plain_request(kind, request);
}

} // namespace simphone
