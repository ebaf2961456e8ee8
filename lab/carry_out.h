// SPDX-License-Identifier: Apache-2.0
/* Carries out a command of the catalogue once and tells how it went. */
#pragma once

#include "runner.h"
#include "verdict.h"

namespace lab {

struct CarryOptions {
    bool verify = false;  /* read back where the row says how */
    double timeout_s = 0; /* of each run of kvt; 0: what the row says, and some more */
    const std::atomic<int>* stop = nullptr; /* once it is not 0 nothing more is read back */
};

/* How long a run may take: what the row says and some more, or timeout_s unless it is 0. */
std::chrono::milliseconds limit_of(const CommandLine& line, double timeout_s);

struct Outcome : Judgement {
    bool verified = false; /* reading back has decided */
    std::string output;    /* kvt's, of the command itself */
    std::chrono::milliseconds took{0};
};

Outcome carry_out(const Runner& runner, const CommandLine& line, const CarryOptions& options);

/* The judgement as a line: verdict, why, values with their units. */
std::string outcome_text(const Judgement& outcome);

} // namespace lab
