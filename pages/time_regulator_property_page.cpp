// The controls of the time regulator page.

#include "pages/time_regulator_property_page.h"

#include <cstring>
#include <new>

#include "pages/number_text.h"
#include "pages/resource_ids.h"

namespace {

constexpr UINT_PTR kTimer = 4;
// So many characters of the rate are read; those behind them do not count.
constexpr int kRateLength = 20;

bool IsEnabled(HWND dialog) {
    return SendDlgItemMessage(dialog, IDC_ENABLE, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void ShowRate(HWND dialog, double rate) {
    char text[tavo::kNumberCapacity] = "";
    tavo::FormatNumber(rate, 2, text);
    SetDlgItemTextA(dialog, IDC_FRAME_RATE, text);
}

// Whatever begins like a number; anything else is 0.0.
double TypedRate(HWND dialog) {
    char text[kRateLength + 1] = "";
    GetDlgItemTextA(dialog, IDC_FRAME_RATE, text, sizeof text);
    return tavo::ParseNumber(text).value;
}

// A number with nothing behind it but words: of "24,9" only the 24 would be read.
bool IsRateReadable(HWND dialog) {
    char text[kRateLength + 1] = "";
    GetDlgItemTextA(dialog, IDC_FRAME_RATE, text, sizeof text);
    const size_t length = tavo::ParseNumber(text).length;
    return length > 0 && !std::strpbrk(text + length, "0123456789");
}

}  // namespace

CUnknown* CALLBACK CTimeRegulatorPropertyPage::CreateInstance(LPUNKNOWN outer, HRESULT* result) {
    auto* const page = new (std::nothrow) CTimeRegulatorPropertyPage(outer);
    if (!page && result) *result = E_OUTOFMEMORY;
    return page;
}

CTimeRegulatorPropertyPage::CTimeRegulatorPropertyPage(LPUNKNOWN outer)
    : CSettingsPage(outer, IDD_TIME_REGULATOR, IDS_TIME_REGULATOR_TITLE, kTimer) {}

void CTimeRegulatorPropertyPage::ReadSettings(IVantrelSettings& settings) {
    settings.GetFrameRate(&frameRate_);
}

void CTimeRegulatorPropertyPage::WriteSettings(IVantrelSettings& settings) {
    settings.SetFrameRate(frameRate_);
}

void CTimeRegulatorPropertyPage::ShowFigures(HWND dialog, IVantrelSettings& settings) {
    double value = 0.0;
    settings.GetGenerateFps(&value);
    ShowFigure(dialog, IDC_GENERATE_FPS, value);
}

// Deliberate: the box comes first, because filling the edit notifies like typing. With the box
// checked the rate is read back as it is shown, in hundredths, and the page is dirty at once.
void CTimeRegulatorPropertyPage::FillDialog(HWND dialog) {
    SetDlgItemInt(dialog, IDC_GENERATE_FPS, 0, TRUE);
    const bool on = frameRate_ > 0.0;
    SendDlgItemMessage(dialog, IDC_ENABLE, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0);
    ShowRate(dialog, on ? frameRate_ : 0.0);
    EnableWindow(GetDlgItem(dialog, IDC_FRAME_RATE), on);
}

void CTimeRegulatorPropertyPage::OnCommand(HWND dialog, int control, int notification) {
    if (notification == EN_CHANGE) {
        OnRateChange(dialog, control);
    } else if (notification == BN_CLICKED) {
        OnClick(dialog);
    }
}

void CTimeRegulatorPropertyPage::OnRateChange(HWND dialog, int control) {
    if (!IsEnabled(dialog)) {
        frameRate_ = 0.0;
    } else if (control == IDC_FRAME_RATE) {
        frameRate_ = TypedRate(dialog);
        SetDirty();
        NoticeFault(dialog, control);
    }
}

// Deliberate: checking the box takes no rate and changes nothing yet; the next typed rate does.
void CTimeRegulatorPropertyPage::OnClick(HWND dialog) {
    const bool on = IsEnabled(dialog);
    EnableWindow(GetDlgItem(dialog, IDC_FRAME_RATE), on);
    if (!on) {
        frameRate_ = 0.0;
        SetDirty();
    }
}

CSettingsPage::Fault CTimeRegulatorPropertyPage::FindFault(HWND dialog) {
    if (!IsEnabled(dialog) || IsRateReadable(dialog)) return {};
    return {IDC_FRAME_RATE, L"Type a number, such as 25 or 29.97."};
}
