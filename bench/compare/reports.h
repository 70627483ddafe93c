// The forms in which results are given.

#pragma once

#include <string>

#include "bench/compare/results.h"

namespace tavo::bench {

// Means, what frames cost, the floors and the whole tables, aligned for a fixed-width font.
std::string TextReport(const Run& run);

std::string JsonReport(const Run& run);

// Bars of the ratio to the best peer, by family and axis mode, with cold pictures.
std::string SvgChart(const Run& run);

// printf into a string.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...);

}  // namespace tavo::bench
