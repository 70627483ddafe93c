// The sink's pin for sound, which need not be connected.

#pragma once

#include <optional>

#include "host/avi/sound_format.h"
#include "host/filters/time_section.h"
#include "streams.h"

class CAviSink;

// Accepts uncompressed sound. It does not wait for frames, unless the sink keeps both together: a
// source may send them from one thread.
class CAviSinkSoundPin final : public CBaseInputPin {
  public:
    CAviSinkSoundPin(CAviSink* filter, CCritSec* lock, HRESULT* phr);

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT Active() override;
    STDMETHODIMP Receive(IMediaSample* sample) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
    // Writing to a file may block.
    STDMETHODIMP ReceiveCanBlock() override { return S_OK; }

    const tavo::SoundFormat& Sound() const { return m_sound; }
    // Before the streaming. Sound outside is left out; times count from its start.
    void SetSection(const tavo::TimeSection& section) { m_section = section; }
    // Before the streaming. The sound belongs so much later than its times say.
    void SetDelay(REFERENCE_TIME delay) { m_delay = delay; }

  private:
    HRESULT Write(IMediaSample& sample);
    // How much of that many bytes from this time on lies in the section.
    size_t BytesInside(size_t size, REFERENCE_TIME time) const;
    int64_t LengthOf(size_t size) const;
    // What is added to times. Those of a section count from its start.
    REFERENCE_TIME Shift() const;

    CAviSink& m_sink;
    tavo::SoundFormat m_sound;
    tavo::TimeSection m_section;
    REFERENCE_TIME m_delay = 0;
    REFERENCE_TIME m_next = 0;  // where the last sample ended
};
