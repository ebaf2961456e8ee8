// SPDX-License-Identifier: Apache-2.0
/* What crossed in a tape's runs, in the order of its lines. */
#pragma once

#include "tape/clients.h"
#include "tape/crossing.h"
#include "tape/diag_links.h"
#include "tape/format.h"

namespace lab::tape {

class TapeCrossings {
  public:
    explicit TapeCrossings(const Tape& tape) : tape_(tape) {}
    virtual ~TapeCrossings() = default;

    /* Calls crossed() for each; a run's number counts from 1. */
    void read(const Run& run, uint32_t number);

  protected:
    /* What it is given is gone with the next. */
    virtual void crossed(const Crossing& crossing) = 0;

  private:
    void begin(CrossingKind kind, Direction direction);
    void emit(bool good);
    void event(const Run& run);
    void head(const Run& run);
    void call();
    void send_message();
    void send_diag();
    void decoded();
    void plain();
    void back();
    void put(const Field& field);

    const Tape& tape_;
    LineParser parser_;
    Event event_;
    Crossing crossing_;
    Clients clients_;
    DiagLinks diag_;
    uint32_t exchanges_ = 0;
    int64_t began_us_ = 0; /* the run, since 1970 */
};

/* Tells, on standard error, the lines that belong to no run; false when there are any, or a run is
 * broken. */
bool told_whole(const Tape& tape, const std::string& file);

} // namespace lab::tape
