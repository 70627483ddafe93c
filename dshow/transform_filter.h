// CTransformFilter: one input pin, one output pin, and a transform between their buffers.

#pragma once

#include "dshow/base_filter.h"
#include "dshow/transform_pins.h"

// Two recursive locks, always in this order: the filter lock (state, connections) and the streaming
// lock (samples, end of stream, start and stop of streaming). Stop holds the filter lock while it
// waits for the streaming lock, so whatever runs under Receive must never ask for the filter lock.
// Flushes come without the streaming lock, while another thread may be inside Receive.
class CTransformFilter : public CBaseFilter {
    friend class CTransformInputPin;
    friend class CTransformOutputPin;

  protected:
    BOOL m_bEOSDelivered = FALSE;    // Pause has sent the end of stream itself
    BOOL m_bSampleSkipped = FALSE;   // the last sample was not delivered
    BOOL m_bQualityChanged = FALSE;  // EC_QUALITY_CHANGE was sent since the last Pause
    CCritSec m_csFilter;
    CCritSec m_csReceive;
    // Owned; both there from the first GetPin on, or neither.
    CTransformInputPin* m_pInput = nullptr;
    CTransformOutputPin* m_pOutput = nullptr;

  public:
    CTransformFilter(LPCTSTR pName, LPUNKNOWN pUnk, REFCLSID clsid);
#ifdef UNICODE
    CTransformFilter(LPCSTR, LPUNKNOWN pUnk, REFCLSID clsid)
        : CTransformFilter(NAME(""), pUnk, clsid) {}
#endif
    ~CTransformFilter() override;

    int GetPinCount() override;
    // 0 the input, 1 the output; null without memory.
    CBasePin* GetPin(int n) override;
    // "In" and "Out".
    STDMETHODIMP FindPin(LPCWSTR id, IPin** ppPin) override;

    // What a derived filter must supply. GetMediaType is about the output pin and ends its list
    // with VFW_S_NO_MORE_ITEMS.
    virtual HRESULT CheckInputType(const CMediaType* pmtIn) = 0;
    virtual HRESULT CheckTransform(const CMediaType* pmtIn, const CMediaType* pmtOut) = 0;
    virtual HRESULT DecideBufferSize(IMemAllocator* pAllocator,
                                     ALLOCATOR_PROPERTIES* pProperties) = 0;
    virtual HRESULT GetMediaType(int position, CMediaType* pmt) = 0;
    // Streaming lock held. S_OK delivers pOut, S_FALSE drops it, anything else ends the stream.
    virtual HRESULT Transform(IMediaSample* pIn, IMediaSample* pOut);

    // Both pins connected, streaming lock held. StartStreaming may be called twice
    // without a stop.
    virtual HRESULT StartStreaming();
    virtual HRESULT StopStreaming();

    // S_FALSE passes the notice upstream.
    virtual HRESULT AlterQuality(Quality q);

    // The pins' steps of connecting, with the direction of the pin.
    virtual HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* pmt);
    virtual HRESULT CheckConnect(PIN_DIRECTION dir, IPin* pPin);
    virtual HRESULT BreakConnect(PIN_DIRECTION dir);
    virtual HRESULT CompleteConnect(PIN_DIRECTION direction, IPin* pReceivePin);

    // One sample; the input pin's properties are filled and the streaming lock is held.
    virtual HRESULT Receive(IMediaSample* pSample);
    // A buffer for the output, carrying over what the input sample says; may wait for one. Counted.
    HRESULT InitializeOutputSample(IMediaSample* pSample, IMediaSample** ppOutSample);

    // Events of the stream; by default passed downstream at once.
    virtual HRESULT EndOfStream();
    virtual HRESULT BeginFlush();
    virtual HRESULT EndFlush();
    virtual HRESULT NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double rate);

    // Waits for the sample in progress. When StopStreaming fails the filter is not stopped.
    STDMETHODIMP Stop() override;
    // Without an input the end of the stream goes downstream, once.
    STDMETHODIMP Pause() override;

  private:
    // Guards the making of the pins and nothing else.
    CCritSec m_pinsLock;
};
