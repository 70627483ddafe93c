// Passes frames to the writer, and the end of the stream and failures to the graph.

#include "host/filters/avi_sink_filter.h"

#include <new>
#include <utility>

namespace {

// {5D7B0E3C-9C0A-4B52-8A0E-0C2F6B1D7A29}; never registered.
constexpr CLSID kSinkClass = {
    0x5d7b0e3c, 0x9c0a, 0x4b52, {0x8a, 0x0e, 0x0c, 0x2f, 0x6b, 0x1d, 0x7a, 0x29}};

}  // namespace

HRESULT CAviSink::ReasonOf(tavo::IoResult io) {
    return io == tavo::IoResult::DiskFull ? HRESULT_FROM_WIN32(ERROR_DISK_FULL)
                                          : HRESULT_FROM_WIN32(ERROR_WRITE_FAULT);
}

CAviSink::CAviSink(HRESULT* phr)
    : CBaseFilter(NAME("AVI sink"), nullptr, &m_lock, kSinkClass),
      m_pin(this, &m_lock, phr),
      m_soundPin(this, &m_lock, phr),
      m_queue(*this) {}

CAviSink::~CAviSink() { m_queue.End(); }

CBasePin* CAviSink::GetPin(int n) {
    if (n == 0) return &m_pin;
    return n == 1 && m_hasSoundPin ? &m_soundPin : nullptr;
}

STDMETHODIMP CAviSink::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    if (riid == IID_IAMFilterMiscFlags) {
        return GetInterface(static_cast<IAMFilterMiscFlags*>(this), ppv);
    }
    return CBaseFilter::NonDelegatingQueryInterface(riid, ppv);
}

STDMETHODIMP CAviSink::Run(REFERENCE_TIME start) {
    const HRESULT hr = CBaseFilter::Run(start);
    if (FAILED(hr)) return hr;
    {
        CAutoLock lock(&m_stateLock);
        m_running = true;
    }
    // A short stream can end while the graph is paused. The graph counts EC_COMPLETE only when it
    // runs.
    SignalCompleteOnce();
    return hr;
}

STDMETHODIMP CAviSink::Stop() {
    m_pace.End();
    const HRESULT hr = CBaseFilter::Stop();
    m_queue.Drain();
    CAutoLock lock(&m_stateLock);
    m_running = false;
    m_endReached = false;
    m_soundEnded = m_result.soundIsCut;
    m_completeSent = false;
    return hr;
}

void CAviSink::Expect(REFERENCE_TIME start, REFERENCE_TIME stop) {
    CAutoLock lock(&m_stateLock);
    m_expectedStart = start;
    m_expectedStop = stop;
    m_shown = false;
}

bool CAviSink::IsShown() {
    CAutoLock lock(&m_stateLock);
    return m_shown;
}

// A picture is shown by a frame with the same times, or by the slot of a fixed rate in which it
// starts. The slot at 0 shows whatever comes first.
bool CAviSink::ShowsExpected(REFERENCE_TIME start, REFERENCE_TIME stop) const {
    if (start == m_expectedStart && stop == m_expectedStop) return true;
    return start == 0 || (start < m_expectedStart && m_expectedStart <= stop);
}

void CAviSink::ReachEnd() {
    m_queue.Drain();
    m_pace.End();
    {
        CAutoLock lock(&m_stateLock);
        m_endReached = true;
    }
    SignalCompleteOnce();
}

void CAviSink::SignalCompleteOnce() {
    {
        CAutoLock lock(&m_stateLock);
        if (!m_running || !m_endReached || m_completeSent || FAILED(m_failure)) return;
        if (m_withSound && !m_soundEnded) return;
        m_completeSent = true;
    }
    NotifyEvent(EC_COMPLETE, S_OK, 0);
}

tavo::IoResult CAviSink::OpenFile(const std::filesystem::path& path, const FileOptions& options) {
    const tavo::IoResult result = m_file.Create(path);
    return result == tavo::IoResult::Ok ? OpenStore(m_file, options) : result;
}

tavo::IoResult CAviSink::OpenStore(tavo::ByteStore& store, const FileOptions& options) {
    CAutoLock lock(&m_fileLock);
    const tavo::VideoType& video = m_pin.Video();
    m_writer.emplace(store, video.video, video.frameDuration, options.timing);
    m_writer->SetDisplayAspect(options.displayAspect);
    const tavo::SoundFormat sound =
        m_soundPin.IsConnected() ? m_soundPin.Sound() : tavo::SoundFormat{};
    if (sound.IsKnown()) m_writer->SetSound(sound);
    m_writer->SetMaxSoundHeld(options.maxSoundHeld);
    const tavo::IoResult result = m_writer->Begin();
    const long length = m_pin.QueueLength();
    const bool queued = length > 0 && m_queue.Start(static_cast<size_t>(length));
    CAutoLock state(&m_stateLock);
    m_result.rate = m_writer->Rate();
    m_result.sound = sound;
    m_withSound = sound.IsKnown();
    m_open = true;
    m_queued = queued;
    return result;
}

uint64_t CAviSink::Count() {
    CAutoLock lock(&m_stateLock);
    return m_count;
}

HRESULT CAviSink::Fail(tavo::IoResult io, HRESULT reason) {
    {
        CAutoLock lock(&m_stateLock);
        if (FAILED(m_failure)) return m_failure;
        m_failure = reason == E_OUTOFMEMORY ? reason : E_FAIL;
        m_result.io = io;
        m_result.typeChanged = reason == VFW_E_TYPE_NOT_ACCEPTED;
        m_result.soundChanged = reason == kSoundChanged;
    }
    m_pace.End();
    NotifyEvent(EC_ERRORABORT, reason, 0);
    return Failure();
}

HRESULT CAviSink::Failure() {
    CAutoLock lock(&m_stateLock);
    return FAILED(m_failure) ? m_failure : E_FAIL;
}

HRESULT CAviSink::Refuse(HRESULT reason) {
    m_queue.Drain();
    return Fail(tavo::IoResult::Ok, reason);
}

HRESULT CAviSink::TakeFrame(IMediaSample* sample) {
    BYTE* data = nullptr;
    const uint32_t length = tavo::FrameSize(m_pin.Video().video).value_or(0);
    // The size of the buffer counts: few filters set the actual data length.
    if (FAILED(sample->GetPointer(&data)) || data == nullptr || sample->GetSize() < 0 ||
        static_cast<uint32_t>(sample->GetSize()) < length) {
        return Refuse(VFW_E_BUFFER_OVERFLOW);
    }
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample->GetTime(&start, &stop);
    const bool timed = SUCCEEDED(times);
    const HRESULT hr = Queue({tavo::ComPtr<IMediaSample>(sample),
                              {reinterpret_cast<const std::byte*>(data), length},
                              timed ? std::optional(start) : std::nullopt,
                              times == S_OK ? stop - start : 0});
    if (FAILED(hr)) return hr;
    {
        CAutoLock lock(&m_stateLock);
        ++m_count;
        if (!timed || ShowsExpected(start, stop)) m_shown = true;
    }
    if (timed) m_pace.Reach(tavo::StreamPace::Stream::Frames, start);
    return S_OK;
}

HRESULT CAviSink::Queue(CAviSinkFrame frame) {
    bool queued = false;
    {
        CAutoLock lock(&m_stateLock);
        if (FAILED(m_failure)) return m_failure;
        if (!m_open) return E_FAIL;
        queued = m_queued;
    }
    if (!queued) return Write(frame);
    return m_queue.Put(std::move(frame)) ? S_OK : Failure();
}

HRESULT CAviSink::Write(const CAviSinkFrame& frame) {
    tavo::IoResult result = tavo::IoResult::Ok;
    HRESULT reason = S_OK;
    {
        CAutoLock lock(&m_fileLock);
        if (!m_writer) return E_FAIL;
        try {
            result = m_writer->WriteFrame(frame.data, frame.start, frame.length);
            if (result != tavo::IoResult::Ok) reason = ReasonOf(result);
        } catch (const std::bad_alloc&) {
            reason = E_OUTOFMEMORY;
        }
    }
    return SUCCEEDED(reason) ? S_OK : Fail(result, reason);
}

CAviSink::Result CAviSink::FinishFile() {
    CAutoLock finishing(&m_finishLock);
    {
        CAutoLock lock(&m_stateLock);
        m_open = false;
    }
    m_pace.End();
    m_queue.End();
    CAutoLock file(&m_fileLock);
    if (m_writer) CompleteFile();
    CAutoLock state(&m_stateLock);
    return m_result;
}

void CAviSink::CompleteFile() {
    tavo::IoResult settled = tavo::IoResult::Failed;
    tavo::IoResult result = tavo::IoResult::Failed;
    uint64_t repeats = 0;
    try {
        // After a failed write this fails, and the file is finished all the same.
        settled = m_writer->SettleTiming();
    } catch (const std::bad_alloc&) {
    }
    try {
        result = m_writer->Finish();
        repeats = m_writer->RepeatCount();
    } catch (const std::bad_alloc&) {
    }
    const tavo::IoResult closed = m_file.Close();
    CAutoLock lock(&m_stateLock);
    if (result == tavo::IoResult::Ok && SUCCEEDED(m_failure)) result = settled;
    if (result == tavo::IoResult::Ok) result = closed;
    if (m_result.io == tavo::IoResult::Ok) m_result.io = result;
    m_result.repeats = repeats;
    m_result.frames = m_writer->FrameCount();
    m_result.bytes = m_writer->BytesWritten();
    m_result.soundBlocks = m_writer->SoundBlocks();
    if (settled == tavo::IoResult::Ok && m_writer->HasSoundLeft()) m_result.soundIsCut = true;
    m_result.rate = m_writer->Rate();
    m_result.stamps = m_writer->Stamps();
    m_writer.reset();
}
