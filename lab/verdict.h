// SPDX-License-Identifier: Apache-2.0
/* What kvt's output says, by the catalogue's rules. A verdict is never better than the evidence. */
#pragma once

#include "command_line.h"
#include "process.h"

namespace lab {

enum class Verdict { ok, failed, not_told, timed_out, not_run };

/* "ok", "failed", "not told", "timed out", "not run". */
const char* verdict_name(Verdict verdict);

/* The exit status that tells it: 0, 1, 3, 4, 5. */
int verdict_status(Verdict verdict);

/* A value that the output tells. */
struct Shown {
    const Value* value = nullptr;
    std::string text;                      /* as it is shown, without unit */
    double number = 0;                     /* of a number, an integer or a word */
    long long integer = 0;                 /* of an integer or a word */
    std::string_view name;                 /* what the integer stands for, or "" */
    std::vector<std::string> as_arguments; /* as a command line takes it */
};

struct Judgement {
    Verdict verdict = Verdict::not_run;
    std::string why; /* a sentence without its full stop; "" for ok */
    std::vector<Shown> values;
};

/* Judges one run of a command. */
Judgement judge(const CommandLine& line, const ProcessResult& result);

/* The values that a text tells. */
std::vector<Shown> read_values(const Command& row, std::string_view output);

/* Bytes as a terminal may show them: one line, control characters and what is not UTF-8 as "?", cut
 * when it is long. */
std::string one_line(std::string_view text);

} // namespace lab
