// CBaseInputPin: receives samples through IMemInputPin.

#pragma once

#include "dshow/base_pin.h"

// GetAllocator, NotifyAllocator and flushing take the filter lock; Receive takes none, derived pins
// put their streaming lock around it. The sample properties belong to the last sample received, and
// a type in them is valid as long as that sample.
class AM_NOVTABLE CBaseInputPin : public CBasePin, public IMemInputPin {
  protected:
    IMemAllocator* m_pAllocator = nullptr;  // counted
    BYTE m_bReadOnly = FALSE;
    BYTE m_bFlushing = FALSE;
    AM_SAMPLE2_PROPERTIES m_SampleProps = {};

  public:
    CBaseInputPin(LPCTSTR pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr,
                  LPCWSTR pName);
#ifdef UNICODE
    CBaseInputPin(LPCSTR, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr, LPCWSTR pName)
        : CBaseInputPin(NAME(""), pFilter, pLock, phr, pName) {}
#endif
    ~CBaseInputPin() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IMemInputPin
    // The platform's allocator, made on first need and kept until another one is notified.
    STDMETHODIMP GetAllocator(IMemAllocator** ppAllocator) override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* pAllocator, BOOL readOnly) override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps) override;
    // Fills the sample properties. S_OK: go on with the sample. A refused type on it ends the
    // stream: VFW_E_INVALIDMEDIATYPE, then VFW_E_RUNTIME_ERROR until a flush or stop.
    STDMETHODIMP Receive(IMediaSample* pSample) override;
    STDMETHODIMP ReceiveMultiple(IMediaSample** ppSamples, long n, long* pProcessed) override;
    // S_FALSE only when no peer of a connected output pin may block.
    STDMETHODIMP ReceiveCanBlock() override;

    // IPin
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;

    // IQualityControl: notices travel upstream from output pins, they do not belong here.
    STDMETHODIMP Notify(IBaseFilter* pSender, Quality q) override;

    HRESULT BreakConnect() override;
    HRESULT Inactive() override;
    // S_OK when a sample may be taken.
    virtual HRESULT CheckStreaming();

    // To the sink that was set, else to the peer; VFW_E_NOT_FOUND without either.
    HRESULT PassNotify(Quality& q);

    BOOL IsReadOnly() { return m_bReadOnly; }
    BOOL IsFlushing() { return m_bFlushing; }
    AM_SAMPLE2_PROPERTIES* SampleProps() { return &m_SampleProps; }

  private:
    HRESULT ReadProperties(IMediaSample* pSample);
    HRESULT ReadPropertiesByHand(IMediaSample* pSample);

    // The copy that IMediaSample::GetMediaType hands out; samples with properties lend their own.
    AM_MEDIA_TYPE* m_sampleType = nullptr;
};
