// SPDX-License-Identifier: Apache-2.0
/* A pause of the program: made, and told. */
#pragma once

#include <cerrno>

#include "journal.h"

template <typename Real> int pause_for(long long microseconds, Real real) {
    if (!journal::recording())
        return real();
    const int error = errno;
    Text inputs;
    inputs.member("us", microseconds);
    journal::InFlight flight;
    flight.inputs = &inputs;
    flight.name = "sleep";
    flight.thread = journal::this_thread();
    flight.began_us = journal::now_us();
    journal::begin(flight);
    errno = error;
    const int result = real();
    const int after = errno;
    Text line;
    line.member("at", flight.began_us);
    line.member("took", journal::now_us() - flight.began_us);
    line.member("thread", flight.thread);
    line.member("slept", microseconds);
    journal::end(flight, line, false);
    errno = after;
    return result;
}
