// A source filter for uncompressed AVI files. It delivers each frame once, as fast as possible.

#pragma once

#include <atomic>
#include <memory>
#include <thread>

#include "host/avi/raw_movie.h"
#include "streams.h"

class CAviSource;

// Offers the format in a VIDEOINFOHEADER, then in a VIDEOINFOHEADER2. Top-down RGB is flipped.
class CAviSourcePin final : public CBaseOutputPin {
  public:
    CAviSourcePin(CAviSource* filter, CCritSec* lock, HRESULT* phr);
    ~CAviSourcePin() override;

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties) override;
    HRESULT Active() override;
    HRESULT Inactive() override;

  private:
    void Push();
    HRESULT PushFrame(uint32_t index);
    void JoinThread();

    CAviSource& m_source;
    std::thread m_thread;
    std::atomic<bool> m_stopping = false;
};

// Starts at the same frame whenever the graph leaves the stopped state. It does not seek.
class CAviSource final : public CBaseFilter {
  public:
    // The movie is open.
    CAviSource(std::shared_ptr<tavo::RawMovie> movie, HRESULT* phr);

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &m_pin : nullptr; }

    tavo::RawMovie& Movie() { return *m_movie; }

    // Where it starts. Frames keep their times. While stopped.
    void StartAt(uint32_t frame) { m_firstFrame = frame; }
    uint32_t FirstFrame() const { return m_firstFrame; }

  private:
    CCritSec m_lock;
    const std::shared_ptr<tavo::RawMovie> m_movie;
    uint32_t m_firstFrame = 0;
    CAviSourcePin m_pin;
};
