// What the threads do, and what must be true of it.
#include "tests/filter/support/busy_stream.h"

#include <algorithm>
#include <cstring>

#include "tests/support/patience.h"

namespace tavo_test {
namespace {

constexpr DWORD kSpan = 1024;  // milliseconds of the stream, as the module sees it

}  // namespace

BusyStream::BusyStream(const KnownFrames& known, unsigned seed, bool isRegulated)
    : known_(known),
      isRegulated_(isRegulated),
      seed_(seed),
      sinkRandom_(seed + 1),
      rig_({.allocator = SinkAllocator::kOwn,
            .ownAllocator = {.guard = BufferGuard::kPageAfter,
                             .onHandOut = [this](TestSample& sample) { HandOut(sample); }},
            .keepBytes = false,
            .onReceive = [this](IMediaSample* sample) { return Take(sample); }},
           {.choice = AllocatorChoice::kOwnOnly,
            .allocator = {.guard = BufferGuard::kPageAfter},
            .seeking = true}),
      sample_(TestSample::Create({.size = 1})),
      seeking_(rig_.output.As<IMediaSeeking>()),
      quality_(rig_.output.As<IQualityControl>()) {
    rig_.settings->SetOutputSize(KnownFrames::kTo[0].width, KnownFrames::kTo[0].height);
    rig_.settings->SetFrameRate(isRegulated ? 25.0 : 0.0);
    EXPECT_EQ(rig_.filter->SetSyncSource(&clock_), S_OK);
    EXPECT_EQ(rig_.Connect(known_.SourceType(0)), S_OK);
    // From now on sizes change by types on samples and buffers, never by ApplySettings.
    rig_.sink->pin().config.queryAccept = S_FALSE;
    references_ = RefCount(rig_.filter.Get());
    EXPECT_EQ(rig_.Start(), S_OK);
}

void BusyStream::Begin() {
    samples_ = std::thread([this] { SendSamples(); });
    settings_ = std::thread([this] { TurnSettings(); });
}

void BusyStream::End() {
    isDone_ = true;
    samples_.join();
    settings_.join();
}

void BusyStream::Close(MultimediaTime& time) {
    transport_ = "Close";
    rig_.settings->SetFrameRate(isRegulated_ ? 25.0 : 0.0);
    Flush(false);
    if (isStarted_) {
        const int calls = rig_.sink->pin().calls().Count("Receive") - callsAtStart_;
        const auto frames = static_cast<DWORD>(calls) + 1;
        time.Next({kBegin + kSpan - frames, kBegin + kSpan});
        EXPECT_EQ(DeliverOne(0, true), S_OK) << Describe();
        CheckStatistics(frames);
    }
    EXPECT_EQ(rig_.Stop(), S_OK);
    CheckAccounts();
}

void BusyStream::Transport(std::mt19937& random) {
    switch (random() % 8) {
        case 0: AwaitFrames(random() % 6); break;
        case 1:
            transport_ = "Pause";
            EXPECT_EQ(isStarted_ ? rig_.filter->Pause() : S_OK, S_OK);
            break;
        case 2:
            transport_ = "Run";
            EXPECT_EQ(isStarted_ ? rig_.filter->Run(random()) : S_OK, S_OK);
            break;
        case 3: StopAll(random()); break;
        case 4:
        case 5: StartAll(); break;
        case 6: Flush(random() % 2); break;
        case 7:
            transport_ = "SetSyncSource";
            EXPECT_EQ(rig_.filter->SetSyncSource(random() % 4 ? &clock_ : nullptr), S_OK);
            break;
    }
    transport_ = "nothing";
}

void BusyStream::StartAll() {
    if (isStarted_) return;
    transport_ = "Start";
    restarts_ = true;
    callsAtStart_ = rig_.sink->pin().calls().Count("Receive");
    isStopped_ = false;
    EXPECT_EQ(rig_.Start(), S_OK);
    isStarted_ = true;
}

void BusyStream::AwaitFrames(int count) {
    if (!isStarted_) return;
    transport_ = "waiting for frames";
    const int wanted = frames_ + count;
    EXPECT_TRUE(WaitUntil([&] { return frames_ >= wanted; }, 0)) << "the stream has ended";
}

std::string BusyStream::Describe() const {
    return std::string(known_.format().name) + (isRegulated_ ? " regulated" : "") +
           ": transport in " + transport_.load() + ", samples in " + streaming_.load() +
           ", settings in " + setting_.load();
}

void BusyStream::StopAll(unsigned order) {
    if (!isStarted_) return;
    transport_ = "Stop";
    isStarted_ = false;
    if (order % 3 == 0) rig_.sink->Stop();
    if (order % 3 == 1) rig_.source->Stop();
    EXPECT_EQ(rig_.filter->Stop(), S_OK);
    isStopped_ = true;
    rig_.sink->Stop();
    rig_.source->Stop();
}

void BusyStream::Flush(bool seeks) {
    transport_ = seeks ? "SetPositions" : "BeginFlush";
    LONGLONG position = 1000;
    if (seeks) {
        EXPECT_EQ(seeking_->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr,
                                         AM_SEEKING_NoPositioning),
                  S_OK);
    }
    EXPECT_EQ(rig_.source->pin().SendBeginFlush(), S_OK);
    restarts_ = true;
    transport_ = "EndFlush";
    EXPECT_EQ(rig_.source->pin().SendEndFlush(), S_OK);
    transport_ = "NewSegment";
    if (seeks) {
        EXPECT_EQ(rig_.source->pin().SendNewSegment(position, 1 << 30, 1.0), S_OK);
    }
    ++flushes_;
    seeks_ += seeks;
}

void BusyStream::SendSamples() {
    const ComApartment com;
    std::mt19937 random(seed_ + 2);
    size_t from = 0;
    bool carriesType = false;
    while (!isDone_) {
        if (random() % 8 == 0) {
            from = random() % std::size(KnownFrames::kFrom);
            carriesType = true;
        }
        streaming_ = "Receive";
        const HRESULT result = DeliverOne(from, carriesType || random() % 16 == 0);
        carriesType = result != S_OK;
        if (result != S_OK) SwitchToThread();
        if (random() % 32 == 0) {
            streaming_ = "EndOfStream";
            ends_ += rig_.source->pin().SendEndOfStream() == S_OK;
        }
        streaming_ = "nothing";
    }
}

HRESULT BusyStream::DeliverOne(size_t from, bool carriesType) {
    currentFrom_ = from;
    threadId_ = GetCurrentThreadId();
    if (restarts_.exchange(false)) origin_ = serial_ + 1;
    ++serial_;
    const REFERENCE_TIME length = 400'000;
    start_ = (serial_ - origin_) * length;
    HRESULT result = S_OK;
    // Buffers of the allocator have the size of the type that is connected.
    if (from == 0 && serial_ % 2) {
        SampleSpec spec = {.start = start_, .stop = start_ + length, .bytes = known_.Source(0)};
        if (carriesType) spec.type = known_.SourceType(0);
        result = rig_.Deliver(spec);
    } else {
        const std::vector<BYTE>& bytes = known_.Source(from);
        sample_->Reshape(static_cast<long>(bytes.size()), BufferGuard::kPageAfter, 0);
        std::copy(bytes.begin(), bytes.end(), sample_->data());
        sample_->SetTimes(start_, start_ + length);
        sample_->SetSyncPoint(TRUE);
        const MediaType type = known_.SourceType(from);
        sample_->AttachType(carriesType ? type.Get() : nullptr);
        result = rig_.source->pin().Deliver(sample_.Get());
        EXPECT_EQ(sample_->references(), 1);
        EXPECT_EQ(std::memcmp(sample_->data(), bytes.data(), bytes.size()), 0);
    }
    const bool known = result == S_OK || result == S_FALSE || result == VFW_E_WRONG_STATE ||
                       result == VFW_E_NOT_COMMITTED;
    EXPECT_TRUE(known) << std::hex << result << ", " << Describe();
    return result;
}

void BusyStream::HandOut(TestSample& sample) {
    if (sinkRandom_() % 10 == 0) {
        to_ = sinkRandom_() % std::size(KnownFrames::kTo);
        sample.AttachType(known_.OutputType(to_).Get());
    }
    sample.Reshape(known_.OutputBytes(to_), BufferGuard::kPageAfter, 0xA7);
}

HRESULT BusyStream::Take(IMediaSample* sample) {
    streaming_ = "the sink";
    EXPECT_FALSE(isStopped_) << "a frame after the stop, " << Describe();
    EXPECT_EQ(GetCurrentThreadId(), threadId_);
    BYTE* data = nullptr;
    sample->GetPointer(&data);
    const long size = sample->GetActualDataLength();
    const int to = known_.OutputOfBytes(size);
    EXPECT_EQ(sample->GetSize(), size);
    const int shown =
        to < 0 ? -1 : known_.ShownSource(static_cast<size_t>(to), {data, data + size});
    EXPECT_GE(shown, 0) << "a torn frame of " << size << " bytes, " << Describe();
    if (!isRegulated_) {
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        EXPECT_EQ(sample->GetTime(&start, &stop), S_OK);
        EXPECT_EQ(start, start_);
        EXPECT_EQ(shown, static_cast<int>(currentFrom_)) << Describe();
    }
    // Room for others while the frame is in progress.
    if (++frames_ % 8 == 0) Sleep(frames_ % 16 == 0);
    if (frames_ % 64 == 0) rig_.sink->pin().ClearSamples();
    streaming_ = "Receive";
    // A sink that was made to wait finds out late.
    if (rig_.sink->state() == State_Stopped) return VFW_E_WRONG_STATE;
    return rig_.sink->pin().flushing() ? S_FALSE : S_OK;
}

void BusyStream::TurnSettings() {
    const ComApartment com;
    std::mt19937 random(seed_ + 3);
    while (!isDone_) {
        random() % 2 ? TurnOne(random) : AskOne(random);
        if (random() % 16 == 0) SwitchToThread();
    }
    setting_ = "nothing";
}

void BusyStream::TurnOne(std::mt19937& random) {
    constexpr int kMethods[] = {0, 1, 2, 5, 6, 7, 10, 11, 12, 3, 99, -1};
    constexpr double kRates[] = {0.0, 25.0, 30.0, 100.0, 0.001, -1.0};
    const int formats[] = {0, std::max(known_.format().setting, 0), 99};
    constexpr int kTypes[] = {0, 1, 99};
    IVantrelSettings& settings = *rig_.settings.Get();
    setting_ = "a setter";
    switch (random() % 6) {
        case 0: settings.SetScaleMethod(kMethods[random() % std::size(kMethods)]); break;
        case 1:
            settings.SetOutputSize(static_cast<int>(random() % 100) - 10,
                                   static_cast<int>(random() % 100) - 10);
            break;
        case 2: settings.SetOutputFormat(formats[random() % 3]); break;
        case 3: settings.SetVideoType(kTypes[random() % 3]); break;
        case 4:
            settings.SetFrameRate(isRegulated_ ? kRates[random() % std::size(kRates)] : 0.0);
            break;
        case 5: {
            setting_ = "ApplySettings";
            const int applied = settings.ApplySettings();
            EXPECT_TRUE(applied == 0 || applied == E_INVALIDARG) << applied;
            break;
        }
    }
}

void BusyStream::CheckStatistics(DWORD frames) {
    double perSecond = -1;
    double milliseconds = -1;
    rig_.settings->GetGenerateFps(&perSecond);
    EXPECT_EQ(perSecond, isRegulated_ ? 1000.0 / kSpan : 0.0) << "one slot since the flush";
    if (isRegulated_) return;
    rig_.settings->GetSystemFps(&perSecond);
    rig_.settings->GetModuleTime(&milliseconds);
    EXPECT_EQ(perSecond, frames * 1000.0 / kSpan) << "frames of the sink in so many ms";
    EXPECT_EQ(milliseconds, 1.0) << "as many ms as frames";
}

void BusyStream::CheckAccounts() {
    EXPECT_EQ(rig_.filter->SetSyncSource(nullptr), S_OK);
    EXPECT_EQ(clock_.references, 1);
    EXPECT_EQ(RefCount(rig_.filter.Get()), references_);
    for (TestAllocator* const pool :
         {rig_.source->pin().testAllocator(), rig_.sink->pin().ownAllocator()}) {
        EXPECT_EQ(pool->samplesOut(), 0);
        EXPECT_EQ(pool->damagedSamples(), 0);
        EXPECT_FALSE(pool->committed());
    }
    const CallLog& sink = rig_.sink->pin().calls();
    EXPECT_EQ(sink.Count("BeginFlush"), flushes_);
    EXPECT_EQ(sink.Count("EndFlush"), flushes_);
    EXPECT_EQ(sink.Count("EndOfStream"), ends_);
    EXPECT_EQ(rig_.sink->pin().segments().size(), static_cast<size_t>(seeks_));
    EXPECT_EQ(rig_.source->pin().calls().Count("SetPositions"), seeks_);
}

}  // namespace tavo_test
