// The forms in which results are given.

#pragma once

#include <string>

#include "bench/compare/results.h"

namespace tavo::bench {

// Means, the floors and the whole table, aligned for a fixed-width font.
std::string TextReport(const Results& results);

std::string JsonReport(const Results& results);

// Bars of the ratio to the best peer, by family and axis mode.
std::string SvgChart(const Results& results);

// printf into a string.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...);

}  // namespace tavo::bench
