// Escapes and numbers.

#include "host/cli/json_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace tavo {
namespace {

using std::wstring;
using std::wstring_view;

wstring Escape(uint32_t unit) {
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    wstring text = L"\\u";
    for (int shift = 12; shift >= 0; shift -= 4) text += kDigits[unit >> shift & 0xF];
    return text;
}

bool IsHigh(uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLow(uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

wstring Quote(wstring_view value) {
    wstring text = L"\"";
    for (size_t i = 0; i < value.size(); ++i) {
        const auto unit = static_cast<uint32_t>(value[i]);
        if (IsHigh(unit) && i + 1 < value.size() && IsLow(static_cast<uint32_t>(value[i + 1]))) {
            text.append(value, i++, 2);
        } else if (unit == L'"' || unit == L'\\') {
            text += {L'\\', value[i]};
        } else if (unit < 0x20 || unit == 0x7F || IsHigh(unit) || IsLow(unit)) {
            text += Escape(unit);
        } else {
            text += value[i];
        }
    }
    return text + L"\"";
}

wstring NumberOf(double value) {
    if (!std::isfinite(value)) return L"null";
    std::array<char, 32> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), error == std::errc{} ? end : buffer.data()};
}

}  // namespace

JsonObject& JsonObject::Member(wstring_view name, wstring_view value) {
    if (!members_.empty()) members_ += L",";
    members_ += Quote(name) + L":";
    members_ += value;
    return *this;
}

JsonObject& JsonObject::Text(wstring_view name, wstring_view value) {
    return Member(name, Quote(value));
}

JsonObject& JsonObject::Texts(wstring_view name, const std::vector<wstring>& values) {
    wstring list;
    for (const wstring& value : values) list += (list.empty() ? L"" : L",") + Quote(value);
    return Member(name, L"[" + list + L"]");
}

JsonObject& JsonObject::Count(wstring_view name, uint64_t value) {
    return Member(name, std::to_wstring(value));
}

JsonObject& JsonObject::Number(wstring_view name, double value) {
    return Member(name, NumberOf(value));
}

JsonObject& JsonObject::Flag(wstring_view name, bool value) {
    return Member(name, value ? L"true" : L"false");
}

JsonObject& JsonObject::Null(wstring_view name) { return Member(name, L"null"); }

JsonObject& JsonObject::Object(wstring_view name, const JsonObject& value) {
    return Member(name, value.Line());
}

}  // namespace tavo
