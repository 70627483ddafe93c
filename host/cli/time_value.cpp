// Reads digits.

#include "host/cli/time_value.h"

#include "host/avi/frame_rate.h"

namespace tavo {
namespace {

using std::wstring_view;

constexpr int64_t kMaxSeconds = int64_t{100'000} * 3600;

std::optional<int64_t> ParseDigits(wstring_view text) {
    if (text.empty()) return std::nullopt;
    int64_t value = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9') return std::nullopt;
        value = value * 10 + (c - L'0');
        if (value > kMaxSeconds) return std::nullopt;
    }
    return value;
}

std::optional<int64_t> ParseFraction(wstring_view text) {
    constexpr size_t kDecimals = 7;
    if (text.size() > kDecimals) return std::nullopt;
    std::optional<int64_t> units = ParseDigits(text);
    if (!units) return std::nullopt;
    for (size_t n = text.size(); n < kDecimals; ++n) *units *= 10;
    return units;
}

// Hours and minutes, or minutes, in front of seconds.
std::optional<int64_t> ParseSeconds(wstring_view text) {
    int64_t total = 0;
    for (int colons = 0;; ++colons) {
        const size_t colon = text.find(L':');
        const wstring_view part = text.substr(0, colon);
        const std::optional<int64_t> value = ParseDigits(part);
        const bool fits = colons == 0 || (part.size() == 2 && value && *value < 60);
        if (!value || !fits || colons > 2) return std::nullopt;
        total = total * 60 + *value;
        if (colon == wstring_view::npos) return total;
        text.remove_prefix(colon + 1);
    }
}

}  // namespace

std::optional<int64_t> ParseTime(wstring_view text) {
    const size_t point = text.find(L'.');
    const std::optional<int64_t> seconds = ParseSeconds(text.substr(0, point));
    if (!seconds || *seconds >= kMaxSeconds) return std::nullopt;
    std::optional<int64_t> fraction = 0;
    if (point != wstring_view::npos) fraction = ParseFraction(text.substr(point + 1));
    if (!fraction) return std::nullopt;
    return *seconds * kUnitsPerSecond + *fraction;
}

}  // namespace tavo
