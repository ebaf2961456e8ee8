// SPDX-License-Identifier: Apache-2.0
/* Levels over time, as kvt-lab watch collects them. */
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

/* One level: a value of one command. A sample that is missing is no number, never 0. */
struct Series {
    std::string_view command; /* its row's words: "9 10" */
    std::string_view name, unit;
    std::vector<std::optional<double>> samples; /* one for each time */
    double min = 0, max = 0;                    /* of all that are there */
    size_t there = 0;                           /* how many are */
};

struct Levels {
    std::vector<double> times; /* seconds since the start */
    std::vector<Series> series;
};

/* The levels as text of a file: comma separated, a time a line, nothing where a sample is missing;
 * and as a picture. */
std::string levels_csv(const Levels& levels);
std::string levels_svg(const Levels& levels);

} // namespace lab
