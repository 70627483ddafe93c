// The controls of the resampling page.

#include "pages/resample_property_page.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "pages/number_text.h"
#include "pages/resource_ids.h"
#include "settings/setting_names.h"

namespace {

constexpr UINT_PTR kTimer = 3;
constexpr int kItemCapacity = 40;
// A list shows several rows when it drops down.
constexpr int kListHeightFactor = 4;

using tavo::kPixelFormatNames;
using tavo::kScaleMethodNames;
using tavo::kVideoTypeNames;

constexpr int kMethodCount = static_cast<int>(std::size(kScaleMethodNames));
constexpr int kFormatCount = static_cast<int>(std::size(kPixelFormatNames));
constexpr int kTypeCount = static_cast<int>(std::size(kVideoTypeNames));

// Formats and types have their codes as positions; methods leave codes out.
static_assert(kPixelFormatNames[kFormatCount - 1].code == kFormatCount - 1);
static_assert(kVideoTypeNames[kTypeCount - 1].code == kTypeCount - 1);

// Codes that are not listed show as AUTO.
int MethodIndex(int code) {
    const auto* const found = std::ranges::find(kScaleMethodNames, code, &tavo::SettingName::code);
    return found == std::end(kScaleMethodNames) ? 0 : static_cast<int>(found - kScaleMethodNames);
}

void FillList(HWND dialog, int control, UINT firstString, int count, int selection) {
    const HWND list = GetDlgItem(dialog, control);
    if (!list) return;
    RECT rect = {};
    GetWindowRect(list, &rect);
    SetWindowPos(list, nullptr, 0, 0, WIDTH(&rect), kListHeightFactor * HEIGHT(&rect),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    const auto module = reinterpret_cast<HINSTANCE>(GetWindowLongPtr(dialog, GWLP_HINSTANCE));
    for (int i = 0; i < count; ++i) {
        char text[kItemCapacity] = "";
        LoadStringA(module, firstString + static_cast<UINT>(i), text, kItemCapacity);
        const auto item = reinterpret_cast<LPARAM>(text);
        if (text[0] && SendMessageA(list, CB_ADDSTRING, 0, item) >= 0) continue;
        // Without one item those after it would stand for other settings.
        SendMessage(list, CB_RESETCONTENT, 0, 0);
        return;
    }
    SendMessage(list, CB_SETCURSEL, static_cast<WPARAM>(selection), 0);
}

}  // namespace

CUnknown* CALLBACK CResamplePropertyPage::CreateInstance(LPUNKNOWN outer, HRESULT* result) {
    auto* const page = new (std::nothrow) CResamplePropertyPage(outer);
    if (!page && result) *result = E_OUTOFMEMORY;
    return page;
}

CResamplePropertyPage::CResamplePropertyPage(LPUNKNOWN outer)
    : CSettingsPage(outer, IDD_RESAMPLE, IDS_RESAMPLE_TITLE, kTimer) {}

void CResamplePropertyPage::ReadSettings(IVantrelSettings& settings) {
    settings.GetOutputSize(&width_, &height_);
    settings.GetScaleMethod(&method_);
    settings.GetOutputFormat(&format_);
    settings.GetVideoType(&type_);
}

void CResamplePropertyPage::WriteSettings(IVantrelSettings& settings) {
    settings.SetOutputSize(width_, height_);
    settings.SetScaleMethod(method_);
    settings.SetOutputFormat(format_);
    settings.SetVideoType(type_);
}

void CResamplePropertyPage::ShowFigures(HWND dialog, IVantrelSettings& settings) {
    double value = 0.0;
    settings.GetModuleTime(&value);
    ShowFigure(dialog, IDC_MODULE_TIME, value);
    settings.GetSystemFps(&value);
    ShowFigure(dialog, IDC_SYSTEM_FPS, value);
}

// Deliberate: filling the edits notifies like typing, so the page is dirty as soon as it is shown.
void CResamplePropertyPage::FillDialog(HWND dialog) {
    SetDlgItemInt(dialog, IDC_WIDTH, static_cast<UINT>(width_), TRUE);
    SetDlgItemInt(dialog, IDC_HEIGHT, static_cast<UINT>(height_), TRUE);
    FillList(dialog, IDC_METHOD, IDS_FIRST_METHOD, kMethodCount, MethodIndex(method_));
    FillList(dialog, IDC_FORMAT, IDS_FIRST_FORMAT, kFormatCount, format_);
    FillList(dialog, IDC_TYPE, IDS_FIRST_TYPE, kTypeCount, type_);
}

void CResamplePropertyPage::OnCommand(HWND dialog, int control, int notification) {
    if (notification == CBN_SELCHANGE) {
        OnSelection(dialog, control);
    } else if (notification == EN_CHANGE && (control == IDC_WIDTH || control == IDC_HEIGHT)) {
        int& edge = control == IDC_WIDTH ? width_ : height_;
        // What is no number is 0: as wide or high as the source.
        edge = static_cast<int>(GetDlgItemInt(dialog, control, nullptr, TRUE));
        SetDirty();
        NoticeFault(dialog, control);
    }
}

// An empty edit is read as 0, which is what it means: as wide or high as the source.
CSettingsPage::Fault CResamplePropertyPage::FindFault(HWND dialog) {
    for (const int edge : {IDC_WIDTH, IDC_HEIGHT}) {
        char text[kItemCapacity] = "";
        GetDlgItemTextA(dialog, edge, text, sizeof text);
        if (text[0] && !tavo::IsWholeNumber(text)) {
            return {edge, L"Type a whole number, or 0 for that of the source."};
        }
    }
    return {};
}

// A result that is no item leaves the setting as it was, and the page dirty all the same.
void CResamplePropertyPage::OnSelection(HWND dialog, int control) {
    const auto index = static_cast<int>(SendDlgItemMessage(dialog, control, CB_GETCURSEL, 0, 0));
    switch (control) {
        case IDC_METHOD:
            if (index >= 0 && index < kMethodCount) method_ = kScaleMethodNames[index].code;
            break;
        case IDC_FORMAT:
            if (index >= 0 && index < kFormatCount) format_ = index;
            break;
        case IDC_TYPE:
            if (index >= 0 && index < kTypeCount) type_ = index;
            break;
        default: return;
    }
    SetDirty();
}
