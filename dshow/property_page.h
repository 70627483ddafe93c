// CBasePropertyPage: a property page that is a dialog resource of the module.

#pragma once

#include "dshow/base_object.h"
#include "dshow/platform.h"

// Lives on its frame's thread. The resource must be a child dialog.
// - It keeps the site (counted) but no pointer to the object: OnConnect gets it, and the derived
// page
//   keeps what it needs until OnDisconnect.
// - The last release, which may come on any thread, takes site and object back: OnDisconnect may
// come
//   twice, or without an OnConnect.
// - A dialog that is still open then calls the page no more. On the dialog's own thread it stays
//   open; from another thread the last release asks it to close. The module stays until it is gone.
// - The page lives until the end of a message that it handles.
class AM_NOVTABLE CBasePropertyPage : public IPropertyPage, public CUnknown {
  protected:
    LPPROPERTYPAGESITE m_pPageSite = nullptr;
    // The dialog, from the return of its creation until its end.
    HWND m_hwnd = nullptr;
    // The dialog from WM_INITDIALOG on; never cleared.
    HWND m_Dlg = nullptr;
    BOOL m_bDirty = FALSE;
    int m_TitleId;   // string resource
    int m_DialogId;  // dialog resource

    static INT_PTR CALLBACK DialogProc(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

  public:
    CBasePropertyPage(LPCTSTR pName, LPUNKNOWN pUnk, int DialogId, int TitleId);
#ifdef UNICODE
    CBasePropertyPage(LPCSTR, LPUNKNOWN pUnk, int DialogId, int TitleId)
        : CBasePropertyPage(NAME(""), pUnk, DialogId, TitleId) {}
#endif

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

    // For derived pages. Results of OnActivate and OnDeactivate are dropped.
    virtual HRESULT OnConnect(IUnknown* pUnknown);
    virtual HRESULT OnDisconnect();
    virtual HRESULT OnActivate();
    virtual HRESULT OnDeactivate();
    virtual HRESULT OnApplyChanges();
    // The result of the dialog procedure, for messages from WM_INITDIALOG on.
    virtual INT_PTR OnReceiveMessage(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    // IPropertyPage
    STDMETHODIMP SetPageSite(LPPROPERTYPAGESITE pPageSite) override;
    STDMETHODIMP Activate(HWND hwndParent, LPCRECT pRect, BOOL modal) override;
    STDMETHODIMP Deactivate() override;
    // The caller frees the title. Needs no object.
    STDMETHODIMP GetPageInfo(LPPROPPAGEINFO pPageInfo) override;
    STDMETHODIMP SetObjects(ULONG n, LPUNKNOWN* ppUnk) override;
    STDMETHODIMP Show(UINT nCmdShow) override;
    STDMETHODIMP Move(LPCRECT pRect) override;
    STDMETHODIMP IsPageDirty() override;
    STDMETHODIMP Apply() override;
    STDMETHODIMP Help(LPCWSTR helpDir) override;
    STDMETHODIMP TranslateAccelerator(LPMSG pMsg) override;

  private:
    bool m_objectsSet = false;
    // From Activate to Deactivate, also where the dialog is gone before.
    bool m_isActive = false;
};
