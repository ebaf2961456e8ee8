// SPDX-License-Identifier: Apache-2.0
/* What a person reads about something that crossed. Everything here appends to a text, takes bytes
 * of any kind, and returns false when what crossed tells of a failure. */
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "names.h"

namespace lab::tape {

enum class MessageType : uint8_t { request, response, indication };

/* As a message's TLVs on the wire, or as the record that the client sees. */
enum class Layout : uint8_t { wire, record };

/* What an answer needs of its request: set by describing the request. */
struct Exchange {
    uint8_t vendor_kind = 0;
    uint8_t operation = 0;
};

/* A QMI message; `service` null: not known. */
bool describe_message(std::string& out, const names::Service* service, int64_t msg_id,
                      MessageType type, Layout layout, std::string_view bytes, Exchange& exchange);

/* As an answer: false when the phone says no. */
bool describe_diag(std::string& out, std::string_view packet);

/* "time-out (-3)": a result of the client framework. */
void describe_transport(std::string& out, int64_t result);

/* Hex, cut where it gets long, with the length told. */
void describe_bytes(std::string& out, std::string_view bytes);

void append_hex(std::string& out, std::string_view bytes);
void append_number(std::string& out, int64_t value);

/* "name (value)", or the value alone. */
void append_named(std::string& out, std::span<const names::Number> rows, int64_t value);

/* As much of a part as there is. */
inline std::string_view part(std::string_view bytes, size_t at, uint64_t length) {
    return bytes.substr(at < bytes.size() ? at : bytes.size(), static_cast<size_t>(length));
}

/* Little-endian; what lies behind the end counts as zero. */
uint64_t little_endian(std::string_view bytes, size_t at, size_t width);

} // namespace lab::tape
