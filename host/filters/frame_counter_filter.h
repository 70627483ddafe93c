// A filter upstream of the scaling filter that passes samples on and counts what went in, and what
// came out for each sample.

#pragma once

#include <cstdint>

#include "dshow/com_ptr.h"
#include "host/avi/time_stamps.h"
#include "host/filters/frame_watch.h"
#include "host/filters/time_section.h"
#include "streams.h"

class CFrameCounter;

// Forwards types, allocators and samples to the input pin downstream.
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

// Connected before the input, with the same type. It has no allocator.
class CFrameCounterOutput final : public CBaseOutputPin {
  public:
    CFrameCounterOutput(CFrameCounter* filter, CCritSec* lock, HRESULT* phr);

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator) override;
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    HRESULT Active() override { return S_OK; }
    HRESULT Inactive() override { return S_OK; }

    // Null while unconnected. Not add-ref'd.
    IMemInputPin* PeerInput() { return m_pInputPin; }
};

class CFrameCounter final : public CBaseFilter {
  public:
    // What has arrived downstream of the scaling filter.
    class Arrivals {
      public:
        virtual uint64_t Count() = 0;
        // The input frame with these times goes in now; IsShown() tells whether a frame showed it.
        virtual void Expect(REFERENCE_TIME /*start*/, REFERENCE_TIME /*stop*/) {}
        // True when it is unknown.
        virtual bool IsShown() { return true; }
        // Whether other streams of the source are wanted when this one has enough.
        virtual bool WantsMore() { return false; }

      protected:
        ~Arrivals() = default;
    };

    struct Counts {
        uint64_t frames = 0;           // that the scaling filter accepted
        HRESULT failure = S_OK;        // of the first frame that it refused while running
        uint64_t dropped = 0;          // frames that never came out
        uint64_t repeated = 0;         // frames that came out beyond one per picture
        REFERENCE_TIME position = -1;  // start of the last frame that had a time
        tavo::TimeStamps stamps;
    };

    // `arrivals` outlives the streaming.
    CFrameCounter(Arrivals& arrivals, HRESULT* phr);

    int GetPinCount() override { return 2; }
    CBasePin* GetPin(int n) override;

    // Before the streaming, which it outlives. May be null.
    void SetWatch(tavo::FrameWatch* watch) { m_watch = watch; }

    // Before the streaming. Frames outside never reach the scaling filter; the times of those
    // inside count from its start. The first one behind it ends the stream, but the source only
    // when no other stream is wanted.
    void SetSection(const tavo::TimeSection& section) { m_section = section; }

    // Any thread.
    Counts Read();

    CFrameCounterInput& Input() { return m_input; }
    CFrameCounterOutput& Output() { return m_output; }

    // On the streaming thread. S_FALSE ends the source.
    HRESULT Receive(IMediaSample* sample);
    HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);
    HRESULT EndOfStream();
    bool HasSectionEnded() const { return m_sectionEnded; }
    void RestartSection() { m_sectionEnded = false; }

  private:
    HRESULT Pass(IMediaSample* sample);
    tavo::TimeSection::Place PlaceOf(IMediaSample& sample);
    void HoldType(IMediaSample& sample);
    HRESULT Shift(IMediaSample& sample);

    CCritSec m_lock;
    CCritSec m_countsLock;
    Arrivals& m_arrivals;
    tavo::FrameWatch* m_watch = nullptr;
    Counts m_counts;
    tavo::TimeSection m_section;
    REFERENCE_TIME m_segment = 0;  // where the times of samples count from
    tavo::TimeSection::Place m_place = tavo::TimeSection::Place::Before;  // of the last sample
    CMediaType m_heldType;  // of a frame that was passed over
    bool m_sectionEnded = false;
    CFrameCounterInput m_input;
    CFrameCounterOutput m_output;
};
