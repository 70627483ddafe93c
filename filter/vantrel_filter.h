// CVantrelFilter, the one filter of this module: a transform filter that resizes uncompressed video
// without converting its format and can deliver it at a fixed frame rate.
//
// Threads and locks. Settings and statistics are atomic values that anybody reads and writes
// without a lock. The negotiated types are guarded by the settings lock, which is held for moments
// only and is the innermost lock: while a thread holds it, it takes no lock that it does not hold
// already. The conversion, with its maps and buffers, is guarded by the base class's streaming
// lock, so it never changes under a frame in progress. The streaming thread never takes the filter
// lock. A change of the output type while frames flow is posted under the settings lock, and made
// by the streaming thread.

#pragma once

#include "streams.h"

#include <atomic>
#include <cstdint>
#include <memory>

#include "cpu/atomic64.h"
#include "filter/format_change.h"
#include "filter/output_type.h"
#include "filter/stream_clock.h"
#include "filter/stream_statistics.h"
#include "filter/vantrel_pins.h"
#include "picture/conversion.h"
#include "regulator/time_regulator.h"
#include "settings/vantrel_settings.h"

class CVantrelFilter final : public CTransformFilter,
                             public IVantrelSettings,
                             public ISpecifyPropertyPages,
                             private PinOwner {
  public:
    // Creation function for the class table.
    static CUnknown* CALLBACK CreateInstance(LPUNKNOWN outer, HRESULT* result);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    // ISpecifyPropertyPages
    STDMETHODIMP GetPages(CAUUID* pages) override;

    // IVantrelSettings; the contract stands in its header.
    int STDMETHODCALLTYPE SetOutputSize(int width, int height) override;
    int STDMETHODCALLTYPE GetOutputSize(int* width, int* height) override;
    int STDMETHODCALLTYPE SetScaleMethod(int method) override;
    int STDMETHODCALLTYPE GetScaleMethod(int* method) override;
    int STDMETHODCALLTYPE SetOutputFormat(int format) override;
    int STDMETHODCALLTYPE GetOutputFormat(int* format) override;
    int STDMETHODCALLTYPE SetVideoType(int type) override;
    int STDMETHODCALLTYPE GetVideoType(int* type) override;
    int STDMETHODCALLTYPE GetModuleTime(double* milliseconds) override;
    int STDMETHODCALLTYPE GetSystemFps(double* fps) override;
    int STDMETHODCALLTYPE ApplySettings() override;
    int STDMETHODCALLTYPE GetGenerateFps(double* fps) override;
    int STDMETHODCALLTYPE SetFrameRate(double fps) override;
    int STDMETHODCALLTYPE GetFrameRate(double* fps) override;

    // CTransformFilter: objects (vantrel_filter.cpp; Pause and SetSyncSource in streaming.cpp)
    CBasePin* GetPin(int index) override;
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;

    // CTransformFilter: negotiation (negotiation.cpp)
    HRESULT CheckInputType(const CMediaType* type) override;
    HRESULT CheckTransform(const CMediaType* input, const CMediaType* output) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wishes) override;
    HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* type) override;

    // CTransformFilter: streaming (streaming.cpp; Transform in frame_path.cpp)
    HRESULT StartStreaming() override;
    HRESULT StopStreaming() override;
    HRESULT BeginFlush() override;
    HRESULT Receive(IMediaSample* sample) override;
    HRESULT Transform(IMediaSample* input, IMediaSample* output) override;

  private:
    // A kept picture has the size of the output: it outlives a new source, but no new output.
    enum class KeptPicture { Keep, Forget };

    CVantrelFilter(LPUNKNOWN outer, HRESULT* result);
    ~CVantrelFilter() override;

    // PinOwner
    CCritSec& SettingsLock() override { return settingsLock_; }
    HRESULT CheckBesideOutputType(const CMediaType& input) override;
    HRESULT CheckBesideInputType(const CMediaType& output) override;
    void AbandonSample() override;

    // Negotiation: negotiation.cpp
    HRESULT CopyInputType(CMediaType* type);
    HRESULT CopyOutputType(CMediaType* type);
    bool PassesTypeTest(const CMediaType& type) const;
    HRESULT BuildOffer(CMediaType* type);
    HRESULT SetInputType(const CMediaType& type);
    HRESULT SetOutputType(const CMediaType& type, tavo::Picture output);
    HRESULT SettleSourceLayout(IMediaSample* sample);
    HRESULT BuildConversion(const tavo::Picture& source, const tavo::Picture& output,
                            std::unique_ptr<tavo::Conversion>& built) const;
    void ReplaceConversion(std::unique_ptr<tavo::Conversion> built, KeptPicture kept);
    bool IsOutputSettled() const { return m_pOutput && m_pOutput->IsConnected(); }
    void TakeSizeWhereUnset(const tavo::Picture& source);
    void StoreNegotiatedSize(OutputSize asked, OutputSize negotiated);
    int ReconnectOutput(IPin* peer, const CMediaType& type);

    // Changes while frames flow: format_change.cpp
    int PostOutputType(IPin* sink, CMediaType& type);
    void PostAgain(CMediaType& type);
    void ForgetPostedType();
    HRESULT SendFrame(IMediaSample* sample);
    bool TakePostedType(FormatChange& change);
    HRESULT PrepareChange(const CMediaType& type, const tavo::Picture& picture,
                          FormatChange& change);
    HRESULT MakeChangeWith(IMediaSample* output);
    void MakeChange(FormatChange& change);
    void UndoChange(FormatChange& change);
    void ExchangeOutput(FormatChange& change);
    void ShowPresentSize(const tavo::Picture& refused);

    // Streaming: streaming.cpp
    HRESULT ReceiveRegulated(IMediaSample* sample, REFERENCE_TIME duration);
    HRESULT DeliverSlots(IMediaSample* sample, tavo::TimeWindow window, REFERENCE_TIME duration);
    tavo::TimeWindow WindowOf(IMediaSample* sample, REFERENCE_TIME duration);
    bool SampleIsAbandoned() const;
    void LowerTimerPeriod();
    bool IsRegulatorOn() const { return frameDuration_.load() > 0; }

    // The way of a frame: frame_path.cpp
    HRESULT FollowInputSampleType();
    HRESULT FollowOutputSampleType(IMediaSample* sample);
    HRESULT ProcessFrame(IMediaSample* input, IMediaSample* output);
    HRESULT ProcessRegulatedFrame(tavo::FrameSpan output, tavo::FrameSpan input);
    HRESULT ScaleFrame(tavo::FrameSpan output, tavo::FrameSpan input);
    HRESULT StampPlainSample(IMediaSample* input, IMediaSample* output);
    HRESULT StampRegulatedSample(IMediaSample* input, IMediaSample* output);

    CCritSec settingsLock_;

    // Guarded by the settings lock.
    CMediaType inputType_;
    CMediaType outputType_;
    tavo::Picture source_;
    tavo::Picture output_;
    int32_t bitsPerPixel_ = 0;  // of the type set last, of either direction

    CMediaType postedType_;  // meaningless unless isTypePosted_

    // Read without the lock, for each frame.
    std::atomic<bool> isTypePosted_{false};

    // Guarded by the streaming lock.
    FormatChange* change_ = nullptr;  // waits for the buffer of its first frame
    CMediaType offeredType_;          // the filter's last offer that the sink took
    std::unique_ptr<tavo::Conversion> conversion_;
    bool isSourceLayoutOpen_ = false;  // until the first frame tells how its planes lie
    tavo::TimeRegulator regulator_;

    // Settings.
    Atomic64<OutputSize> outputSize_{OutputSize{0, 0}};
    std::atomic<int32_t> scaleMethod_{VantrelMethodAuto};
    std::atomic<int32_t> outputFormat_{VantrelFormatAuto};
    std::atomic<int32_t> videoType_{VantrelTypeAuto};
    Atomic64<double> frameRate_{0.0};
    Atomic64<REFERENCE_TIME> frameDuration_{0};  // 0 while the time regulator is off

    StreamStatistics statistics_;
    StreamClock streamClock_;

    // Where a flush meets the streaming thread.
    std::atomic<bool> isResetPending_{false};
    // From the stop until the next start.
    std::atomic<bool> isStopping_{false};

    // Manual reset; signalled while isStopping_. Deliberate: the filter owns it, and nothing in it
    // waits.
    HANDLE stopEvent_ = nullptr;
    bool isTimerPeriodRaised_ = false;
};
