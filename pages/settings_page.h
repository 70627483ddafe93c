// What the two property pages have in common: the connection to the filter, the dirty state, the
// timer that refreshes the figures, and applying.

#pragma once

#include "streams.h"

#include "pages/edit_notice.h"
#include "pages/input_check.h"
#include "settings/vantrel_settings.h"

// Lives on its frame's thread. Edits a copy of the filter's settings, read when the object is
// connected and written when the user applies it.
class AM_NOVTABLE CSettingsPage : public CBasePropertyPage, public IInputCheck {
  public:
    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) final;

    // IInputCheck
    STDMETHODIMP CheckInput() final;
    STDMETHODIMP PointToInput() final;

    HRESULT OnConnect(IUnknown* object) final;
    HRESULT OnDisconnect() final;
    HRESULT OnActivate() final;
    HRESULT OnDeactivate() final;
    HRESULT OnApplyChanges() final;
    INT_PTR OnReceiveMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) final;

  protected:
    // `timer` identifies the window timer of the dialog.
    CSettingsPage(LPUNKNOWN outer, int dialogId, int titleId, UINT_PTR timer);
    ~CSettingsPage() override;

    // Between the filter and the page's copy.
    virtual void ReadSettings(IVantrelSettings& settings) = 0;
    virtual void WriteSettings(IVantrelSettings& settings) = 0;
    virtual void ShowFigures(HWND dialog, IVantrelSettings& settings) = 0;

    // Between the page's copy and the controls.
    virtual void FillDialog(HWND dialog) = 0;
    virtual void OnCommand(HWND dialog, int control, int notification) = 0;

    // What is wanted in an edit whose text cannot be read, and its identifier.
    struct Fault {
        int control = 0;  // 0: there is none
        const wchar_t* wanted = nullptr;
    };
    // The first one of the dialog.
    virtual Fault FindFault(HWND dialog) = 0;

    void SetDirty();
    // While the user types: says what is wanted as long as the text of the edit cannot be read.
    void NoticeFault(HWND dialog, int control);
    // "0", or three decimals.
    static void ShowFigure(HWND dialog, int control, double value);

  private:
    const UINT_PTR timer_;
    IVantrelSettings* settings_ = nullptr;
    // The dialog from WM_INITDIALOG to WM_DESTROY.
    HWND dialog_ = nullptr;
    bool isFilling_ = false;  // the edits change, but nobody types
    EditNotice notice_;
};
