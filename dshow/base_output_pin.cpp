// CBaseOutputPin.

#include "dshow/base_output_pin.h"

#include <initializer_list>

#include "dshow/com_ptr.h"
#include "dshow/internal/memory_allocator.h"
#include "dshow/internal/release_member.h"

using tavo::ComPtr;
using tavo::dshow::ReleaseMember;

CBaseOutputPin::CBaseOutputPin(LPCTSTR pObjectName, CBaseFilter* pFilter, CCritSec* pLock,
                               HRESULT* phr, LPCWSTR pName)
    : CBasePin(pObjectName, pFilter, pLock, phr, pName, PINDIR_OUTPUT) {}

HRESULT CBaseOutputPin::CheckConnect(IPin* pPin) {
    HRESULT hr = CBasePin::CheckConnect(pPin);
    if (FAILED(hr)) return hr;
    // A BreakConnect that failed may have left the last connection's.
    ReleaseMember(m_pInputPin);
    hr = pPin->QueryInterface(IID_IMemInputPin, reinterpret_cast<void**>(&m_pInputPin));
    if (FAILED(hr)) m_pInputPin = nullptr;
    return FAILED(hr) ? hr : NOERROR;
}

HRESULT CBaseOutputPin::CompleteConnect(IPin*) {
    ReleaseMember(m_pAllocator);
    return DecideAllocator(m_pInputPin, &m_pAllocator);
}

HRESULT CBaseOutputPin::BreakConnect() {
    if (m_pAllocator) {
        const HRESULT hr = m_pAllocator->Decommit();
        if (FAILED(hr)) return hr;
        ReleaseMember(m_pAllocator);
    }
    ReleaseMember(m_pInputPin);
    return NOERROR;
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* pPin, IMemAllocator** ppAlloc) {
    *ppAlloc = nullptr;

    ALLOCATOR_PROPERTIES wishes = {};
    pPin->GetAllocatorRequirements(&wishes);
    if (wishes.cbAlign == 0) wishes.cbAlign = 1;

    ComPtr<IMemAllocator> allocator;
    HRESULT hr = NOERROR;
    for (const bool peers : {true, false}) {
        hr = peers ? pPin->GetAllocator(allocator.Put()) : InitAllocator(allocator.Put());
        if (SUCCEEDED(hr) && !allocator) hr = VFW_E_NO_ALLOCATOR;
        if (FAILED(hr)) {
            allocator.Detach();
            continue;
        }
        // The second allocator gets the record as the first call left it.
        hr = DecideBufferSize(allocator.Get(), &wishes);
        if (SUCCEEDED(hr)) hr = pPin->NotifyAllocator(allocator.Get(), FALSE);
        if (SUCCEEDED(hr)) {
            *ppAlloc = allocator.Detach();
            return NOERROR;
        }
    }
    return hr;
}

HRESULT CBaseOutputPin::InitAllocator(IMemAllocator** ppAlloc) {
    return tavo::dshow::CreateMemoryAllocator(ppAlloc);
}

HRESULT CBaseOutputPin::Active() {
    return m_pAllocator ? m_pAllocator->Commit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::Inactive() {
    m_bRunTimeError = false;
    return m_pAllocator ? m_pAllocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** ppSample, REFERENCE_TIME* pStartTime,
                                          REFERENCE_TIME* pEndTime, DWORD flags) {
    if (!m_pAllocator) return E_NOINTERFACE;
    return m_pAllocator->GetBuffer(ppSample, pStartTime, pEndTime, flags);
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* pSample) {
    return m_pInputPin ? m_pInputPin->Receive(pSample) : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndOfStream() {
    return m_Connected ? m_Connected->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverBeginFlush() {
    return m_Connected ? m_Connected->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndFlush() {
    return m_Connected ? m_Connected->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop,
                                          double rate) {
    return m_Connected ? m_Connected->NewSegment(tStart, tStop, rate) : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP CBaseOutputPin::EndOfStream() { return E_UNEXPECTED; }

STDMETHODIMP CBaseOutputPin::BeginFlush() { return E_UNEXPECTED; }

STDMETHODIMP CBaseOutputPin::EndFlush() { return E_UNEXPECTED; }
