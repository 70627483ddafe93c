#include "filter/vantrel_pins.h"

#include "filter/type_swap.h"
#include "filter/vantrel_filter.h"

namespace {

void SwapTypesLocked(CVantrelFilter& filter, CMediaType& a, CMediaType& b) {
    CAutoLock lock(&filter.SettingsLock());
    SwapTypes(a, b);
}

// What is `kept` by a pin is replaced once the filter has taken the type over.
HRESULT SettleType(CVantrelFilter& filter, PIN_DIRECTION direction, const CMediaType& type,
                   CMediaType& kept) {
    HRESULT result = S_OK;
    CMediaType copy(type, &result);
    if (SUCCEEDED(result)) result = filter.SetMediaType(direction, &type);
    if (FAILED(result)) return result;
    SwapTypesLocked(filter, kept, copy);
    return S_OK;
}

bool IsSameType(CVantrelFilter& filter, const CMediaType& type, const CMediaType& kept) {
    CAutoLock lock(&filter.SettingsLock());
    return type == kept;
}

}  // namespace

CVantrelInputPin::CVantrelInputPin(CVantrelFilter* filter, HRESULT* result)
    : CTransformInputPin(NAME("Vantrel input pin"), filter, result, L"Input"), filter_(filter) {}

// The filter lock first: the base asks for it as well, and nobody may wait for it while holding
// the settings lock.
STDMETHODIMP CVantrelInputPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    CheckPointer(type, E_POINTER);
    CAutoLock filterLock(m_pLock);
    CAutoLock settingsLock(&filter_->SettingsLock());
    return CTransformInputPin::ConnectionMediaType(type);
}

HRESULT CVantrelInputPin::CheckMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (IsConnected() && IsSameType(*filter_, *type, m_mt)) return S_OK;
    const HRESULT checked = filter_->CheckInputType(type);
    if (checked != S_OK) return checked;
    CBasePin* const outputPin = filter_->GetPin(1);
    if (!outputPin || !outputPin->IsConnected()) return S_OK;
    CMediaType output;
    const HRESULT copied = filter_->CopyOutputType(&output);
    return FAILED(copied) ? copied : filter_->CheckTransform(type, &output);
}

HRESULT CVantrelInputPin::SetMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    return SettleType(*filter_, PINDIR_INPUT, *type, m_mt);
}

// Runs before Stop waits for the sample in progress.
HRESULT CVantrelInputPin::Inactive() {
    filter_->AbandonSample();
    return CTransformInputPin::Inactive();
}

CVantrelOutputPin::CVantrelOutputPin(CVantrelFilter* filter, HRESULT* result)
    : CTransformOutputPin(NAME("Vantrel output pin"), filter, result, L"Output"), filter_(filter) {}

STDMETHODIMP CVantrelOutputPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    CheckPointer(type, E_POINTER);
    CAutoLock filterLock(m_pLock);
    CAutoLock settingsLock(&filter_->SettingsLock());
    return CTransformOutputPin::ConnectionMediaType(type);
}

HRESULT CVantrelOutputPin::CheckMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (!filter_->GetPin(0)->IsConnected()) return E_INVALIDARG;
    if (IsConnected() && IsSameType(*filter_, *type, m_mt)) return S_OK;
    CMediaType input;
    const HRESULT copied = filter_->CopyInputType(&input);
    return FAILED(copied) ? copied : filter_->CheckTransform(&input, type);
}

HRESULT CVantrelOutputPin::SetMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    return SettleType(*filter_, PINDIR_OUTPUT, *type, m_mt);
}

void CVantrelOutputPin::KeepType(CMediaType& type) { SwapTypesLocked(*filter_, m_mt, type); }
