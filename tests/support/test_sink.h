// Sink filter: one input pin ("Input") that keeps everything it gets.
//
//   auto sink = TestSink::Create({.accept = [](const AM_MEDIA_TYPE& t) { return ...; },
//                                 .allocator = SinkAllocator::kOwn,
//                                 .ownAllocator = {.guard = BufferGuard::kPageAfter}});
//   ... stream ...
//   EXPECT_EQ(sink->pin().samples().at(0).bytes, expected);
//   EXPECT_EQ(sink->pin().calls().Count("EndOfStream"), 1);
//
// Faults: pin().calls().Inject("ReceiveConnection", E_FAIL) and so on for every method.
// Holding:  pin().HoldReceive(); start a thread that sends; pin().WaitUntilHeld(); look around;
//           pin().ReleaseReceive(). BeginFlush and Stop of the sink release it too, as in a real
//           renderer, unless the configuration says otherwise.
// Dynamic types: pin().ownAllocator()->AttachTypeOnce(type), then the next buffer carries it.
#pragma once

#include <windows.h>

#include <strmif.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "tests/support/patience.h"
#include "tests/support/test_allocator.h"
#include "tests/support/test_filter.h"

namespace tavo_test {

enum class SinkAllocator { kNone, kOwn, kPlatform };

struct SinkConfig {
    // Types that ReceiveConnection, QueryAccept and samples may have; empty: every type.
    std::function<bool(const AM_MEDIA_TYPE&)> accept = {};
    // What QueryAccept answers, if not `accept`.
    std::optional<HRESULT> queryAccept = {};
    // Offered by EnumMediaTypes.
    std::vector<MediaType> types = {};
    // GetAllocator: none answers VFW_E_NO_ALLOCATOR.
    SinkAllocator allocator = SinkAllocator::kNone;
    AllocatorConfig ownAllocator = {};
    // GetAllocatorRequirements: without a value E_NOTIMPL.
    std::optional<ALLOCATOR_PROPERTIES> requirements = {};
    bool memInputPin = true;  // whether the pin has IMemInputPin
    HRESULT receiveCanBlock = S_OK;
    // A further ReceiveConnection from the present peer changes the type, also while not stopped.
    bool typeChangeWhileConnected = false;
    // Called with the type of every connection that is accepted.
    std::function<void(const AM_MEDIA_TYPE&)> onConnection = {};
    // Bytes kept of each sample: the whole buffer, not only the actual length.
    bool keepWholeBuffer = false;
    bool keepBytes = true;
    bool flushReleasesHold = true;
    bool stopReleasesHold = true;
    // Called for every sample before it is recorded; anything but S_OK is the result of Receive.
    std::function<HRESULT(IMediaSample*)> onReceive = {};
};

struct ReceivedSample {
    std::vector<BYTE> bytes;
    long actualLength = 0;
    long size = 0;
    BYTE* pointer = nullptr;
    HRESULT timeResult = S_OK;  // of GetTime
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    HRESULT mediaTimeResult = S_OK;  // of GetMediaTime
    LONGLONG mediaStart = 0;
    LONGLONG mediaEnd = 0;
    bool syncPoint = false;
    bool preroll = false;
    bool discontinuity = false;
    std::optional<MediaType> type;  // what the sample carried
    bool sample2 = false;           // the following three are valid only then
    DWORD sampleFlags = 0;
    DWORD typeSpecificFlags = 0;
    DWORD streamId = 0;
    DWORD threadId = 0;
    IMediaSample* identity = nullptr;  // not counted, for comparison only
};

struct Segment {
    REFERENCE_TIME start;
    REFERENCE_TIME stop;
    double rate;
};

class TestInputPin final : public TestPin, public IMemInputPin {
  public:
    TestInputPin(TestFilter& filter, const SinkConfig& config)
        : TestPin(filter, PINDIR_INPUT, L"Input"), config(config) {
        offered = config.types;
    }

    // May be changed between calls of the other side.
    SinkConfig config;

    std::vector<ReceivedSample> samples() const;
    std::vector<Segment> segments() const;
    void ClearSamples();
    // False if `count` samples have not come within the time.
    bool WaitForSamples(size_t count, DWORD milliseconds = kPatience);

    // From NotifyAllocator.
    IMemAllocator* allocator() const { return allocator_.Get(); }
    bool readOnly() const { return readOnly_; }
    // SinkAllocator::kOwn: made on first use.
    TestAllocator* ownAllocator();
    bool flushing() const { return flushing_; }

    void HoldReceive();
    bool WaitUntilHeld(DWORD milliseconds = kPatience);
    void ReleaseReceive();

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return TestPin::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return TestPin::Release(); }
    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, WINBOOL readOnly) override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    STDMETHODIMP Receive(IMediaSample* sample) override;
    STDMETHODIMP ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) override;
    STDMETHODIMP ReceiveCanBlock() override;

  private:
    void OnDisconnected() override { allocator_.Reset(); }
    void Record(IMediaSample* sample);

    ComPtr<IMemAllocator> allocator_;
    bool readOnly_ = false;
    ComPtr<TestAllocator> ownAllocator_;
    ComPtr<IMemAllocator> platformAllocator_;
    std::atomic<bool> flushing_ = false;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool hold_ = false;
    bool held_ = false;
    std::vector<ReceivedSample> samples_;
    std::vector<Segment> segments_;
};

class TestSink final : public TestFilter {
  public:
    static ComPtr<TestSink> Create(const SinkConfig& config = {});
    TestInputPin& pin() { return pin_; }
    TestPin& basePin() override { return pin_; }

  private:
    explicit TestSink(const SinkConfig& config) : pin_(*this, config) {}
    HRESULT OnStop() override {
        if (pin_.config.stopReleasesHold) pin_.ReleaseReceive();
        return S_OK;
    }

    TestInputPin pin_;
};

}  // namespace tavo_test
