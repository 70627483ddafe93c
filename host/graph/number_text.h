// Numbers, times and amounts as text.

#pragma once

#include <cstdint>
#include <string>

namespace tavo {

// With a decimal point in every locale: filters may change the locale of the process.
std::wstring FixedText(double value, int decimals);

// At most three decimals, without trailing zeros: "29.97", "25".
std::wstring NumberText(double value);

// "1:02:03", "2:03", "0:03"; rounded to seconds.
std::wstring ClockText(double seconds);

// "1.23 GB", "45.6 MB", "789 bytes"; powers of 1000.
std::wstring BytesText(uint64_t bytes);

}  // namespace tavo
