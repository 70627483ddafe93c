// The two pins of a CTransformFilter. They ask the filter first, then do what their base does.

#pragma once

#include "dshow/base_input_pin.h"
#include "dshow/base_output_pin.h"

class CTransformFilter;

// Receive and EndOfStream hold the filter's streaming lock; BeginFlush and EndFlush its filter
// lock.
class CTransformInputPin : public CBaseInputPin {
    friend class CTransformFilter;

  protected:
    CTransformFilter* m_pTransformFilter;

  public:
    CTransformInputPin(LPCTSTR pObjectName, CTransformFilter* pTransformFilter, HRESULT* phr,
                       LPCWSTR pName);
#ifdef UNICODE
    CTransformInputPin(LPCSTR, CTransformFilter* pTransformFilter, HRESULT* phr, LPCWSTR pName)
        : CTransformInputPin(NAME(""), pTransformFilter, phr, pName) {}
#endif

    STDMETHODIMP QueryId(LPWSTR* pId) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    // When the filter's EndFlush fails, flushing stays on.
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double rate) override;
    STDMETHODIMP Receive(IMediaSample* pSample) override;

    HRESULT CheckConnect(IPin* pPin) override;
    HRESULT BreakConnect() override;
    HRESULT CompleteConnect(IPin* pReceivePin) override;
    // The filter's input check, then the transform's when the output is connected.
    HRESULT CheckMediaType(const CMediaType* pmt) override;
    HRESULT SetMediaType(const CMediaType* pmt) override;
    HRESULT CheckStreaming() override;

    // Not locked; valid while connected.
    CMediaType& CurrentMediaType() { return m_mt; }
};

// Connects only after the input pin. Passes quality notices and seeking upstream.
class CTransformOutputPin : public CBaseOutputPin {
    friend class CTransformFilter;

  protected:
    CTransformFilter* m_pTransformFilter;

  public:
    // The seeking pass-through, aggregated into this pin; made when first asked for.
    IUnknown* m_pPosition = nullptr;

    CTransformOutputPin(LPCTSTR pObjectName, CTransformFilter* pTransformFilter, HRESULT* phr,
                        LPCWSTR pName);
#ifdef UNICODE
    CTransformOutputPin(LPCSTR, CTransformFilter* pTransformFilter, HRESULT* phr, LPCWSTR pName)
        : CTransformOutputPin(NAME(""), pTransformFilter, phr, pName) {}
#endif
    ~CTransformOutputPin() override;

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    STDMETHODIMP QueryId(LPWSTR* pId) override;

    HRESULT CheckConnect(IPin* pPin) override;
    HRESULT BreakConnect() override;
    // The filter is told before the allocator is settled.
    HRESULT CompleteConnect(IPin* pReceivePin) override;
    HRESULT CheckMediaType(const CMediaType* pmt) override;
    // Comes before the peer has agreed to the type.
    HRESULT SetMediaType(const CMediaType* pmt) override;
    HRESULT GetMediaType(int position, CMediaType* pmt) override;
    HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* pProperties) override;

    // To the filter's AlterQuality; what that passes on goes upstream.
    STDMETHODIMP Notify(IBaseFilter* pSender, Quality q) override;

    // Not locked; valid while connected.
    CMediaType& CurrentMediaType() { return m_mt; }
};
