// CBaseFilter: one filter's state, clock, place in the graph, and pins.

#pragma once

#include "dshow/base_object.h"
#include "dshow/crit_sec.h"
#include "dshow/platform.h"
#include "dshow/ref_time.h"
#include "dshow/setup_types.h"

class CBasePin;

// A filter without pins of its own: derived classes supply them. State changes, the clock and the
// graph are guarded by the lock given at construction (the filter lock); what a streaming thread
// needs (StreamTime, NotifyEvent, the pins' queries) does not take it. Neither the graph nor its
// event sink is counted, because the graph holds the filter. Null out-pointers give E_POINTER.
class AM_NOVTABLE CBaseFilter : public CUnknown, public IBaseFilter, public IAMovieSetup {
    friend class CBasePin;

  protected:
    FILTER_STATE m_State = State_Stopped;
    IReferenceClock* m_pClock = nullptr;  // counted
    CRefTime m_tStart;                    // argument of the last Run
    CLSID m_clsid;
    CCritSec* m_pLock;
    WCHAR* m_pName = nullptr;            // name in the graph
    IFilterGraph* m_pGraph = nullptr;    // not counted
    IMediaEventSink* m_pSink = nullptr;  // not counted
    LONG m_PinVersion = 1;

  private:
    // Guards name, graph and sink, which anybody may ask for while the filter joins or leaves a
    // graph. Held briefly, never over a call out.
    CCritSec m_graphLock;

  public:
    // pLock must outlive every call but the destructor, which does not lock. phr is never touched.
    CBaseFilter(LPCTSTR pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid);
    CBaseFilter(LPCTSTR pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid, HRESULT* phr);
#ifdef UNICODE
    CBaseFilter(LPCSTR, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid)
        : CBaseFilter(NAME(""), pUnk, pLock, clsid) {}
    CBaseFilter(LPCSTR, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid, HRESULT* phr)
        : CBaseFilter(NAME(""), pUnk, pLock, clsid, phr) {}
#endif
    ~CBaseFilter() override;

    DECLARE_IUNKNOWN
    // IBaseFilter, IMediaFilter, IPersist, IAMovieSetup. Seeking belongs to output pins: a filter
    // that answers it is taken for a renderer.
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IPersist
    STDMETHODIMP GetClassID(CLSID* pClsID) override;

    // IMediaFilter
    STDMETHODIMP GetState(DWORD timeout, FILTER_STATE* pState) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* pClock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** ppClock) override;
    // Calls Inactive on every connected pin and is stopped then, whatever they answer; the first
    // failure is returned.
    STDMETHODIMP Stop() override;
    // From Stopped calls Active on every connected pin; the first failure ends it, still Stopped.
    STDMETHODIMP Pause() override;
    // From Stopped by way of Pause. The first failure of a pin ends it.
    STDMETHODIMP Run(REFERENCE_TIME tStart) override;

    // Time since the start of the stream. VFW_E_NO_CLOCK, or the clock's failure. No lock.
    virtual HRESULT StreamTime(CRefTime& rtStream);

    BOOL IsActive();   // takes the filter lock
    BOOL IsStopped();  // does not

    // IBaseFilter
    STDMETHODIMP EnumPins(IEnumPins** ppEnum) override;
    // By the name of the pin.
    STDMETHODIMP FindPin(LPCWSTR id, IPin** ppPin) override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* pInfo) override;
    // E_OUTOFMEMORY concerns the name only: the graph is stored by then.
    STDMETHODIMP JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) override;
    STDMETHODIMP QueryVendorInfo(LPWSTR* pVendorInfo) override;

    // Sends an event to the graph; E_NOTIMPL without one. For EC_COMPLETE p2 becomes this filter.
    // Safe on the streaming thread.
    HRESULT NotifyEvent(long code, LONG_PTR p1, LONG_PTR p2);

    IFilterGraph* GetFilterGraph() { return m_pGraph; }  // not counted

    // Asks the graph to connect the pin anew; E_NOINTERFACE without a graph.
    HRESULT ReconnectPin(IPin* pPin, const AM_MEDIA_TYPE* pmt);

    // Grows when the set of pins changes, so that enumerators notice.
    virtual LONG GetPinVersion();
    void IncrementPinVersion();

    virtual int GetPinCount() = 0;
    // Not counted; null beyond the end.
    virtual CBasePin* GetPin(int n) = 0;

    // IAMovieSetup: S_FALSE without setup data.
    STDMETHODIMP Register() override;
    STDMETHODIMP Unregister() override;
    virtual LPAMOVIESETUP_FILTER GetSetupData() { return nullptr; }
};
