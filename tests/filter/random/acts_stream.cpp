// Start, stop and flush; samples with every kind of times and types; events and seeking.
#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/filter/random/sequence.h"
#include "tests/filter/support/mutated_types.h"

namespace tavo_test {

namespace {

void GoTo(Sequence& s, FILTER_STATE state, const char* name, HRESULT (*go)(IBaseFilter*)) {
    const bool together = !s.dice.OneIn(4);
    if (together && state != State_Stopped) {
        s.sink->Pause();
        s.source->Pause();
    }
    // Of a frame of one byte an allocator that grants less leaves nothing to commit.
    const bool grantsLess = s.sink->pin().config.ownAllocator.sizeChange < 0;
    s.Call(name, {S_OK, grantsLess ? VFW_E_SIZENOTSET : S_OK}, [&] {
        const HRESULT result = go(s.filter.Get());
        if (SUCCEEDED(result)) s.expected.state = state;
        return result;
    });
    if (together && state == State_Stopped) {
        s.sink->Stop();
        s.source->Stop();
    }
}

void Run(Sequence& s) {
    GoTo(s, State_Running, "Run", [](IBaseFilter* filter) { return filter->Run(0); });
}
void Pause(Sequence& s) {
    GoTo(s, State_Paused, "Pause", [](IBaseFilter* filter) { return filter->Pause(); });
}
void Stop(Sequence& s) {
    GoTo(s, State_Stopped, "Stop", [](IBaseFilter* filter) { return filter->Stop(); });
}

void GiveTimes(Sequence& s, SampleSpec& spec) {
    const REFERENCE_TIME longest = s.LongestWindow();
    // Without times, the clock tells where the sample lies: too far for a high rate.
    if (s.expected.frameRate <= 100.0 && s.dice.OneIn(4)) return;
    spec.start = static_cast<REFERENCE_TIME>(s.dice.random() % 1000) * longest / 2000;
    if (s.dice.OneIn(8)) {
        spec.start = s.dice.Of<REFERENCE_TIME>({-1, -longest, std::numeric_limits<int64_t>::min()});
    }
    const bool endIsTold = s.expected.frameRate > 100.0 || !s.dice.OneIn(8);
    if (endIsTold) {
        spec.stop = std::max<REFERENCE_TIME>(*spec.start, 0) +
                    static_cast<REFERENCE_TIME>(s.dice.random() % 1000) * longest / 2000;
    }
    if (s.dice.OneIn(16)) spec.stop = spec.start;
    if (s.dice.OneIn(4)) {
        spec.mediaStart = s.dice.Below(1000);
        spec.mediaEnd = *spec.mediaStart + 1;
    }
}

// A buffer as large as the frame, or not quite.
long BufferBytes(Sequence& s, const MediaType& type) {
    const BITMAPINFOHEADER* const bitmap = type.Bitmap();
    if (!bitmap || !IsSmall(type)) return 4;
    const long bytes = static_cast<long>(
        std::max<LONGLONG>(1, std::abs(LONGLONG{bitmap->biWidth} * bitmap->biHeight) *
                                      std::max<int>(bitmap->biBitCount, 12) / 8 +
                                  4LL * std::abs(bitmap->biHeight)));
    return s.dice.OneIn(8) ? std::max(1L, bytes / s.dice.Of({2L, 3L, 100L})) : bytes;
}

void Deliver(Sequence& s) {
    SampleSpec spec;
    GiveTimes(s, spec);
    spec.syncPoint = s.dice.OneIn(2);
    spec.preroll = s.dice.OneIn(8);
    spec.discontinuity = s.dice.OneIn(8);
    if (s.dice.OneIn(16)) spec.streamId = AM_STREAM_CONTROL;
    if (s.dice.OneIn(4)) spec.actualLength = s.dice.Below(8);
    if (s.dice.OneIn(5)) spec.type = s.AnyType();
    MediaType type = spec.type.value_or(MediaType());
    if (!spec.type) s.input->ConnectionMediaType(type.Put());
    if (s.dice.OneIn(2) || spec.type) {
        spec.freestanding =
            SampleConfig{.size = BufferBytes(s, type),
                         .sample2 = !s.dice.OneIn(4),
                         .guard = s.dice.OneIn(3) ? BufferGuard::kPageAfter : BufferGuard::kCanary};
    }
    if (s.dice.OneIn(6) && s.sink->pin().config.allocator == SinkAllocator::kOwn) {
        s.sink->pin().ownAllocator()->AttachTypeOnce(*s.AnyType().Get());
    }
    // The source's buffers are its own business.
    HRESULT made = S_OK;
    const ComPtr<IMediaSample> sample = s.source->pin().MakeSample(spec, &made);
    const auto memory = s.input.As<IMemInputPin>();
    if (!sample) return;

    s.sink->pin().ClearSamples();
    const bool isRegulated = s.expected.frameRate > 0.0;
    const HRESULT result = s.Call(
        "Receive",
        {S_OK, S_FALSE, E_FAIL, E_INVALIDARG, E_OUTOFMEMORY, E_UNEXPECTED, VFW_E_WRONG_STATE,
         VFW_E_NOT_CONNECTED, VFW_E_RUNTIME_ERROR, VFW_E_INVALIDMEDIATYPE, VFW_E_NOT_COMMITTED,
         VFW_E_NO_ALLOCATOR},
        [&] { return memory->Receive(sample.Get()); }, kMaySettleSize | kMayChangeConnections);
    const size_t received = s.sink->pin().samples().size();
    if (s.PeersFail() || isRegulated) return;
    s.Check(received == (result == S_OK ? 1u : 0u),
            "one frame for each sample that is taken, not " + std::to_string(received));
}

// A whole stream in one act, to get beyond the first frame.
void Stream(Sequence& s) {
    if (!s.source->pin().connected() || !s.sink->pin().connected()) return;
    if (s.expected.state == State_Stopped) Run(s);
    for (int i = s.dice.Below(8); i >= 0; --i) Deliver(s);
}

void Flush(Sequence& s) {
    const std::initializer_list<HRESULT> allowed = {S_OK, VFW_E_NOT_CONNECTED};
    const bool isBalanced = !s.dice.OneIn(6);
    if (isBalanced || s.dice.OneIn(2)) {
        s.Call("BeginFlush", allowed, [&] { return s.input->BeginFlush(); });
    }
    if (isBalanced || s.dice.OneIn(2)) {
        s.Call("EndFlush", allowed, [&] { return s.input->EndFlush(); });
    }
}

void Events(Sequence& s) {
    s.Call("EndOfStream",
           {S_OK, S_FALSE, VFW_E_NOT_CONNECTED, VFW_E_WRONG_STATE, VFW_E_RUNTIME_ERROR},
           [&] { return s.input->EndOfStream(); });
    const double rate = s.dice.Of({1.0, 0.5, -1.0, 0.0, std::nan("")});
    const REFERENCE_TIME start =
        s.dice.Of<REFERENCE_TIME>({0, 10'000'000, -1, std::numeric_limits<int64_t>::max()});
    s.Call("NewSegment", {S_OK, VFW_E_NOT_CONNECTED},
           [&] { return s.input->NewSegment(start, start / 2, rate); });
    s.Call("events of the output", {E_UNEXPECTED}, [&] {
        const HRESULT results[] = {s.output->EndOfStream(), s.output->BeginFlush(),
                                   s.output->EndFlush()};
        return results[s.dice.Below(3)];
    });
}

void Notices(Sequence& s) {
    const Quality quality = {s.dice.OneIn(2) ? Famine : Flood,
                             static_cast<long>(s.dice.Below(1000)), 0, 0};
    const auto control = s.output.As<IQualityControl>();
    s.Call("Notify", {S_OK, S_FALSE, VFW_E_NOT_FOUND, E_NOTIMPL},
           [&] { return control->Notify(s.sink.Get(), quality); });
    const auto atInput = s.input.As<IQualityControl>();
    s.Call("Notify of the input", {S_OK}, [&] { return atInput->Notify(s.sink.Get(), quality); });
}

// The platform's object answers, with codes of its own; the filter stays as it is.
void Seek(Sequence& s) {
    ComPtr<IMediaSeeking> seeking;
    s.Call("seeking", {S_OK},
           [&] { return s.output->QueryInterface(IID_IMediaSeeking, seeking.PutVoid()); });
    if (!seeking) return;
    LONGLONG position = s.dice.Of<LONGLONG>({0, 1, 123456789, -5});
    DWORD capabilities = AM_SEEKING_CanSeekAbsolute;
    GUID format = {};
    double rate = 0;
    switch (s.dice.Below(6)) {
        case 0: seeking->GetDuration(&position); break;
        case 1:
            seeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr,
                                  AM_SEEKING_NoPositioning);
            break;
        case 2: seeking->GetCurrentPosition(&position); break;
        case 3: seeking->CheckCapabilities(&capabilities); break;
        case 4: seeking->GetTimeFormat(&format); break;
        default: seeking->GetRate(&rate); break;
    }
}

void PeersFailNext(Sequence& s) {
    const HRESULT failure = s.dice.Of<HRESULT>(
        {E_FAIL, E_OUTOFMEMORY, E_UNEXPECTED, E_NOTIMPL, VFW_E_WRONG_STATE, S_FALSE});
    const char* const ofSink =
        s.dice.Of({"ReceiveConnection", "QueryAccept", "EnumMediaTypes", "GetAllocator",
                   "NotifyAllocator", "GetAllocatorRequirements", "Receive", "BeginFlush",
                   "EndFlush", "EndOfStream", "NewSegment", "ReceiveCanBlock"});
    s.sink->pin().calls().Inject(ofSink, failure, s.dice.Below(2) + 1);
    if (s.sink->pin().config.allocator == SinkAllocator::kOwn && s.dice.OneIn(2)) {
        const char* const ofAllocator = s.dice.Of({"SetProperties", "Commit", "GetBuffer"});
        s.sink->pin().ownAllocator()->calls().Inject(ofAllocator, failure, 1);
    }
    s.peersFail_ = true;
}

void MoveClock(Sequence& s) {
    s.clock.answer = s.dice.OneIn(6) ? E_FAIL : S_OK;
    if (s.clock.now < 100'000'000) s.clock.now += s.dice.Below(10'000'000);
}

constexpr Act kActs[] = {{"run", 5, Run},
                         {"pause", 4, Pause},
                         {"stop", 4, Stop},
                         {"deliver", 12, Deliver},
                         {"stream", 16, Stream},
                         {"flush", 4, Flush},
                         {"events", 3, Events},
                         {"notices", 1, Notices},
                         {"seek", 2, Seek},
                         {"peers fail", 2, PeersFailNext},
                         {"move the clock", 3, MoveClock}};

}  // namespace

std::span<const Act> StreamActs() { return kActs; }

}  // namespace tavo_test
