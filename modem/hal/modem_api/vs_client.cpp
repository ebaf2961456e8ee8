// SPDX-License-Identifier: Apache-2.0
#include "vs_client.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t absent = 0xFFFFFFFF;

template <typename Record> Record load(const void* decoded, uint32_t size) {
    Record record{};
    std::memcpy(&record, decoded, std::min<size_t>(size, sizeof record));
    return record;
}

vs_event_entry entry_of(const vs_ind_entry_v01& from) {
    vs_event_entry entry{};
    entry.value = from.value;
    entry.data_len = std::min<uint32_t>(from.data_len, sizeof entry.data);
    std::memcpy(entry.data, from.data, entry.data_len);
    entry.first = from.first;
    entry.second = from.second;
    return entry;
}

template <typename From, size_t N>
uint32_t copy_entries(const From& from, uint32_t claimed, vs_event_entry (&to)[N]) {
    const uint32_t count = std::min<uint32_t>(claimed, N);
    std::transform(from, from + count, to, entry_of);
    return count;
}

vs_event_0004 convert(const vs_ind_0004_v01& from) {
    vs_event_0004 event{};
    event.value = from.value;
    event.flag_a = from.flag_a != 0 ? 1 : 0;
    event.flag_b = from.flag_b != 0 ? 1 : 0;
    return event;
}

vs_event_0203 convert(const vs_ind_0203_v01& from) {
    vs_event_0203 event{};
    event.value = from.value;
    event.first_len = copy_entries(from.first, from.first_len, event.first);
    event.second_len = copy_entries(from.second, from.second_len, event.second);
    event.extra = from.extra_valid != 0 ? from.extra : absent;
    return event;
}

vs_event_0204 convert(const vs_ind_0204_v01& from) {
    vs_event_0204 event{};
    event.value = from.value;
    event.count = std::min<uint32_t>(from.bytes_len, QMI_VS_MAX_BYTES);
    std::copy(from.bytes, from.bytes + event.count, event.slots);
    event.first = from.first;
    event.second = from.second;
    return event;
}

vs_event_0601 convert(const vs_ind_0601_v01& from) { return {from.value}; }

template <typename Record>
bool tell(client_indication_handler handler, uint32_t event, const void* decoded, uint32_t size) {
    auto payload = convert(load<Record>(decoded, size));
    handler(event, &payload, sizeof payload);
    return true;
}

} // namespace

bool vs_client_dispatch_indication(client_indication_handler handler, uint32_t msg_id,
                                   const void* decoded, uint32_t size) {
    switch (msg_id) {
    case QMI_VS_IND_0004:
        return tell<vs_ind_0004_v01>(handler, VS_EVENT_0004, decoded, size);
    case QMI_VS_IND_0203:
        return tell<vs_ind_0203_v01>(handler, VS_EVENT_0203, decoded, size);
    case QMI_VS_IND_0204:
        return tell<vs_ind_0204_v01>(handler, VS_EVENT_0204, decoded, size);
    case QMI_VS_IND_0601:
        return tell<vs_ind_0601_v01>(handler, VS_EVENT_0601, decoded, size);
    default:
        return false;
    }
}
