#include "filter/vantrel_pins.h"

#include "filter/video_regulator.h"

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
    const HRESULT checked = filter_->CheckInputType(type);
    if (checked != S_OK) return checked;
    CBasePin* const outputPin = filter_->GetPin(1);
    if (!outputPin || !outputPin->IsConnected()) return S_OK;
    CMediaType output;
    const HRESULT copied = filter_->CopyOutputType(&output);
    return FAILED(copied) ? copied : filter_->CheckTransform(type, &output);
}

// CBasePin::SetMediaType keeps the type; the settings lock must not be held for the filter's part.
HRESULT CVantrelInputPin::SetMediaType(const CMediaType* type) {
    {
        CAutoLock settingsLock(&filter_->SettingsLock());
        const HRESULT kept = CBasePin::SetMediaType(type);
        if (FAILED(kept)) return kept;
    }
    return filter_->SetMediaType(PINDIR_INPUT, type);
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
    if (!filter_->GetPin(0)->IsConnected()) return E_INVALIDARG;
    CMediaType input;
    const HRESULT copied = filter_->CopyInputType(&input);
    return FAILED(copied) ? copied : filter_->CheckTransform(&input, type);
}

HRESULT CVantrelOutputPin::SetMediaType(const CMediaType* type) {
    {
        CAutoLock settingsLock(&filter_->SettingsLock());
        const HRESULT kept = CBasePin::SetMediaType(type);
        if (FAILED(kept)) return kept;
    }
    return filter_->SetMediaType(PINDIR_OUTPUT, type);
}
