// CBaseFilter.

#include "dshow/base_filter.h"

#include <cwchar>
#include <new>
#include <utility>

#include "dshow/base_pin.h"
#include "dshow/com_ptr.h"
#include "dshow/enum_pins.h"
#include "dshow/helpers.h"
#include "dshow/internal/names.h"
#include "dshow/internal/release_member.h"
#include "dshow/module_registration.h"

using tavo::ComPtr;
using tavo::QueryFor;
using tavo::dshow::CopyName;
using tavo::dshow::CutName;
using tavo::dshow::ReleaseMember;

CBaseFilter::CBaseFilter(LPCTSTR pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid)
    : CUnknown(pName, pUnk), m_clsid(clsid), m_pLock(pLock) {}

CBaseFilter::CBaseFilter(LPCTSTR pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid, HRESULT*)
    : CBaseFilter(pName, pUnk, pLock, clsid) {}

// The lock is a member of the derived class and gone by now.
CBaseFilter::~CBaseFilter() {
    delete[] m_pName;
    ReleaseMember(m_pClock);
}

STDMETHODIMP CBaseFilter::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IBaseFilter) return GetInterface(static_cast<IBaseFilter*>(this), ppv);
    if (riid == IID_IMediaFilter) return GetInterface(static_cast<IMediaFilter*>(this), ppv);
    if (riid == IID_IPersist) return GetInterface(static_cast<IPersist*>(this), ppv);
    if (riid == IID_IAMovieSetup) return GetInterface(static_cast<IAMovieSetup*>(this), ppv);
    return CUnknown::NonDelegatingQueryInterface(riid, ppv);
}

STDMETHODIMP CBaseFilter::GetClassID(CLSID* pClsID) {
    CheckPointer(pClsID, E_POINTER);
    *pClsID = m_clsid;
    return NOERROR;
}

STDMETHODIMP CBaseFilter::GetState(DWORD, FILTER_STATE* pState) {
    CheckPointer(pState, E_POINTER);
    *pState = m_State;
    return S_OK;
}

STDMETHODIMP CBaseFilter::SetSyncSource(IReferenceClock* pClock) {
    CAutoLock lock(m_pLock);
    if (pClock) pClock->AddRef();
    ReleaseMember(m_pClock);
    m_pClock = pClock;
    return NOERROR;
}

STDMETHODIMP CBaseFilter::GetSyncSource(IReferenceClock** ppClock) {
    CheckPointer(ppClock, E_POINTER);
    CAutoLock lock(m_pLock);
    if (m_pClock) m_pClock->AddRef();
    *ppClock = m_pClock;
    return NOERROR;
}

STDMETHODIMP CBaseFilter::Stop() {
    CAutoLock lock(m_pLock);
    HRESULT result = S_OK;
    if (m_State != State_Stopped) {
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* pin = GetPin(i);
            if (!pin || !pin->IsConnected()) continue;
            const HRESULT hr = pin->Inactive();
            if (FAILED(hr) && SUCCEEDED(result)) result = hr;
        }
    }
    m_State = State_Stopped;
    return result;
}

STDMETHODIMP CBaseFilter::Pause() {
    CAutoLock lock(m_pLock);
    if (m_State == State_Stopped) {
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* pin = GetPin(i);
            if (!pin || !pin->IsConnected()) continue;
            const HRESULT hr = pin->Active();
            if (FAILED(hr)) return hr;
        }
    }
    m_State = State_Paused;
    return S_OK;
}

STDMETHODIMP CBaseFilter::Run(REFERENCE_TIME tStart) {
    CAutoLock lock(m_pLock);
    m_tStart = tStart;
    if (m_State == State_Stopped) {
        const HRESULT hr = Pause();
        if (FAILED(hr)) return hr;
    }
    if (m_State != State_Running) {
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* pin = GetPin(i);
            if (!pin || !pin->IsConnected()) continue;
            const HRESULT hr = pin->Run(tStart);
            if (FAILED(hr)) return hr;
        }
    }
    m_State = State_Running;
    return S_OK;
}

HRESULT CBaseFilter::StreamTime(CRefTime& rtStream) {
    IReferenceClock* clock = m_pClock;
    if (!clock) return VFW_E_NO_CLOCK;
    REFERENCE_TIME now = 0;
    const HRESULT hr = clock->GetTime(&now);
    if (FAILED(hr)) return hr;
    rtStream = now - m_tStart.m_time;
    return S_OK;
}

BOOL CBaseFilter::IsActive() {
    CAutoLock lock(m_pLock);
    return m_State == State_Paused || m_State == State_Running;
}

BOOL CBaseFilter::IsStopped() { return m_State == State_Stopped; }

STDMETHODIMP CBaseFilter::EnumPins(IEnumPins** ppEnum) {
    CheckPointer(ppEnum, E_POINTER);
    *ppEnum = new (std::nothrow) CEnumPins(this, nullptr);
    return *ppEnum ? NOERROR : E_OUTOFMEMORY;
}

STDMETHODIMP CBaseFilter::FindPin(LPCWSTR id, IPin** ppPin) {
    CheckPointer(ppPin, E_POINTER);
    *ppPin = nullptr;
    CAutoLock lock(m_pLock);
    const int count = GetPinCount();
    for (int i = 0; id && i < count; ++i) {
        CBasePin* pin = GetPin(i);
        if (!pin || !pin->Name() || std::wcscmp(pin->Name(), id) != 0) continue;
        pin->AddRef();
        *ppPin = pin;
        return S_OK;
    }
    return VFW_E_NOT_FOUND;
}

STDMETHODIMP CBaseFilter::QueryFilterInfo(FILTER_INFO* pInfo) {
    CheckPointer(pInfo, E_POINTER);
    CAutoLock lock(&m_graphLock);
    CutName(pInfo->achName, m_pName);
    pInfo->pGraph = m_pGraph;
    if (pInfo->pGraph) pInfo->pGraph->AddRef();
    return NOERROR;
}

STDMETHODIMP CBaseFilter::JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) {
    CAutoLock filterLock(m_pLock);
    // The pointer outlives the reference: the sink is the graph, which holds this filter.
    IMediaEventSink* const sink = QueryFor<IMediaEventSink>(pGraph, IID_IMediaEventSink).Get();
    WCHAR* name = CopyName(pName);
    const bool isNamed = name || !pName;
    {
        CAutoLock lock(&m_graphLock);
        m_pGraph = pGraph;
        m_pSink = sink;
        std::swap(m_pName, name);
    }
    delete[] name;
    return isNamed ? NOERROR : E_OUTOFMEMORY;
}

STDMETHODIMP CBaseFilter::QueryVendorInfo(LPWSTR*) { return E_NOTIMPL; }

HRESULT CBaseFilter::NotifyEvent(long code, LONG_PTR p1, LONG_PTR p2) {
    ComPtr<IMediaEventSink> sink;
    {
        CAutoLock lock(&m_graphLock);
        sink = ComPtr<IMediaEventSink>(m_pSink);
    }
    if (!sink) return E_NOTIMPL;
    if (code == EC_COMPLETE) p2 = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
    return sink->Notify(code, p1, p2);
}

HRESULT CBaseFilter::ReconnectPin(IPin* pPin, const AM_MEDIA_TYPE* pmt) {
    ComPtr<IFilterGraph> graph;
    {
        CAutoLock lock(&m_graphLock);
        graph = ComPtr<IFilterGraph>(m_pGraph);
    }
    if (!graph) return E_NOINTERFACE;
    if (auto graph2 = QueryFor<IFilterGraph2>(graph.Get(), IID_IFilterGraph2)) {
        return graph2->ReconnectEx(pPin, pmt);
    }
    return graph->Reconnect(pPin);
}

LONG CBaseFilter::GetPinVersion() { return m_PinVersion; }

void CBaseFilter::IncrementPinVersion() { InterlockedIncrement(&m_PinVersion); }

namespace {

HRESULT RegisterSetupData(LPAMOVIESETUP_FILTER setup, BOOL add) {
    if (!setup) return S_FALSE;
    ComPtr<IFilterMapper2> mapper;
    const HRESULT hr = CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_IFilterMapper2, mapper.PutVoid());
    return FAILED(hr) ? hr : AMovieSetupRegisterFilter2(setup, mapper.Get(), add);
}

}  // namespace

STDMETHODIMP CBaseFilter::Register() { return RegisterSetupData(GetSetupData(), TRUE); }

STDMETHODIMP CBaseFilter::Unregister() { return RegisterSetupData(GetSetupData(), FALSE); }
