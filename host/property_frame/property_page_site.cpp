// Forwards notifications of the pages to the frame.

#include "host/property_frame/property_page_site.h"

namespace tavo {

STDMETHODIMP PropertyPageSite::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IPropertyPageSite;
    *object = known ? static_cast<IPropertyPageSite*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) PropertyPageSite::AddRef() { return ++references_; }

STDMETHODIMP_(ULONG) PropertyPageSite::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

STDMETHODIMP PropertyPageSite::OnStatusChange(DWORD flags) {
    if (owner_ != nullptr) owner_->OnPageStatus(flags);
    return S_OK;
}

STDMETHODIMP PropertyPageSite::GetLocaleID(LCID* locale) {
    if (locale == nullptr) return E_POINTER;
    *locale = GetUserDefaultLCID();
    return S_OK;
}

STDMETHODIMP PropertyPageSite::GetPageContainer(IUnknown** container) {
    if (container == nullptr) return E_POINTER;
    *container = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP PropertyPageSite::TranslateAccelerator(MSG* message) {
    if (message == nullptr) return E_POINTER;
    return owner_ != nullptr && owner_->HandleFrameKey(*message) ? S_OK : S_FALSE;
}

}  // namespace tavo
