// CBasePin: what input and output pins share, above all how two pins connect.

#pragma once

#include "dshow/base_filter.h"
#include "dshow/base_object.h"
#include "dshow/crit_sec.h"
#include "dshow/media_type.h"
#include "dshow/platform.h"
#include "dshow/ref_time.h"

// One pin of a CBaseFilter. Its references are its filter's, so a pin lives as long as its filter,
// which deletes it. The peer is counted while connected. Connecting, disconnecting, SetSink and
// ConnectionMediaType take the filter lock, and hold it while the peer is called; everything else
// takes none. Null out-pointers give E_POINTER.
class AM_NOVTABLE CBasePin : public CUnknown, public IPin, public IQualityControl {
  protected:
    WCHAR* m_pName = nullptr;
    IPin* m_Connected = nullptr;  // counted
    PIN_DIRECTION m_dir;
    CCritSec* m_pLock;
    bool m_bRunTimeError = false;  // samples are refused until a flush ends or the pin is inactive
    bool m_bCanReconnectWhenActive = false;
    bool m_bTryMyTypesFirst = false;
    CBaseFilter* m_pFilter;               // not counted
    IQualityControl* m_pQSink = nullptr;  // not counted
    LONG m_TypeVersion = 1;
    CMediaType m_mt;  // type of the connection; a disconnect does not clear it
    CRefTime m_tStart;
    CRefTime m_tStop = CRefTime(MAX_TIME);
    double m_dRate = 1.0;

    // Steps of Connect; the caller holds the filter lock.
    // One type: on failure everything is undone, with BreakConnect called.
    HRESULT AttemptConnection(IPin* pReceivePin, const CMediaType* pmt);
    // The types of one list that match pmt (null: all). The first failure worth telling.
    HRESULT TryMediaTypes(IPin* pReceivePin, const CMediaType* pmt, IEnumMediaTypes* pEnum);
    // pmt if it is complete, else the peer's list and the own one.
    HRESULT AgreeMediaType(IPin* pReceivePin, const CMediaType* pmt);
    STDMETHODIMP DisconnectInternal();

  public:
    // Does not call the filter, which may still be under construction. *phr gets E_OUTOFMEMORY.
    CBasePin(LPCTSTR pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr,
             LPCWSTR pName, PIN_DIRECTION dir);
#ifdef UNICODE
    CBasePin(LPCSTR, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr, LPCWSTR pName,
             PIN_DIRECTION dir)
        : CBasePin(NAME(""), pFilter, pLock, phr, pName, dir) {}
#endif
    // Does not disconnect.
    ~CBasePin() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

    // IPin
    STDMETHODIMP Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override;
    // Ends this side only. S_FALSE when not connected; when BreakConnect fails it stays connected.
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** ppPin) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* pInfo) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* pDir) override;
    STDMETHODIMP QueryId(LPWSTR* pId) override;
    // S_FALSE for every failure of CheckMediaType.
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** ppEnum) override;
    // E_NOTIMPL: every input leads to every output.
    STDMETHODIMP QueryInternalConnections(IPin** apPin, ULONG* nPin) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double rate) override;

    // IQualityControl
    STDMETHODIMP Notify(IBaseFilter* pSender, Quality q) override;
    STDMETHODIMP SetSink(IQualityControl* pSink) override;

    // No lock, not counted.
    BOOL IsConnected() { return m_Connected != nullptr; }
    IPin* GetConnected() { return m_Connected; }
    BOOL IsStopped();

    // Grows when the list of types changes, so that enumerators notice.
    virtual LONG GetMediaTypeVersion();
    void IncrementTypeVersion();

    // State changes of the filter, for connected pins only.
    virtual HRESULT Active();
    virtual HRESULT Run(REFERENCE_TIME tStart);
    virtual HRESULT Inactive();

    // S_OK accepts; everything else refuses.
    virtual HRESULT CheckMediaType(const CMediaType* pmt) = 0;
    virtual HRESULT SetMediaType(const CMediaType* pmt);
    // Begins every attempt to connect.
    virtual HRESULT CheckConnect(IPin* pPin);
    // Ends every failed attempt and every connection. May be called twice in a row,
    // and when nothing is connected.
    virtual HRESULT BreakConnect();
    virtual HRESULT CompleteConnect(IPin* pPin);
    // Anything but S_OK ends the list of offered types.
    virtual HRESULT GetMediaType(int position, CMediaType* pmt);

    REFERENCE_TIME CurrentStartTime() { return m_tStart; }
    REFERENCE_TIME CurrentStopTime() { return m_tStop; }
    double CurrentRate() { return m_dRate; }
    LPWSTR Name() { return m_pName; }
    void SetReconnectWhenActive(bool allowed) { m_bCanReconnectWhenActive = allowed; }
    bool CanReconnectWhenActive() { return m_bCanReconnectWhenActive; }
};
