// SPDX-License-Identifier: Apache-2.0
/* Calls into the platform: each is written to the log, and the rules in the phone's file "faults"
 * can make it fail (docs/phone.md, "Faults"). */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "phone/bytes.h"

namespace simphone {

struct Fault {
    enum class Kind {
        error,   /* the call returns the argument as its result */
        timeout, /* answered at once, as if the time had run out; nothing reaches the modem */
        gone,    /* the service or device is gone */
        late,    /* the answer comes the argument's milliseconds late */
        empty,   /* an answer without content */
        cut,     /* "short": the second half of the answer is missing */
        lengthy, /* "long": 64 bytes too many */
        garbage, /* an answer of the right length with wrong bytes */
        restart, /* the modem restarts in the middle of the call */
        reply,   /* the argument is the answer: hex bytes, of a property its text */
    };
    Kind kind;
    std::string argument;
    std::optional<int64_t> number; /* the argument, of an action that takes a number */
    int line;                      /* of its rule */

    /* The result of a call that fails by this. */
    int result_or(int fallback) const { return static_cast<int>(number.value_or(fallback)); }
    int64_t late_ms() const { return kind == Kind::late ? number.value_or(0) : 0; }
};

/* To be called once at the start of every platform call. timeout_ms: the time that the caller
 * gives it, for the log. */
std::optional<Fault> platform_call(const std::string& call, const std::string& what = "",
                                   std::optional<int64_t> timeout_ms = std::nullopt);

/* The bytes of a "reply". */
Bytes reply_bytes(const Fault& fault);

/* What empty, cut, garbage and, where an answer is one run of bytes, lengthy make of an answer. */
void spoil(const Fault& fault, Bytes& answer);
constexpr size_t lengthy_by = 64;

} // namespace simphone
