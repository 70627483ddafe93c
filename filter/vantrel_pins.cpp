#include "filter/vantrel_pins.h"

#include "filter/type_swap.h"

namespace {

void SwapTypesLocked(PinOwner& owner, CMediaType& a, CMediaType& b) {
    CAutoLock lock(&owner.SettingsLock());
    SwapTypes(a, b);
}

// `kept` is the pin's own type. It changes only once the filter has taken over the new one.
HRESULT SettleType(CTransformFilter& filter, PinOwner& owner, PIN_DIRECTION direction,
                   const CMediaType& type, CMediaType& kept) {
    HRESULT result = S_OK;
    CMediaType copy(type, &result);
    if (SUCCEEDED(result)) result = filter.SetMediaType(direction, &type);
    if (FAILED(result)) return result;
    SwapTypesLocked(owner, kept, copy);
    return S_OK;
}

bool IsSameType(PinOwner& owner, const CMediaType& type, const CMediaType& kept) {
    CAutoLock lock(&owner.SettingsLock());
    return type == kept;
}

}  // namespace

CVantrelInputPin::CVantrelInputPin(CTransformFilter* filter, PinOwner* owner, HRESULT* result)
    : CTransformInputPin(NAME("Vantrel input pin"), filter, result, L"Input"),
      filter_(filter),
      owner_(owner) {}

// The filter lock first: the base asks for it as well, and nobody may wait for it while holding
// the settings lock.
STDMETHODIMP CVantrelInputPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    CheckPointer(type, E_POINTER);
    CAutoLock filterLock(m_pLock);
    CAutoLock settingsLock(&owner_->SettingsLock());
    return CTransformInputPin::ConnectionMediaType(type);
}

HRESULT CVantrelInputPin::CheckMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (IsConnected() && IsSameType(*owner_, *type, m_mt)) return S_OK;
    const HRESULT checked = filter_->CheckInputType(type);
    if (checked != S_OK) return checked;
    CBasePin* const outputPin = filter_->GetPin(1);
    if (!outputPin || !outputPin->IsConnected()) return S_OK;
    return owner_->CheckBesideOutputType(*type);
}

HRESULT CVantrelInputPin::SetMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    return SettleType(*filter_, *owner_, PINDIR_INPUT, *type, m_mt);
}

// Without a connection no stream begins, whatever a source sends that was not told.
HRESULT CVantrelInputPin::CheckStreaming() {
    return IsConnected() ? CTransformInputPin::CheckStreaming() : VFW_E_NOT_CONNECTED;
}

// Runs before Stop waits for the sample in progress.
HRESULT CVantrelInputPin::Inactive() {
    owner_->AbandonSample();
    return CTransformInputPin::Inactive();
}

CVantrelOutputPin::CVantrelOutputPin(CTransformFilter* filter, PinOwner* owner, HRESULT* result)
    : CTransformOutputPin(NAME("Vantrel output pin"), filter, result, L"Output"),
      filter_(filter),
      owner_(owner) {}

STDMETHODIMP CVantrelOutputPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    CheckPointer(type, E_POINTER);
    CAutoLock filterLock(m_pLock);
    CAutoLock settingsLock(&owner_->SettingsLock());
    return CTransformOutputPin::ConnectionMediaType(type);
}

HRESULT CVantrelOutputPin::CheckMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (!filter_->GetPin(0)->IsConnected()) return E_INVALIDARG;
    if (IsConnected() && IsSameType(*owner_, *type, m_mt)) return S_OK;
    return owner_->CheckBesideInputType(*type);
}

HRESULT CVantrelOutputPin::SetMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    return SettleType(*filter_, *owner_, PINDIR_OUTPUT, *type, m_mt);
}

void CVantrelOutputPin::KeepType(CMediaType& type) { SwapTypesLocked(*owner_, m_mt, type); }
