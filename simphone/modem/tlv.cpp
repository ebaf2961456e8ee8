// SPDX-License-Identifier: Apache-2.0
#include "modem/tlv.h"

#include <algorithm>

namespace simphone {

TlvReader::TlvReader(ByteView bytes) {
    while (!bytes.empty()) {
        if (bytes.size() < 3) {
            well_formed_ = false;
            return;
        }
        const uint8_t type = bytes[0];
        const size_t length = get_le(bytes.subspan(1), 2);
        bytes = bytes.subspan(3);
        if (length > bytes.size()) {
            well_formed_ = false;
            return;
        }
        values_.emplace(type, bytes.first(length));
        bytes = bytes.subspan(length);
    }
}

std::optional<ByteView> TlvReader::value(uint8_t type) const {
    const auto it = values_.find(type);
    return it == values_.end() ? std::nullopt : std::optional(it->second);
}

std::optional<uint64_t> TlvReader::number(uint8_t type) const {
    const std::optional<ByteView> bytes = value(type);
    if (!bytes || bytes->empty())
        return std::nullopt;
    return get_le(*bytes, std::min<size_t>(bytes->size(), 8));
}

TlvWriter& TlvWriter::add(uint8_t type, ByteView value) {
    bytes_.push_back(type);
    put_le(bytes_, value.size(), 2);
    bytes_.insert(bytes_.end(), value.begin(), value.end());
    return *this;
}

TlvWriter& TlvWriter::number(uint8_t type, uint64_t value, size_t width) {
    Bytes bytes;
    put_le(bytes, value, width);
    return add(type, bytes);
}

TlvWriter& TlvWriter::counted(uint8_t type, ByteView value, size_t count_width) {
    Bytes bytes;
    put_le(bytes, value.size(), count_width);
    bytes.insert(bytes.end(), value.begin(), value.end());
    return add(type, bytes);
}

TlvWriter& TlvWriter::result(uint16_t error) {
    Bytes bytes;
    put_le(bytes, error == QMI_ERR_NONE ? 0 : 1, 2);
    put_le(bytes, error, 2);
    return add(0x02, bytes);
}

Bytes success() { return refusal(QMI_ERR_NONE); }

Bytes refusal(uint16_t error) { return TlvWriter().result(error).take(); }

} // namespace simphone
