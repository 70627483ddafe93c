// Formats numbers, times and amounts.

#include "host/graph/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace tavo {
namespace {

std::wstring TwoDigits(int value) { return (value < 10 ? L"0" : L"") + std::to_wstring(value); }

}  // namespace

std::wstring FixedText(double value, int decimals) {
    std::array<char, 400> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                            std::chars_format::fixed, decimals);
    return {buffer.data(), error == std::errc{} ? end : buffer.data()};
}

std::wstring NumberText(double value) {
    std::wstring text = FixedText(value, 3);
    if (text.find(L'.') == std::wstring::npos) return text;
    text.erase(text.find_last_not_of(L'0') + 1);
    if (text.back() == L'.') text.pop_back();
    return text;
}

std::wstring ClockText(double seconds) {
    constexpr double kMaxSeconds = 359999.0;  // 99:59:59
    const int total = static_cast<int>(std::clamp(seconds + 0.5, 0.0, kMaxSeconds));
    const int minutes = total / 60 % 60;
    const std::wstring end = L":" + TwoDigits(total % 60);
    if (total < 3600) return std::to_wstring(minutes) + end;
    return std::to_wstring(total / 3600) + L":" + TwoDigits(minutes) + end;
}

std::wstring BytesText(uint64_t bytes) {
    if (bytes < 1000) return std::to_wstring(bytes) + L" bytes";
    constexpr const wchar_t* kUnits[] = {L"kB", L"MB", L"GB", L"TB"};
    double value = static_cast<double>(bytes) / 1000.0;
    size_t unit = 0;
    while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
        value /= 1000.0;
        ++unit;
    }
    const int decimals = value < 9.995 ? 2 : value < 99.95 ? 1 : 0;
    return FixedText(value, decimals) + L" " + kUnits[unit];
}

}  // namespace tavo
