// The property page that switches the time regulator and sets its frame rate.

#pragma once

#include "pages/settings_page.h"

class CTimeRegulatorPropertyPage final : public CSettingsPage {
  public:
    // Creation function for the class table.
    static CUnknown* CALLBACK CreateInstance(LPUNKNOWN outer, HRESULT* result);

  private:
    explicit CTimeRegulatorPropertyPage(LPUNKNOWN outer);

    void ReadSettings(IVantrelSettings& settings) override;
    void WriteSettings(IVantrelSettings& settings) override;
    void ShowFigures(HWND dialog, IVantrelSettings& settings) override;
    void FillDialog(HWND dialog) override;
    void OnCommand(HWND dialog, int control, int notification) override;
    Fault FindFault(HWND dialog) override;

    void OnRateChange(HWND dialog, int control);
    void OnClick(HWND dialog);

    double frameRate_ = 0.0;  // frames per second; 0.0: off
};
