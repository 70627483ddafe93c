// Formats progress and numbers.

#include "host/cli/progress_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cwchar>

namespace tavo {
namespace {

constexpr int kBarWidth = 26;

template <typename... Values>
std::wstring Format(const wchar_t* pattern, Values... values) {
    std::array<wchar_t, 128> buffer{};
    swprintf(buffer.data(), buffer.size(), pattern, values...);
    return buffer.data();
}

// With a point, whatever the locale of the process: filters that are loaded into it may set one.
std::wstring Fixed(double value, int decimals) {
    std::array<char, 400> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                            std::chars_format::fixed, decimals);
    return {buffer.data(), error == std::errc{} ? end : buffer.data()};
}

}  // namespace

std::wstring ClockText(double seconds) {
    constexpr double kLongest = 359999.0;  // 99:59:59
    const int total = static_cast<int>(std::clamp(seconds + 0.5, 0.0, kLongest));
    if (total >= 3600) return Format(L"%d:%02d:%02d", total / 3600, total / 60 % 60, total % 60);
    return Format(L"%d:%02d", total / 60, total % 60);
}

std::wstring BytesText(uint64_t bytes) {
    if (bytes < 1000) return Format(L"%d bytes", static_cast<int>(bytes));
    constexpr const wchar_t* kUnits[] = {L"kB", L"MB", L"GB", L"TB"};
    double value = static_cast<double>(bytes) / 1000.0;
    size_t unit = 0;
    while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
        value /= 1000.0;
        ++unit;
    }
    const int decimals = value < 9.995 ? 2 : value < 99.95 ? 1 : 0;
    return Fixed(value, decimals) + L" " + kUnits[unit];
}

std::wstring NumberText(double value) {
    std::wstring text = Fixed(value, 3);
    if (text.find(L'.') == std::wstring::npos) return text;
    text.erase(text.find_last_not_of(L'0') + 1);
    if (text.back() == L'.') text.pop_back();
    return text;
}

std::wstring ProgressLine(const Progress& progress) {
    const std::wstring counts =
        L"frame " + std::to_wstring(progress.frames) + L"  " + Fixed(progress.fps, 1) + L" fps";
    if (progress.fraction < 0) return counts + L"  " + ClockText(progress.seconds);

    const double fraction = std::clamp(progress.fraction, 0.0, 1.0);
    const int filled = static_cast<int>(fraction * kBarWidth);
    std::wstring line = L"[" + std::wstring(static_cast<size_t>(filled), L'#') +
                        std::wstring(static_cast<size_t>(kBarWidth - filled), L'.') + L"]";
    // Whole numbers are rounded down: 100 % is said only at the end.
    line += Format(L" %3d%%  ", static_cast<int>(fraction * 100.0)) + counts;
    if (fraction > 0.001) {
        line += L"  " + ClockText(progress.seconds * (1.0 - fraction) / fraction) + L" left";
    }
    return line;
}

}  // namespace tavo
