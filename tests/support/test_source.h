// Source filter driven by hand: one output pin ("Output"), samples only when the test sends them.
//
//   auto source = TestSource::Create({.types = {type}});
//   ASSERT_EQ(ConnectPins(&source->pin(), inputPin), S_OK);
//   source->Pause();                                     // commits the allocator
//   source->pin().Deliver({.start = 0, .stop = 400000, .bytes = frame});
//   source->pin().SendEndOfStream();
//
// On connecting it offers its types in order, then settles an allocator as a real source does: the
// peer's if it has one, else an own one (AllocatorChoice changes that). It calls on the thread
// that calls it; stop and flush from another thread are the test's own business.
#pragma once

#include <windows.h>

#include <strmif.h>

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "tests/support/test_allocator.h"
#include "tests/support/test_filter.h"

namespace tavo_test {

enum class AllocatorChoice { kPeerThenOwn, kOwnOnly, kPlatformOnly };

struct SourceConfig {
    std::vector<MediaType> types = {};
    AllocatorChoice choice = AllocatorChoice::kPeerThenOwn;
    // What is asked of the allocator; cbBuffer 0 means the size of the connected type's frame.
    ALLOCATOR_PROPERTIES wish = {2, 0, 1, 0};
    // How an own TestAllocator behaves.
    AllocatorConfig allocator = {};
    bool readOnly = false;
    // Whether the pin has IQualityControl; its notices are kept.
    bool qualityControl = true;
    // Whether the pin has IMediaSeeking: GetDuration, GetCurrentPosition and SetPositions work.
    bool seeking = false;
};

// Everything about one sample to send.
struct SampleSpec {
    std::optional<REFERENCE_TIME> start = {};
    std::optional<REFERENCE_TIME> stop = {};  // ignored without start
    std::optional<LONGLONG> mediaStart = {};
    std::optional<LONGLONG> mediaEnd = {};
    bool syncPoint = true;
    bool preroll = false;
    bool discontinuity = false;
    std::vector<BYTE> bytes = {};  // goes to the buffer's start, as much as fits
    std::optional<long> actualLength =
        {};                              // else the number of bytes; the whole buffer without bytes
    std::optional<MediaType> type = {};  // carried by the sample
    DWORD streamId = AM_STREAM_MEDIA;
    // A sample outside the allocator that was agreed on.
    std::optional<SampleConfig> freestanding = {};
};

struct QualityNotice {
    IBaseFilter* sender;  // not counted
    Quality quality;
};

class SourceSeeking;

class TestOutputPin final : public TestPin, public IQualityControl {
  public:
    TestOutputPin(TestFilter& filter, const SourceConfig& config);
    ~TestOutputPin() override;

    // Null before the allocator is agreed on.
    IMemAllocator* allocator() const { return allocator_.Get(); }
    // The same, if it is an own TestAllocator.
    TestAllocator* testAllocator() const { return testAllocator_.Get(); }
    IMemInputPin* input() const { return input_.Get(); }
    std::vector<QualityNotice> notices() const;
    IQualityControl* qualitySink() const { return qualitySink_; }

    // Empty if the allocator gives none; `result` tells why.
    ComPtr<IMediaSample> MakeSample(const SampleSpec& spec, HRESULT* result = nullptr);
    HRESULT Deliver(const SampleSpec& spec);
    HRESULT Deliver(IMediaSample* sample);
    HRESULT SendEndOfStream();
    HRESULT SendBeginFlush();
    HRESULT SendEndFlush();
    HRESULT SendNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

    HRESULT Commit() { return allocator_ ? allocator_->Commit() : S_OK; }
    HRESULT Decommit() { return allocator_ ? allocator_->Decommit() : S_OK; }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return TestPin::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return TestPin::Release(); }
    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EndOfStream() override { return E_UNEXPECTED; }
    STDMETHODIMP BeginFlush() override { return E_UNEXPECTED; }
    STDMETHODIMP EndFlush() override { return E_UNEXPECTED; }
    STDMETHODIMP NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }
    STDMETHODIMP Notify(IBaseFilter* sender, Quality quality) override;
    STDMETHODIMP SetSink(IQualityControl* sink) override;

  private:
    void OnDisconnected() override;
    HRESULT TryType(IPin* receiver, const AM_MEDIA_TYPE& type);
    HRESULT NegotiateAllocator(const AM_MEDIA_TYPE& type);
    HRESULT TryAllocator(IMemAllocator* allocator, ALLOCATOR_PROPERTIES wish);

    const SourceConfig config_;
    ComPtr<IMemInputPin> input_;
    ComPtr<IMemAllocator> allocator_;
    ComPtr<TestAllocator> testAllocator_;
    IQualityControl* qualitySink_ = nullptr;
    mutable std::mutex noticesMutex_;
    std::vector<QualityNotice> notices_;
    std::unique_ptr<SourceSeeking> seeking_;
};

class TestSource final : public TestFilter {
  public:
    static ComPtr<TestSource> Create(const SourceConfig& config);
    TestOutputPin& pin() { return pin_; }
    TestPin& basePin() override { return pin_; }

  private:
    explicit TestSource(const SourceConfig& config) : pin_(*this, config) {}
    HRESULT OnStop() override { return pin_.Decommit(); }
    HRESULT OnPauseFromStopped() override { return pin_.Commit(); }

    TestOutputPin pin_;
};

}  // namespace tavo_test
