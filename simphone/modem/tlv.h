// SPDX-License-Identifier: Apache-2.0
/* The modem's own reader and writer of QMI TLVs: type u8, length u16, value. It knows nothing of
 * the tables that the client side encodes by. */
#pragma once

#include <map>
#include <optional>

#include "phone/bytes.h"

namespace simphone {

class TlvReader {
  public:
    /* Keeps no copy: the bytes must outlive the reader. A run of TLVs that ends in the middle of
     * one is not well formed; what stands before is still found. */
    explicit TlvReader(ByteView bytes);

    bool well_formed() const { return well_formed_; }
    std::optional<ByteView> value(uint8_t type) const;

    /* The TLV as a little-endian number; nothing when it is missing or empty. */
    std::optional<uint64_t> number(uint8_t type) const;

  private:
    std::map<uint8_t, ByteView> values_;
    bool well_formed_ = true;
};

class TlvWriter {
  public:
    TlvWriter& add(uint8_t type, ByteView value);
    TlvWriter& number(uint8_t type, uint64_t value, size_t width);

    /* A counted array: the count first, in count_width bytes. */
    TlvWriter& counted(uint8_t type, ByteView value, size_t count_width);

    /* The standard response, TLV 0x02: result and error. */
    TlvWriter& result(uint16_t error);

    Bytes take() { return std::move(bytes_); }

  private:
    Bytes bytes_;
};

/* Whole answers: the standard response alone. */
Bytes success();
Bytes refusal(uint16_t error);

/* Errors of the standard response that the simulated services give. */
enum : uint16_t {
    QMI_ERR_NONE = 0,
    QMI_ERR_MALFORMED_MSG = 1,
    QMI_ERR_INTERNAL = 3,
    QMI_ERR_MISSING_ARG = 17,
    QMI_ERR_UIM_UNINITIALIZED = 37,
    QMI_ERR_INVALID_ARG = 48,
    QMI_ERR_NO_ENTRY = 50,
    QMI_ERR_INSUFFICIENT_RESOURCES = 68,
    QMI_ERR_INVALID_QMI_CMD = 71,
    QMI_ERR_INFO_UNAVAILABLE = 74,
};

} // namespace simphone
