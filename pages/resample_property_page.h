// The property page for output size, scaling method, format and type.

#pragma once

#include "pages/settings_page.h"

class CResamplePropertyPage final : public CSettingsPage {
  public:
    // Creation function for the class table.
    static CUnknown* CALLBACK CreateInstance(LPUNKNOWN outer, HRESULT* result);

  private:
    explicit CResamplePropertyPage(LPUNKNOWN outer);

    void ReadSettings(IVantrelSettings& settings) override;
    void WriteSettings(IVantrelSettings& settings) override;
    void ShowFigures(HWND dialog, IVantrelSettings& settings) override;
    void FillDialog(HWND dialog) override;
    void OnCommand(HWND dialog, int control, int notification) override;
    Fault FindFault(HWND dialog) override;

    void OnSelection(HWND dialog, int control);

    int width_ = 0;
    int height_ = 0;
    int method_ = VantrelMethodAuto;
    int format_ = VantrelFormatAuto;
    int type_ = VantrelTypeAuto;
};
