// SPDX-License-Identifier: Apache-2.0
/* What crossed between kvt and the phone, one thing at a time, wherever it was read from: a tape or
 * a simulated phone's log. `kvt-lab show` puts it in words, `kvt-lab pcap` into a capture. */
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tape/describe.h"

namespace lab::tape {

/* The numbers of all enumerations stand in captures. */
enum class CrossingKind : uint8_t {
    note,    /* words: the begin and end of a run, a log line, a property */
    call,    /* words, and a result: any other call into the platform */
    message, /* a QMI message, or a result of the client framework where no answer came */
    diag,    /* a DIAG packet */
    stream,  /* bytes of a DIAG stream */
};
enum class Direction : uint8_t { neither, to_phone, from_phone };

enum CrossingFlag : uint8_t {
    crossing_failed = 1,  /* the call itself, whatever the bytes say */
    crossing_decoded = 2, /* not what crossed, but what the client framework made of it */
    crossing_late = 4,    /* of a packet: nobody waited for it any more */
    crossing_bare = 8,    /* of a note: it concerns the run, not a moment in it */
};

struct Crossing {
    CrossingKind kind = CrossingKind::note;
    Direction direction = Direction::neither;
    uint8_t flags = 0;
    int64_t time_us = 0; /* since 1970 */
    int64_t at_us = 0;   /* since the run's begin */
    int64_t thread = 0;
    uint32_t run = 0;      /* number in the tape, from 1; of a log the process */
    uint32_t exchange = 0; /* the same for request and answer; 0: it has no other half */

    const names::Service* service = nullptr; /* null: not known */
    int64_t message = 0;
    MessageType type = MessageType::request;
    Layout layout = Layout::record;
    int64_t result = 0; /* of a call; of a message: why no answer came */

    std::string bytes; /* of a note and a call: its words */
};

/* Puts one crossing after the other into words: an answer is told by what was asked. */
class Teller {
  public:
    /* Appends what a person reads. False when it tells of a failure. */
    bool tell(std::string& out, const Crossing& crossing);

  private:
    bool tell_message(std::string& out, const Crossing& crossing);
    std::map<uint32_t, Exchange> asked_; /* and not yet answered */
};

/* "> ", "< " or "  ", and "FAILED: " before what failed. */
void append_told(std::string& out, Direction direction, bool good, std::string_view text);

} // namespace lab::tape
