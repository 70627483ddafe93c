// A filter that passes samples on untouched and counts them. It stands before the scaling filter,
// so that a run can tell what went in, and what came out for each frame that went in.

#pragma once

#include <cstdint>

#include "dshow/com_ptr.h"
#include "host/avi/time_stamps.h"
#include "streams.h"

class CFrameCounter;

// Stands in for the input pin downstream: types, allocator and samples are that pin's business.
class CFrameCounterInput final : public CBaseInputPin {
  public:
    CFrameCounterInput(CFrameCounter* filter, CCritSec* lock, HRESULT* phr);

    HRESULT CheckMediaType(const CMediaType* type) override;

    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    STDMETHODIMP Receive(IMediaSample* sample) override;

    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

  private:
    CFrameCounter& m_counter;
};

// Is connected first, with the type that the input will get; has no allocator of its own.
class CFrameCounterOutput final : public CBaseOutputPin {
  public:
    CFrameCounterOutput(CFrameCounter* filter, CCritSec* lock, HRESULT* phr);

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator) override;
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    HRESULT Active() override { return S_OK; }
    HRESULT Inactive() override { return S_OK; }

    // Null while unconnected; not counted.
    IMemInputPin* PeerMemory() { return m_pInputPin; }
};

class CFrameCounter final : public CBaseFilter {
  public:
    // What has arrived behind the scaling filter so far.
    class Arrivals {
      public:
        virtual uint64_t Count() = 0;
        // The next frames may show the picture that lasts from start to stop, or repeat another.
        virtual void Expect(REFERENCE_TIME /*start*/, REFERENCE_TIME /*stop*/) {}
        // Whether one of them did; true when nobody can tell.
        virtual bool IsShown() { return true; }

      protected:
        ~Arrivals() = default;
    };

    struct Counts {
        uint64_t frames = 0;           // taken by the filter
        HRESULT failure = S_OK;        // of the first frame that it did not take while it ran
        uint64_t dropped = 0;          // frames whose picture did not come out
        uint64_t repeated = 0;         // what came out beyond one for each picture
        REFERENCE_TIME position = -1;  // start of the last frame that had a time
        tavo::TimeStamps stamps;
    };

    // `arrivals` outlives the streaming.
    CFrameCounter(Arrivals& arrivals, HRESULT* phr);

    int GetPinCount() override { return 2; }
    CBasePin* GetPin(int n) override;

    // Any thread.
    Counts Read();

    CFrameCounterInput& Input() { return m_input; }
    CFrameCounterOutput& Output() { return m_output; }

    // Streaming thread: hands the sample on and counts.
    HRESULT Pass(IMediaSample* sample);

  private:
    CCritSec m_lock;
    CCritSec m_countsLock;
    Arrivals& m_arrivals;
    Counts m_counts;
    CFrameCounterInput m_input;
    CFrameCounterOutput m_output;
};
