// A renderer that writes uncompressed frames, and sound, to an AVI file as fast as they arrive.
// Frames wait in a queue, in their own buffers, while a thread of the sink writes. Sound is copied.

#pragma once

#include <filesystem>
#include <optional>
#include <span>

#include "dshow/com_ptr.h"
#include "host/avi/file_store.h"
#include "host/avi/stream_pace.h"
#include "host/avi/timed_avi_writer.h"
#include "host/avi/work_queue.h"
#include "host/filters/avi_sink_sound_pin.h"
#include "host/filters/frame_counter_filter.h"
#include "host/filters/frame_watch.h"
#include "host/filters/video_type.h"
#include "streams.h"

class CAviSink;

// Accepts the eleven formats. The format cannot change while the graph runs.
class CAviSinkPin final : public CBaseInputPin {
  public:
    CAviSinkPin(CAviSink* filter, CCritSec* lock, HRESULT* phr);

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override;
    // Gives an allocator of this pin more buffers, so that frames can wait in them.
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    STDMETHODIMP Receive(IMediaSample* sample) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    // Writing to a file may block.
    STDMETHODIMP ReceiveCanBlock() override { return S_OK; }

    const tavo::VideoType& Video() const { return m_video; }

    // Frames that may wait. 0 unless the allocator is of this pin: other ones may need their
    // samples back at once.
    long QueueLength() const { return m_queueLength; }

  private:
    HRESULT WriteWatched(IMediaSample* sample, tavo::FrameWatch& watch);

    CAviSink& m_sink;
    tavo::VideoType m_video;
    tavo::ComPtr<IMemAllocator> m_ownAllocator;
    long m_queueLength = 0;
};

// A frame and the sample that it lies in.
struct CAviSinkFrame {
    tavo::ComPtr<IMediaSample> sample;
    std::span<const std::byte> data;
    std::optional<REFERENCE_TIME> start;
    REFERENCE_TIME length = 0;  // 0 when it is unknown
};

// Connect, OpenFile, run the graph, stop it, FinishFile, in this order.
class CAviSink final : public CBaseFilter,
                       public IAMFilterMiscFlags,
                       public CFrameCounter::Arrivals,
                       private tavo::WorkQueue<CAviSinkFrame>::Worker {
  public:
    explicit CAviSink(HRESULT* phr);
    ~CAviSink() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;
    // Makes the graph wait for EC_COMPLETE of this filter.
    STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }

    STDMETHODIMP Run(REFERENCE_TIME start) override;
    // All frames are written when it returns.
    STDMETHODIMP Stop() override;
    int GetPinCount() override { return m_hasSoundPin ? 2 : 1; }
    CBasePin* GetPin(int n) override;

    // While the pin is unconnected. Connected, its end belongs to the end of the run.
    void AddSoundPin();
    void RemoveSoundPin();
    CAviSinkSoundPin& SoundPin() { return m_soundPin; }

    // Before the streaming. Frames and sound come from sources of their own, which can wait for
    // each other.
    void KeepTogether() { m_isPaced = true; }

    struct Result {
        tavo::IoResult io = tavo::IoResult::Ok;  // the first failure
        bool typeChanged = false;                // the stream changed its format
        bool soundChanged = false;               // the sound did
        bool soundIsCut = false;                 // too far ahead of the frames
        uint64_t frames = 0;
        uint64_t repeats = 0;  // frames repeated because they last longer than one slot
        uint64_t bytes = 0;
        tavo::SoundFormat sound;
        uint64_t soundBlocks = 0;
        tavo::FrameRate rate;
        tavo::TimeStamps stamps;
    };

    using Timing = tavo::TimedAviWriter::Timing;

    struct FileOptions {
        Timing timing = Timing::Kept;
        tavo::AspectRatio displayAspect = {};
        // Bytes of sound that may wait for the first frame.
        size_t maxSoundHeld = tavo::TimedAviWriter::kMaxSoundHeld;
    };

    // Creates or empties the file. The pin is connected and the graph stopped.
    tavo::IoResult OpenFile(const std::filesystem::path& path, const FileOptions& options);
    // The same with an empty store, which outlives FinishFile.
    tavo::IoResult OpenStore(tavo::ByteStore& store, const FileOptions& options);

    // Completes the file. Any thread. Frames that arrive later are refused.
    Result FinishFile();

    // Any thread. Frames count when they are queued.
    uint64_t Count() override;
    void Expect(REFERENCE_TIME start, REFERENCE_TIME stop) override;
    bool IsShown() override;
    // Whether the sound has not ended.
    bool WantsMore() override;

    // Before the streaming, which it outlives. May be null.
    void SetWatch(tavo::FrameWatch* watch) { m_watch = watch; }
    tavo::FrameWatch* Watch() const { return m_watch; }

    // Called by the pin on the streaming thread.
    HRESULT TakeFrame(IMediaSample* sample);
    void ReachEnd();
    // Aborts the run with this reason, once; after the frames that are queued.
    HRESULT Refuse(HRESULT reason);

    // Called by the pin of sound on its streaming thread.
    HRESULT TakeSound(std::span<const std::byte> sound, std::optional<REFERENCE_TIME> start);
    void ReachSoundEnd();
    void RestartSound();
    HRESULT RefuseSound();

    // Called by the pins. The streams wait for each other, if they do so at all, or no longer.
    void StartPace();
    void EndPace() { m_pace.End(); }
    tavo::StreamPace& Pace() { return m_pace; }

  private:
    static constexpr HRESULT kSoundChanged = VFW_E_INVALIDMEDIATYPE;

    bool Work(CAviSinkFrame& frame) override { return SUCCEEDED(Write(frame)); }
    HRESULT Write(const CAviSinkFrame& frame);
    HRESULT Queue(CAviSinkFrame frame);
    static HRESULT ReasonOf(tavo::IoResult io);
    // Aborts the run, once. The result is for the source.
    HRESULT Fail(tavo::IoResult io, HRESULT reason);
    HRESULT Failure();
    void SignalCompleteOnce();
    bool ShowsExpected(REFERENCE_TIME start, REFERENCE_TIME stop) const;
    void CompleteFile();

    tavo::FrameWatch* m_watch = nullptr;
    CCritSec m_lock;
    CCritSec m_finishLock;
    CCritSec m_fileLock;  // guards the file and its writer
    tavo::FileStore m_file;
    std::optional<tavo::TimedAviWriter> m_writer;
    CCritSec m_stateLock;  // guards all below but the queue; innermost
    Result m_result;
    HRESULT m_failure = S_OK;
    uint64_t m_count = 0;
    REFERENCE_TIME m_expectedStart = 0;
    REFERENCE_TIME m_expectedStop = 0;
    bool m_open = false;
    bool m_queued = false;  // else frames are written when they come
    bool m_shown = false;
    bool m_running = false;
    bool m_endReached = false;
    bool m_completeSent = false;
    bool m_withSound = false;
    bool m_soundEnded = false;
    bool m_hasSoundPin = false;  // guarded by m_lock
    bool m_isPaced = false;
    tavo::StreamPace m_pace;
    CAviSinkPin m_pin;
    CAviSinkSoundPin m_soundPin;
    tavo::WorkQueue<CAviSinkFrame> m_queue;
};
