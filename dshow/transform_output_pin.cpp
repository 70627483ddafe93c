// CTransformOutputPin.

#include "dshow/helpers.h"
#include "dshow/internal/release_member.h"
#include "dshow/pos_pass_thru.h"
#include "dshow/transform_filter.h"
#include "dshow/transform_pins.h"
#include "dshow/wide_string.h"

using tavo::dshow::ReleaseMember;

CTransformOutputPin::CTransformOutputPin(LPCTSTR pObjectName, CTransformFilter* pTransformFilter,
                                         HRESULT* phr, LPCWSTR pName)
    : CBaseOutputPin(pObjectName, pTransformFilter, &pTransformFilter->m_csFilter, phr, pName),
      m_pTransformFilter(pTransformFilter) {}

CTransformOutputPin::~CTransformOutputPin() { ReleaseMember(m_pPosition); }

STDMETHODIMP CTransformOutputPin::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    if (riid != IID_IMediaSeeking && riid != IID_IMediaPosition) {
        return CBaseOutputPin::NonDelegatingQueryInterface(riid, ppv);
    }
    *ppv = nullptr;
    if (!m_pPosition) {
        IUnknown* made = nullptr;
        const HRESULT hr =
            CreatePosPassThru(GetOwner(), FALSE, m_pTransformFilter->m_pInput, &made);
        if (FAILED(hr)) return hr;
        // Two threads may ask first at the same time: one object stays.
        if (InterlockedCompareExchangePointer(reinterpret_cast<void**>(&m_pPosition), made,
                                              nullptr)) {
            made->Release();
        }
    }
    return m_pPosition->QueryInterface(riid, ppv);
}

STDMETHODIMP CTransformOutputPin::QueryId(LPWSTR* pId) { return AMGetWideString(L"Out", pId); }

HRESULT CTransformOutputPin::CheckConnect(IPin* pPin) {
    CTransformInputPin* input = m_pTransformFilter->m_pInput;
    if (!input || !input->IsConnected()) return E_UNEXPECTED;
    const HRESULT hr = m_pTransformFilter->CheckConnect(PINDIR_OUTPUT, pPin);
    return FAILED(hr) ? hr : CBaseOutputPin::CheckConnect(pPin);
}

HRESULT CTransformOutputPin::BreakConnect() {
    m_pTransformFilter->BreakConnect(PINDIR_OUTPUT);
    return CBaseOutputPin::BreakConnect();
}

HRESULT CTransformOutputPin::CompleteConnect(IPin* pReceivePin) {
    const HRESULT hr = m_pTransformFilter->CompleteConnect(PINDIR_OUTPUT, pReceivePin);
    return FAILED(hr) ? hr : CBaseOutputPin::CompleteConnect(pReceivePin);
}

HRESULT CTransformOutputPin::CheckMediaType(const CMediaType* pmt) {
    CTransformInputPin* input = m_pTransformFilter->m_pInput;
    if (!input || !input->IsConnected()) return E_INVALIDARG;
    return m_pTransformFilter->CheckTransform(&input->CurrentMediaType(), pmt);
}

HRESULT CTransformOutputPin::SetMediaType(const CMediaType* pmt) {
    const HRESULT hr = CBaseOutputPin::SetMediaType(pmt);
    return FAILED(hr) ? hr : m_pTransformFilter->SetMediaType(PINDIR_OUTPUT, pmt);
}

HRESULT CTransformOutputPin::GetMediaType(int position, CMediaType* pmt) {
    CTransformInputPin* input = m_pTransformFilter->m_pInput;
    if (!input || !input->IsConnected()) return VFW_S_NO_MORE_ITEMS;
    return m_pTransformFilter->GetMediaType(position, pmt);
}

HRESULT CTransformOutputPin::DecideBufferSize(IMemAllocator* pAlloc,
                                              ALLOCATOR_PROPERTIES* pProperties) {
    return m_pTransformFilter->DecideBufferSize(pAlloc, pProperties);
}

STDMETHODIMP CTransformOutputPin::Notify(IBaseFilter*, Quality q) {
    const HRESULT hr = m_pTransformFilter->AlterQuality(q);
    if (hr != S_FALSE) return hr;
    CTransformInputPin* input = m_pTransformFilter->m_pInput;
    return input ? input->PassNotify(q) : VFW_E_NOT_FOUND;
}
