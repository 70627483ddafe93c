#include "pages/number_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace tavo {

namespace {

constexpr size_t kLongestNumber = 32;
// Beyond every double, and small enough to be added up.
constexpr int kHugeExponent = 100'000;

// The same in every locale.
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The exponent that stands at `at`, if one does; moves behind it.
int TakeExponent(const char* text, size_t* at) {
    size_t i = *at;
    if (text[i] != 'e' && text[i] != 'E') return 0;
    ++i;
    const bool negative = text[i] == '-';
    if (text[i] == '-' || text[i] == '+') ++i;
    if (!IsDigit(text[i])) return 0;
    int exponent = 0;
    for (; IsDigit(text[i]); ++i) {
        if (exponent < kHugeExponent) exponent = exponent * 10 + (text[i] - '0');
    }
    *at = i;
    return negative ? -exponent : exponent;
}

}  // namespace

// The C library puts the locale's separator between the digits: whatever it is, it is replaced.
void FormatNumber(double value, int decimals, char (&text)[kNumberCapacity]) {
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    const size_t length = std::strlen(text);
    const size_t fraction = static_cast<size_t>(decimals);
    if (length <= fraction || !IsDigit(text[length - 1])) return;
    size_t whole = text[0] == '-';
    while (IsDigit(text[whole])) ++whole;
    if (whole + fraction >= length) return;
    text[whole] = '.';
    std::memmove(text + whole + 1, text + length - fraction, fraction + 1);
}

// 29.97 is handed on as 2997e-2: the same number, without a separator.
ReadNumber ParseNumber(const char* text) {
    char plain[kLongestNumber + 16] = "";
    size_t used = 0;
    size_t at = 0;
    while (IsSpace(text[at])) ++at;
    if (text[at] == '-') plain[used++] = '-';
    if (text[at] == '-' || text[at] == '+') ++at;
    int exponent = 0;
    bool hasDigits = false;
    bool isFraction = false;
    for (; used < kLongestNumber; ++at) {
        if (text[at] == '.' && !isFraction) {
            isFraction = true;
        } else if (IsDigit(text[at])) {
            plain[used++] = text[at];
            hasDigits = true;
            exponent -= isFraction;
        } else {
            break;
        }
    }
    if (!hasDigits) return {};
    exponent += TakeExponent(text, &at);
    std::snprintf(plain + used, sizeof plain - used, "e%d", exponent);
    return {std::atof(plain), at};
}

bool IsWholeNumber(const char* text) {
    while (IsSpace(*text)) ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    if (!IsDigit(*text)) return false;
    constexpr long long kLimit = std::numeric_limits<int>::max();
    long long value = 0;
    for (; IsDigit(*text); ++text) {
        value = value * 10 + (*text - '0');
        if (value > kLimit + negative) return false;
    }
    while (IsSpace(*text)) ++text;
    return *text == '\0';
}

}  // namespace tavo
