/* Calls into the platform: each is written to the log, and the phone's file "faults" can make it
 * fail. One rule a line, "#" starts a comment:
 *
 *     CALL[:WHAT]  WHEN  ACTION [ARGUMENT]
 *
 * CALL:WHAT is a shell pattern over the call's name and, where it has one, its object: a QMI
 * message is SERVICE.0xID (vendor.0x02), a QMI client or notifier the service's name, a property
 * its key. Without ":" any object matches. WHEN is "*" for each matching call or N for the Nth one
 * in a process. The first rule that applies counts. */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

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

    long number() const;                 /* the argument as a number, 0 when there is none */
    long number_or(long fallback) const; /* the same with another default */
};

/* To be called once at the start of every platform call. */
std::optional<Fault> platform_call(const std::string& call, const std::string& what = "");

} // namespace simphone
