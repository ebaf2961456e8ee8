// SPDX-License-Identifier: Apache-2.0
#include "watch.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace lab {

namespace {

constexpr double width = 900, plot_left = 60, plot_right = 600, panel = 240, top = 20, gap = 30;
/* Told apart also by those who see few colours. */
constexpr const char* colours[] = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                   "#e69f00", "#56b4e9", "#000000", "#8a6d00"};

__attribute__((format(printf, 1, 2))) std::string text(const char* format, ...) {
    char buffer[512];
    va_list values;
    va_start(values, format);
    std::vsnprintf(buffer, sizeof buffer, format, values);
    va_end(values);
    return buffer;
}

/* A round distance between lines of the grid: 1, 2 or 5 times a power of ten, at most `most` of
 * them. */
double grid_step(double span, double most) {
    const double least = span / most;
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least)
            return factor * power;
    return 10 * power;
}

/* The levels of one unit: grid, a line for each that breaks where samples are missing, and names.
 */
std::string draw_panel(const Levels& levels, std::string_view unit, double y0) {
    double low = 1e9, high = -1e9;
    for (const Series& series : levels.series)
        if (series.unit == unit && series.there > 0) {
            low = std::min(low, series.min);
            high = std::max(high, series.max);
        }
    if (low > high)
        low = -1, high = 1; /* nothing to draw, but a frame */
    const double step = grid_step(std::max(high - low, 1.0), 5);
    low = std::floor(low / step - 0.5) * step;
    high = std::ceil(high / step + 0.5) * step;
    const double last = levels.times.empty() ? 1 : std::max(levels.times.back(), 1e-3);
    const auto x = [&](double time) { return plot_left + time / last * (plot_right - plot_left); };
    const auto y = [&](double level) { return y0 + (high - level) / (high - low) * panel; };

    std::string svg;
    for (int line = 0; line <= std::lround((high - low) / step); ++line) {
        const double level = low + line * step;
        svg += text("<path class='grid' d='M%.0f %.1fH%.0f'/><text x='%.0f' y='%.1f' "
                    "class='end'>%g</text>\n",
                    plot_left, y(level), plot_right, plot_left - 6, y(level) + 4, level);
    }
    const double time_step = grid_step(last, 6);
    for (int line = 0; line <= static_cast<int>(last / time_step + 1e-3); ++line) {
        const double time = line * time_step;
        svg += text("<path class='grid' d='M%.1f %.1fV%.1f'/><text x='%.1f' y='%.1f' "
                    "class='mid'>%g s</text>\n",
                    x(time), y0, y0 + panel, x(time), y0 + panel + 14, time);
    }
    svg += text("<text x='%.0f' y='%.1f'>%.*s</text>\n", 8.0, y0 - 8, static_cast<int>(unit.size()),
                unit.data());
    size_t row = 0;
    for (const Series& series : levels.series) {
        if (series.unit != unit)
            continue;
        const char* const colour = colours[row % std::size(colours)];
        std::string path;
        bool drawn = false; /* the sample before */
        for (size_t i = 0; i < series.samples.size(); ++i) {
            if (series.samples[i])
                path += text(drawn ? "L%.1f %.1f" : "M%.1f %.1fh.01", x(levels.times[i]),
                             y(*series.samples[i]));
            drawn = series.samples[i].has_value();
        }
        svg += "<path class='line' stroke='" + std::string(colour) + "' d='" + path + "'/>\n";
        const double at = y0 + 12 + 16 * static_cast<double>(row++);
        svg += text(
            "<path class='line' stroke='%s' d='M%.0f %.1fh18'/><text x='%.0f' y='%.1f'>%.*s %.*s",
            colour, plot_right + 12, at - 4, plot_right + 36, at,
            static_cast<int>(series.command.size()), series.command.data(),
            static_cast<int>(series.name.size()), series.name.data());
        svg += series.there > 0 ? text(" %.1f to %.1f", series.min, series.max) : " missing";
        if (const size_t missing = series.samples.size() - series.there;
            missing > 0 && series.there > 0)
            svg += text(", %zu missing", missing);
        svg += "</text>\n";
    }
    return svg;
}

} // namespace

std::string levels_svg(const Levels& levels) {
    std::vector<std::string_view> units;
    for (const Series& series : levels.series)
        if (std::find(units.begin(), units.end(), series.unit) == units.end())
            units.push_back(series.unit);
    const double height = top + static_cast<double>(units.size()) * (panel + gap);
    std::string svg = text("<svg xmlns='http://www.w3.org/2000/svg' width='%.0f' height='%.0f'>\n",
                           width, height);
    svg +=
        "<style>text{font:12px sans-serif}.end{text-anchor:end}.mid{text-anchor:middle}"
        ".grid{stroke:#ddd;fill:none}.line{stroke-width:2;stroke-linecap:round;fill:none}</style>\n"
        "<rect width='100%' height='100%' fill='white'/>\n";
    for (size_t i = 0; i < units.size(); ++i)
        svg += draw_panel(levels, units[i], top + static_cast<double>(i) * (panel + gap));
    return svg + "</svg>\n";
}

} // namespace lab
