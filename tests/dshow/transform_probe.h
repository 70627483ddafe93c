// A transform filter as a filter's author would write one: copies bytes, notes every call of the
// base class in its log, and can be made to answer anything at each.
//
//   ComPtr<ProbeTransform> filter = MakeTransform();
//   filter->log.Inject("Transform", S_FALSE);
//
// Notes carry the direction: "CheckConnect(IN)", "SetMediaType(OUT)". BreakConnect tells in
// addition whether its pin still counts as connected: "BreakConnect(OUT)+".
#pragma once

#include "tests/dshow/probes.h"

#include "tests/support/test_sink.h"
#include "tests/support/test_source.h"

namespace tavo_test {

inline constexpr GUID kTransformClass = {
    0x3B0B2C1D, 0x51A4, 0x4E67, {0x9D, 0x31, 0x0E, 0x55, 0x70, 0x12, 0x8F, 0x02}};

class ProbeTransform : public CTransformFilter {
  public:
    explicit ProbeTransform(LPUNKNOWN outer = nullptr)
        : CTransformFilter(NAME("probe"), outer, kTransformClass) {}

    CallLog log;
    std::vector<MediaType> outputs;  // offered by the output pin
    ALLOCATOR_PROPERTIES wish = {1, 96, 1, 0};
    std::function<HRESULT(IMediaSample*, IMediaSample*)> transform;
    // Called in the middle of StartStreaming, StopStreaming, AlterQuality.
    std::function<void()> onStart, onStop;
    std::vector<Quality> qualities;
    // The types of the last CheckTransform.
    MediaType checkedInput, checkedOutput;

    HRESULT CheckInputType(const CMediaType*) override {
        return log.Enter("CheckInputType").value_or(S_OK);
    }
    HRESULT CheckTransform(const CMediaType* in, const CMediaType* out) override {
        checkedInput = MediaType(*in);
        checkedOutput = MediaType(*out);
        return log.Enter("CheckTransform").value_or(S_OK);
    }
    HRESULT GetMediaType(int position, CMediaType* type) override {
        if (const auto injected = log.Enter("GetMediaType(" + std::to_string(position) + ")"))
            return *injected;
        if (position < 0) return E_INVALIDARG;
        if (position >= static_cast<int>(outputs.size())) return VFW_S_NO_MORE_ITEMS;
        return type->Set(*outputs[position]);
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
        if (const auto injected = log.Enter("DecideBufferSize")) return *injected;
        request->cBuffers = wish.cBuffers;
        request->cbBuffer = wish.cbBuffer;
        ALLOCATOR_PROPERTIES granted = {};
        return allocator->SetProperties(request, &granted);
    }
    HRESULT Transform(IMediaSample* in, IMediaSample* out) override {
        if (const auto injected = log.Enter("Transform")) return *injected;
        if (transform) return transform(in, out);
        return CopyBytes(in, out);
    }
    HRESULT StartStreaming() override {
        if (onStart) onStart();
        return log.Enter("StartStreaming").value_or(S_OK);
    }
    HRESULT StopStreaming() override {
        if (onStop) onStop();
        return log.Enter("StopStreaming").value_or(S_OK);
    }
    HRESULT AlterQuality(Quality quality) override {
        qualities.push_back(quality);
        if (const auto injected = log.Enter("AlterQuality")) return *injected;
        return CTransformFilter::AlterQuality(quality);
    }
    HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* type) override {
        const bool in = direction == PINDIR_INPUT;
        if (const auto injected = log.Enter(in ? "SetMediaType(IN)" : "SetMediaType(OUT)"))
            return *injected;
        return CTransformFilter::SetMediaType(direction, type);
    }
    HRESULT CheckConnect(PIN_DIRECTION direction, IPin* pin) override {
        const bool in = direction == PINDIR_INPUT;
        if (const auto injected = log.Enter(in ? "CheckConnect(IN)" : "CheckConnect(OUT)"))
            return *injected;
        return CTransformFilter::CheckConnect(direction, pin);
    }
    HRESULT BreakConnect(PIN_DIRECTION direction) override {
        const bool in = direction == PINDIR_INPUT;
        const bool connected = in ? m_pInput->IsConnected() : m_pOutput->IsConnected();
        const std::string name = std::string(in ? "BreakConnect(IN)" : "BreakConnect(OUT)");
        if (const auto injected = log.Enter(name + (connected ? "+" : "-"))) return *injected;
        return CTransformFilter::BreakConnect(direction);
    }
    HRESULT CompleteConnect(PIN_DIRECTION direction, IPin* pin) override {
        const bool in = direction == PINDIR_INPUT;
        if (const auto injected = log.Enter(in ? "CompleteConnect(IN)" : "CompleteConnect(OUT)"))
            return *injected;
        return CTransformFilter::CompleteConnect(direction, pin);
    }
    HRESULT Receive(IMediaSample* sample) override {
        if (const auto injected = log.Enter("Receive")) return *injected;
        return CTransformFilter::Receive(sample);
    }
    HRESULT EndOfStream() override {
        if (const auto injected = log.Enter("EndOfStream")) return *injected;
        return CTransformFilter::EndOfStream();
    }
    HRESULT BeginFlush() override {
        if (const auto injected = log.Enter("BeginFlush")) return *injected;
        return CTransformFilter::BeginFlush();
    }
    HRESULT EndFlush() override {
        if (const auto injected = log.Enter("EndFlush")) return *injected;
        return CTransformFilter::EndFlush();
    }
    HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override {
        if (const auto injected = log.Enter("NewSegment")) return *injected;
        return CTransformFilter::NewSegment(start, stop, rate);
    }

    CTransformInputPin* input() { return static_cast<CTransformInputPin*>(GetPin(0)); }
    CTransformOutputPin* output() { return static_cast<CTransformOutputPin*>(GetPin(1)); }

    using CTransformFilter::m_bEOSDelivered;
    using CTransformFilter::m_bQualityChanged;
    using CTransformFilter::m_bSampleSkipped;
    using CTransformFilter::m_csFilter;
    using CTransformFilter::m_csReceive;
    using CTransformFilter::m_pInput;
    using CTransformFilter::m_pOutput;
    using CTransformFilter::m_State;

    static HRESULT CopyBytes(IMediaSample* in, IMediaSample* out) {
        BYTE* from = nullptr;
        BYTE* to = nullptr;
        in->GetPointer(&from);
        out->GetPointer(&to);
        const LONG length = (std::min)(in->GetActualDataLength(), out->GetSize());
        CopyMemory(to, from, length);
        return out->SetActualDataLength(length);
    }
};

inline ComPtr<ProbeTransform> MakeTransform() { return ComPtr<ProbeTransform>(new ProbeTransform); }

// Source, filter and sink, and whatever of it a test connects; all counts are checked at the end.
class TransformTest : public DshowTest {
  protected:
    TransformTest() { filter_->log.Forward(&log_, ""); }
    ~TransformTest() override {
        if (source_) source_->Stop();
        if (sink_) sink_->Stop();
        filter_->log.ClearInjections();
        // They refer to what the test has left already.
        filter_->onStart = filter_->onStop = nullptr;
        filter_->transform = nullptr;
        filter_->Stop();
        DisconnectAll();
        EXPECT_EQ(RefCount(filter_.Get()), 1u);
        if (source_) {
            EXPECT_EQ(source_->references(), 1);
        }
        if (sink_) {
            EXPECT_EQ(sink_->references(), 1);
        }
    }
    void MakeSource(SourceConfig config = {}) {
        if (config.types.empty()) config.types = {type_};
        source_ = TestSource::Create(config);
    }
    void MakeSink(const SinkConfig& config = {.allocator = SinkAllocator::kOwn}) {
        sink_ = TestSink::Create(config);
        sink_->pin().calls().Forward(&log_, "sink.");
    }
    HRESULT ConnectInput() {
        if (!source_) MakeSource();
        return source_->pin().Connect(filter_->input(), nullptr);
    }
    HRESULT ConnectOutput(const AM_MEDIA_TYPE* type = nullptr) {
        if (!sink_) MakeSink();
        return filter_->output()->Connect(&sink_->pin(), type);
    }
    // Both sides, with the output type equal to the input's.
    void ConnectBoth() {
        filter_->outputs = {type_};
        ASSERT_EQ(ConnectInput(), S_OK);
        ASSERT_EQ(ConnectOutput(), S_OK);
        log_.Clear();
        filter_->log.Clear();
    }
    // All three, downstream first, as a graph does it.
    void PauseAll() {
        ASSERT_EQ(sink_->Pause(), S_OK);
        ASSERT_EQ(filter_->Pause(), S_OK);
        ASSERT_EQ(source_->Pause(), S_OK);
    }
    void StopAll() {
        ASSERT_EQ(sink_->Stop(), S_OK);
        ASSERT_EQ(filter_->Stop(), S_OK);
        ASSERT_EQ(source_->Stop(), S_OK);
    }
    void DisconnectAll() {
        if (filter_->output()->IsConnected()) {
            EXPECT_EQ(filter_->output()->Disconnect(), S_OK);
            EXPECT_EQ(sink_->pin().Disconnect(), S_OK);
        }
        if (filter_->input()->IsConnected()) {
            EXPECT_EQ(filter_->input()->Disconnect(), S_OK);
            EXPECT_EQ(source_->pin().Disconnect(), S_OK);
        }
    }
    TestAllocator* sinkAllocator() { return sink_->pin().ownAllocator(); }

    const MediaType type_ = MakeVideoType({.width = 8, .height = 4});
    const MediaType other_ = MakeVideoType({.width = 16, .height = 4});
    const std::vector<BYTE> bytes_ = std::vector<BYTE>(96, 0x5A);
    CallLog log_;
    ComPtr<TestSource> source_;
    ComPtr<TestSink> sink_;
    ComPtr<ProbeTransform> filter_ = MakeTransform();
};

}  // namespace tavo_test
