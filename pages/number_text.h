// Numbers as the pages show and read them: with a full stop, in whatever locale the host is.

#pragma once

#include <cstddef>

namespace tavo {

// The longest number that is shown: the largest double has 309 digits before its decimals.
constexpr size_t kNumberCapacity = 320;

// With so many decimals, rounded.
void FormatNumber(double value, int decimals, char (&text)[kNumberCapacity]);

struct ReadNumber {
    double value = 0.0;
    size_t length = 0;  // characters up to its end; 0 where the text does not begin with a number
};

// The number that a text begins with, after spaces. Of a longer one the first 32 characters count.
ReadNumber ParseNumber(const char* text);

// Whether a text is a whole number that an int holds.
bool IsWholeNumber(const char* text);

}  // namespace tavo
