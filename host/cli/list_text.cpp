// Tables of names.

#include "host/cli/list_text.h"

#include <string_view>

#include "host/graph/setting_lookup.h"
#include "picture/picture_format.h"

namespace tavo {
namespace {

using std::wstring;

void Pad(wstring& line, size_t width) {
    if (line.size() < width) line.resize(width, L' ');
}

// Number, name, and what there is to say of it.
wstring Row(int code, std::wstring_view name, std::wstring_view note) {
    constexpr size_t kNameAt = 6;
    constexpr size_t kNoteAt = 30;
    wstring line = L"  " + std::to_wstring(code);
    Pad(line, kNameAt);
    line += name;
    if (note.empty()) return line + L"\n";
    Pad(line, kNoteAt);
    return line.append(note) + L"\n";
}

wstring CodeText(uint32_t code) {
    wstring text;
    for (int shift = 0; shift < 32; shift += 8) text += static_cast<wchar_t>(code >> shift & 0xFF);
    return text;
}

wstring FormatRow(const PictureFormat& format) {
    const wstring setting(SettingText(FormatNames(), format.setting));
    if (format.group == FormatGroup::Rgb) {
        return Row(format.setting, setting,
                   L"no FourCC, " + std::to_wstring(format.bitsPerPixel) + L" bits");
    }
    const wstring code = CodeText(format.compression);
    wstring note = L"FourCC " + code + L", " + std::to_wstring(format.bitsPerPixel) + L" bits";
    if (code != setting) note += L"; the setting is that of " + setting;
    return Row(format.setting, code, note);
}

const wchar_t* TypeNote(int code) {
    if (code == VantrelTypeMpeg1) return L"VIDEOINFOHEADER";
    if (code == VantrelTypeMpeg2) return L"VIDEOINFOHEADER2";
    return L"either; RGB only in a VIDEOINFOHEADER";
}

}  // namespace

wstring SettingsListText() {
    wstring text = L"Formats, for --format\n" + Row(VantrelFormatAuto, L"AUTO", L"all of these");
    for (const PictureFormat& format : AllPictureFormats()) text += FormatRow(format);
    text += L"\nMethods, for --method\n";
    for (const SettingName& method : MethodNames()) {
        text += Row(method.code, method.name, ShortName(MethodNames(), method.code));
    }
    text += L"\nTypes of format blocks, for --type\n";
    for (const SettingName& type : TypeNames()) {
        text += Row(type.code, type.name, TypeNote(type.code));
    }
    return text + L"\nThese options take the numbers and the names, in any case.\n";
}

wstring NameListText(const wstring& heading, const std::vector<wstring>& names) {
    wstring text = L"\n" + heading + L"\n";
    for (const wstring& name : names) text += L"  " + name + L"\n";
    return names.empty() ? text + L"  none\n" : text;
}

}  // namespace tavo
