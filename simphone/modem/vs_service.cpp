// SPDX-License-Identifier: Apache-2.0
/* The statistics service vs.
 *
 * 0x0003 sets a feature's status: three flags, kept as text in features/NUMBER. 0x0207 asks for
 * statistics items (modem/stats_items.h): TLV 0x01 subscription u16, 0x02 request number u16, 0x03
 * ids (u8 count, u32 each); answered with TLV 0x10, a u8 count of entries, each subscription u32,
 * id u32, data (u16 count). */
#include "modem/modem.h"

#include "modem/stats_items.h"
#include "phone/phone.h"

namespace simphone {

namespace {

constexpr uint16_t msg_set_feature = 0x0003;
constexpr uint16_t msg_get_stats = 0x0207;
constexpr size_t max_entries = 10;

Bytes set_feature(const TlvReader& request) {
    const std::optional<uint64_t> feature = request.number(0x01);
    std::string flags;
    for (const uint8_t type : std::initializer_list<uint8_t>{0x02, 0x03, 0x04}) {
        const std::optional<uint64_t> flag = request.number(type);
        if (!feature || !flag)
            return refusal(QMI_ERR_MISSING_ARG);
        flags += (flags.empty() ? "" : " ") + std::to_string(*flag);
    }
    if (write_text("features/" + std::to_string(*feature), flags) != 0)
        return refusal(QMI_ERR_INTERNAL);
    return success();
}

Bytes get_stats(const TlvReader& request) {
    const std::optional<uint64_t> sub = request.number(0x01);
    const std::optional<ByteView> ids = request.value(0x03);
    if (!sub || !ids || ids->empty())
        return refusal(QMI_ERR_MISSING_ARG);
    const size_t count = get_le(*ids, 1);
    if (count == 0 || count > max_entries || ids->size() != 1 + 4 * count)
        return refusal(QMI_ERR_INVALID_ARG);

    Bytes entries = {0};
    for (size_t i = 0; i < count; ++i) {
        const uint64_t id = get_le(ids->subspan(1 + 4 * i), 4);
        const std::optional<Bytes> data =
            stats_item(static_cast<uint32_t>(*sub), static_cast<uint32_t>(id));
        if (!data)
            continue;
        ++entries[0];
        put_le(entries, *sub, 4);
        put_le(entries, id, 4);
        put_le(entries, data->size(), 2);
        entries.insert(entries.end(), data->begin(), data->end());
    }
    if (entries.size() > UINT16_MAX)
        return refusal(QMI_ERR_INTERNAL);
    return TlvWriter().result(QMI_ERR_NONE).add(0x10, entries).take();
}

class VsService : public Service {
  public:
    Bytes handle(uint16_t msg_id, const TlvReader& request) override {
        if (!request.well_formed())
            return refusal(QMI_ERR_MALFORMED_MSG);
        switch (msg_id) {
        case msg_set_feature:
            return set_feature(request);
        case msg_get_stats:
            return get_stats(request);
        default:
            return refusal(QMI_ERR_INVALID_QMI_CMD);
        }
    }
};

} // namespace

std::unique_ptr<Service> make_vs_service() { return std::make_unique<VsService>(); }

} // namespace simphone
