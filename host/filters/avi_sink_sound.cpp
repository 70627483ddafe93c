// Sound on its way to the writer.

#include <algorithm>
#include <new>

#include "host/avi/frame_rate.h"
#include "host/filters/avi_sink_filter.h"
#include "host/filters/sound_type.h"

CAviSinkSoundPin::CAviSinkSoundPin(CAviSink* filter, CCritSec* lock, HRESULT* phr)
    : CBaseInputPin(NAME("AVI sink sound pin"), filter, lock, phr, L"Sound"), m_sink(*filter) {}

HRESULT CAviSinkSoundPin::CheckMediaType(const CMediaType* type) {
    return tavo::ReadSoundType(*type) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CAviSinkSoundPin::SetMediaType(const CMediaType* type) {
    const auto sound = tavo::ReadSoundType(*type);
    if (!sound) return VFW_E_TYPE_NOT_ACCEPTED;
    m_sound = *sound;
    return CBaseInputPin::SetMediaType(type);
}

HRESULT CAviSinkSoundPin::Active() {
    m_next = Shift();
    m_sink.StartPace();
    return CBaseInputPin::Active();
}

REFERENCE_TIME CAviSinkSoundPin::Shift() const {
    if (m_section.IsAll()) return m_delay;
    return m_delay + tavo::BoundedTime(m_tStart) - m_section.start;
}

STDMETHODIMP CAviSinkSoundPin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    const HRESULT hr = CBaseInputPin::NewSegment(start, stop, rate);
    m_next = Shift();
    return hr;
}

STDMETHODIMP CAviSinkSoundPin::Receive(IMediaSample* sample) {
    const HRESULT hr = CBaseInputPin::Receive(sample);
    if (hr != S_OK) return hr;
    if ((m_SampleProps.dwSampleFlags & AM_SAMPLE_TYPECHANGED) != 0 &&
        tavo::ReadSoundType(*m_SampleProps.pMediaType) != m_sound) {
        return m_sink.RefuseSound();
    }
    return Write(*sample);
}

size_t CAviSinkSoundPin::BytesInside(size_t size, REFERENCE_TIME time) const {
    const int64_t end = std::min(m_section.duration, tavo::kMaxTime);
    const int64_t room = end - std::min(time, end);
    if (room >= LengthOf(size)) return size;
    return static_cast<size_t>(room * m_sound.rate / tavo::kUnitsPerSecond) * m_sound.BlockBytes();
}

int64_t CAviSinkSoundPin::LengthOf(size_t size) const {
    return static_cast<int64_t>(size / m_sound.BlockBytes()) * tavo::kUnitsPerSecond / m_sound.rate;
}

// All is taken before the section's start; the writer leaves out what lies before the first frame.
HRESULT CAviSinkSoundPin::Write(IMediaSample& sample) {
    BYTE* data = nullptr;
    const long length = std::min(sample.GetActualDataLength(), sample.GetSize());
    if (length <= 0) return S_OK;
    if (FAILED(sample.GetPointer(&data)) || data == nullptr) return E_FAIL;
    size_t size = static_cast<size_t>(length);
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const bool timed = SUCCEEDED(sample.GetTime(&start, &stop));
    std::optional<REFERENCE_TIME> time =
        timed ? std::optional(tavo::BoundedTime(start) + Shift()) : std::nullopt;
    if (!time && !m_section.IsAll()) time = m_next;
    m_next = tavo::BoundedTime(time.value_or(m_next) + LengthOf(size));
    if (!m_section.IsAll()) size = BytesInside(size, *time);
    const std::span sound(reinterpret_cast<const std::byte*>(data), size);
    // Nothing at all behind a section, neither the silence up to there.
    const HRESULT hr = size > 0 ? m_sink.TakeSound(sound, time) : S_OK;
    if (FAILED(hr)) return hr;
    if (!m_section.IsAll() && m_next >= m_section.duration) m_sink.ReachSoundEnd();
    m_sink.Pace().Reach(tavo::StreamPace::Stream::Sound, m_next);
    return hr;
}

STDMETHODIMP CAviSinkSoundPin::EndOfStream() {
    const HRESULT hr = CheckStreaming();
    if (hr == S_OK) m_sink.ReachSoundEnd();
    return hr;
}

STDMETHODIMP CAviSinkSoundPin::BeginFlush() {
    m_sink.EndPace();
    return CBaseInputPin::BeginFlush();
}

STDMETHODIMP CAviSinkSoundPin::EndFlush() {
    m_sink.RestartSound();
    return CBaseInputPin::EndFlush();
}

void CAviSink::AddSoundPin() {
    m_hasSoundPin = true;
    IncrementPinVersion();
}

void CAviSink::RemoveSoundPin() {
    m_hasSoundPin = false;
    IncrementPinVersion();
}

void CAviSink::StartPace() {
    if (m_isPaced) m_pace.Start();
}

bool CAviSink::WantsMore() {
    CAutoLock lock(&m_stateLock);
    return m_withSound && !m_soundEnded;
}

void CAviSink::RestartSound() {
    CAutoLock lock(&m_stateLock);
    m_soundEnded = m_result.soundIsCut;
}

void CAviSink::ReachSoundEnd() {
    {
        CAutoLock lock(&m_stateLock);
        m_soundEnded = true;
    }
    m_pace.End();
    SignalCompleteOnce();
}

// Frames that are queued are still written. Not waiting for them: others may come all the time.
HRESULT CAviSink::RefuseSound() { return Fail(tavo::IoResult::Ok, kSoundChanged); }

HRESULT CAviSink::TakeSound(std::span<const std::byte> sound, std::optional<REFERENCE_TIME> start) {
    {
        CAutoLock lock(&m_stateLock);
        if (FAILED(m_failure)) return m_failure;
        if (!m_open || !m_withSound) return E_FAIL;
        if (m_soundEnded) return S_OK;
    }
    bool taken = false;
    tavo::IoResult written = tavo::IoResult::Ok;
    try {
        CAutoLock lock(&m_fileLock);
        if (!m_writer) return E_FAIL;
        taken = m_writer->AddSound(sound, start);
        written = m_writer->WriteAhead();
    } catch (const std::bad_alloc&) {
        return Fail(tavo::IoResult::Ok, E_OUTOFMEMORY);
    }
    if (written != tavo::IoResult::Ok) return Fail(written, ReasonOf(written));
    if (taken) return S_OK;
    {
        CAutoLock lock(&m_stateLock);
        m_result.soundIsCut = true;
    }
    ReachSoundEnd();
    return S_OK;
}
