// CBaseOutputPin: delivers samples through the peer's IMemInputPin, in buffers of an allocator that
// both have agreed on.

#pragma once

#include "dshow/base_pin.h"

// Allocator and input pin are counted and there only while connected. The delivering calls take no
// lock and call the peer directly: VFW_E_NOT_CONNECTED without one. They own nothing: the sample
// stays the caller's.
class AM_NOVTABLE CBaseOutputPin : public CBasePin {
  protected:
    IMemAllocator* m_pAllocator = nullptr;
    IMemInputPin* m_pInputPin = nullptr;

  public:
    CBaseOutputPin(LPCTSTR pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr,
                   LPCWSTR pName);
#ifdef UNICODE
    CBaseOutputPin(LPCSTR, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr, LPCWSTR pName)
        : CBaseOutputPin(NAME(""), pFilter, pLock, phr, pName) {}
#endif

    HRESULT CheckConnect(IPin* pPin) override;
    HRESULT CompleteConnect(IPin* pReceivePin) override;
    // A refusal of the allocator to decommit is returned, with nothing released.
    HRESULT BreakConnect() override;

    // Settles the allocator: the peer's if it has one that suits, else InitAllocator's. On success
    // *ppAlloc is counted and the peer knows it; on failure it is null.
    virtual HRESULT DecideAllocator(IMemInputPin* pPin, IMemAllocator** ppAlloc);
    // Sets the properties of the allocator; pProperties holds the peer's wishes.
    virtual HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* pProperties) = 0;
    // The platform's memory allocator; needs COM on the calling thread.
    virtual HRESULT InitAllocator(IMemAllocator** ppAlloc);

    // Commit and decommit the allocator; VFW_E_NO_ALLOCATOR without one.
    HRESULT Active() override;
    HRESULT Inactive() override;

    // May wait for a free buffer. E_NOINTERFACE without an allocator.
    virtual HRESULT GetDeliveryBuffer(IMediaSample** ppSample, REFERENCE_TIME* pStartTime,
                                      REFERENCE_TIME* pEndTime, DWORD flags);
    virtual HRESULT Deliver(IMediaSample* pSample);
    virtual HRESULT DeliverEndOfStream();
    virtual HRESULT DeliverBeginFlush();
    virtual HRESULT DeliverEndFlush();
    virtual HRESULT DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double rate);

    // Calls that are for input pins: E_UNEXPECTED.
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
};
