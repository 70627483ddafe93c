// CBasePin: everything but connecting.

#include "dshow/base_pin.h"

#include <new>

#include "dshow/enum_media_types.h"
#include "dshow/helpers.h"
#include "dshow/internal/names.h"
#include "dshow/internal/task_memory.h"
#include "dshow/wide_string.h"

using tavo::dshow::CopyName;
using tavo::dshow::CutName;
using tavo::dshow::ViewMediaType;

CBasePin::CBasePin(LPCTSTR pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr,
                   LPCWSTR pName, PIN_DIRECTION dir)
    : CUnknown(pObjectName, nullptr),
      m_pName(CopyName(pName)),
      m_dir(dir),
      m_pLock(pLock),
      m_pFilter(pFilter) {
    if (pName && !m_pName && phr) *phr = E_OUTOFMEMORY;
}

CBasePin::~CBasePin() { delete[] m_pName; }

STDMETHODIMP CBasePin::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IPin) return GetInterface(static_cast<IPin*>(this), ppv);
    if (riid == IID_IQualityControl) {
        return GetInterface(static_cast<IQualityControl*>(this), ppv);
    }
    return CUnknown::NonDelegatingQueryInterface(riid, ppv);
}

// A pin lives as long as its filter.
STDMETHODIMP_(ULONG) CBasePin::NonDelegatingAddRef() { return m_pFilter->AddRef(); }

STDMETHODIMP_(ULONG) CBasePin::NonDelegatingRelease() { return m_pFilter->Release(); }

STDMETHODIMP CBasePin::ConnectedTo(IPin** ppPin) {
    CheckPointer(ppPin, E_POINTER);
    *ppPin = m_Connected;
    if (!*ppPin) return VFW_E_NOT_CONNECTED;
    (*ppPin)->AddRef();
    return S_OK;
}

STDMETHODIMP CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* pmt) {
    CheckPointer(pmt, E_POINTER);
    CAutoLock lock(m_pLock);
    if (IsConnected()) return CopyMediaType(pmt, &m_mt);
    static_cast<CMediaType*>(pmt)->InitMediaType();
    return VFW_E_NOT_CONNECTED;
}

STDMETHODIMP CBasePin::QueryPinInfo(PIN_INFO* pInfo) {
    CheckPointer(pInfo, E_POINTER);
    pInfo->pFilter = m_pFilter;
    if (pInfo->pFilter) pInfo->pFilter->AddRef();
    pInfo->dir = m_dir;
    CutName(pInfo->achName, m_pName);
    return NOERROR;
}

STDMETHODIMP CBasePin::QueryDirection(PIN_DIRECTION* pDir) {
    CheckPointer(pDir, E_POINTER);
    *pDir = m_dir;
    return NOERROR;
}

STDMETHODIMP CBasePin::QueryId(LPWSTR* pId) { return AMGetWideString(Name(), pId); }

STDMETHODIMP CBasePin::QueryAccept(const AM_MEDIA_TYPE* pmt) {
    CheckPointer(pmt, E_POINTER);
    const HRESULT hr = CheckMediaType(ViewMediaType(pmt));
    return FAILED(hr) ? S_FALSE : hr;
}

STDMETHODIMP CBasePin::EnumMediaTypes(IEnumMediaTypes** ppEnum) {
    CheckPointer(ppEnum, E_POINTER);
    *ppEnum = new (std::nothrow) CEnumMediaTypes(this, nullptr);
    return *ppEnum ? NOERROR : E_OUTOFMEMORY;
}

STDMETHODIMP CBasePin::QueryInternalConnections(IPin**, ULONG*) { return E_NOTIMPL; }

STDMETHODIMP CBasePin::EndOfStream() { return S_OK; }

STDMETHODIMP CBasePin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double rate) {
    m_tStart = tStart;
    m_tStop = tStop;
    m_dRate = rate;
    return S_OK;
}

STDMETHODIMP CBasePin::Notify(IBaseFilter*, Quality) { return E_NOTIMPL; }

STDMETHODIMP CBasePin::SetSink(IQualityControl* pSink) {
    CAutoLock lock(m_pLock);
    m_pQSink = pSink;
    return NOERROR;
}

BOOL CBasePin::IsStopped() { return m_pFilter->m_State == State_Stopped; }

LONG CBasePin::GetMediaTypeVersion() { return m_TypeVersion; }

void CBasePin::IncrementTypeVersion() { InterlockedIncrement(&m_TypeVersion); }

HRESULT CBasePin::Active() { return NOERROR; }

HRESULT CBasePin::Run(REFERENCE_TIME) { return NOERROR; }

HRESULT CBasePin::Inactive() {
    m_bRunTimeError = false;
    return NOERROR;
}

HRESULT CBasePin::SetMediaType(const CMediaType* pmt) { return m_mt.Set(*pmt); }

HRESULT CBasePin::CheckConnect(IPin* pPin) {
    PIN_DIRECTION peerDirection;
    const HRESULT hr = pPin->QueryDirection(&peerDirection);
    if (FAILED(hr)) return hr;
    return peerDirection == m_dir ? VFW_E_INVALID_DIRECTION : NOERROR;
}

HRESULT CBasePin::BreakConnect() { return NOERROR; }

HRESULT CBasePin::CompleteConnect(IPin*) { return NOERROR; }

HRESULT CBasePin::GetMediaType(int, CMediaType*) { return E_UNEXPECTED; }
