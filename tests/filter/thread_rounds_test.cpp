// Rounds of everything at once, by chance from a seed: two filters stream types that change, each
// under a transport that runs, pauses, stops, flushes and seeks, and under somebody who turns all
// settings and asks all questions, while others make filters. No frame is torn, none comes after a
// stop, the statistics add up, and nothing is left over.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <random>
#include <thread>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/known_frames.h"
#include "tests/filter/support/multimedia_time.h"
#include "tests/support/hand_clock.h"
#include "tests/support/patience.h"
#include "tests/support/rounds.h"
#include "tests/support/source_seeking.h"

using namespace tavo_test;

namespace {

constexpr DWORD kBegin = 50'000;  // of the milliseconds that the module reads
constexpr DWORD kSpan = 1024;

// What a thread does, for the watchdog.
using Activity = std::atomic<const char*>;

bool IsOneOf(const BITMAPINFOHEADER* bitmap, const Size* sizes, size_t count) {
    for (size_t i = 0; bitmap && i < count; ++i)
        if (bitmap->biWidth == sizes[i].width && bitmap->biHeight == sizes[i].height) return true;
    return false;
}

// A filter with its source and sink, and the threads that use it.
class Stream {
  public:
    Stream(const KnownFrames& known, unsigned seed, bool isRegulated)
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
        references_ = RefCount(rig_.filter.Get());
        EXPECT_EQ(rig_.Start(), S_OK);
    }

    void Begin() {
        samples_ = std::thread([this] { SendSamples(); });
        settings_ = std::thread([this] { TurnSettings(); });
    }
    void End() {
        isDone_ = true;
        samples_.join();
        settings_.join();
    }

    // After the end: one more frame makes the statistics those of a known time.
    void Close(MultimediaTime& time) {
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

    // One thing that a transport does.
    void Transport(std::mt19937& random) {
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
    void StartAll() {
        if (isStarted_) return;
        transport_ = "Start";
        restarts_ = true;
        callsAtStart_ = rig_.sink->pin().calls().Count("Receive");
        isStopped_ = false;
        EXPECT_EQ(rig_.Start(), S_OK);
        isStarted_ = true;
    }
    void AwaitFrames(int count) {
        if (!isStarted_) return;
        transport_ = "waiting for frames";
        const int wanted = frames_ + count;
        EXPECT_TRUE(WaitUntil([&] { return frames_ >= wanted; }, 0)) << "the stream has ended";
    }

    int frames() const { return frames_; }
    std::string Describe() const {
        return std::string(known_.format().name) + (isRegulated_ ? " regulated" : "") +
               ": transport in " + transport_.load() + ", samples in " + streaming_.load() +
               ", settings in " + setting_.load();
    }

  private:
    void StopAll(unsigned order) {
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

    void Flush(bool seeks) {
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

    // The streaming thread. Until a sample has got through, the next ones carry the type as well.
    void SendSamples() {
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

    HRESULT DeliverOne(size_t from, bool carriesType) {
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

    // Now and then the sink asks for another size.
    void HandOut(TestSample& sample) {
        if (sinkRandom_() % 10 == 0) {
            to_ = sinkRandom_() % std::size(KnownFrames::kTo);
            sample.AttachType(known_.OutputType(to_).Get());
        }
        sample.Reshape(known_.OutputBytes(to_), BufferGuard::kPageAfter, 0xA7);
    }

    HRESULT Take(IMediaSample* sample) {
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

    // The thread of a user interface.
    void TurnSettings() {
        const ComApartment com;
        std::mt19937 random(seed_ + 3);
        while (!isDone_) {
            random() % 2 ? TurnOne(random) : AskOne(random);
            if (random() % 16 == 0) SwitchToThread();
        }
        setting_ = "nothing";
    }
    void TurnOne(std::mt19937& random) {
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
    void AskOne(std::mt19937& random);
    void CheckStatistics(DWORD frames);
    void CheckAccounts();

    const KnownFrames& known_;
    const bool isRegulated_;
    const unsigned seed_;
    HandClock clock_;
    std::atomic<bool> isDone_ = false;
    std::atomic<bool> isStopped_ = false;  // from the end of a stop to the begin of a start
    std::atomic<bool> restarts_ = false;   // the times of samples, at 0
    bool isStarted_ = true;
    std::atomic<int> frames_ = 0;
    int callsAtStart_ = 0;
    int flushes_ = 0;
    int seeks_ = 0;
    int ends_ = 0;
    ULONG references_ = 0;
    // Of the streaming thread.
    size_t currentFrom_ = 0;
    LONGLONG serial_ = 0;
    LONGLONG origin_ = 0;
    REFERENCE_TIME start_ = 0;
    DWORD threadId_ = 0;
    // Of the sink's allocator.
    std::mt19937 sinkRandom_;
    size_t to_ = 0;
    Activity transport_ = "nothing";
    Activity streaming_ = "nothing";
    Activity setting_ = "nothing";
    FilterRig rig_;
    const ComPtr<TestSample> sample_;
    const ComPtr<IMediaSeeking> seeking_;
    const ComPtr<IQualityControl> quality_;
    std::thread samples_;
    std::thread settings_;
};

void Stream::AskOne(std::mt19937& random) {
    setting_ = "a question";
    double value = -1;
    int number = 0;
    switch (random() % 9) {
        case 0:
            rig_.settings->GetModuleTime(&value);
            EXPECT_GE(value, 0.0);
            rig_.settings->GetSystemFps(&value);
            EXPECT_GE(value, 0.0);
            rig_.settings->GetGenerateFps(&value);
            EXPECT_GE(value, 0.0);
            break;
        case 1: {
            const MediaType in = rig_.ConnectionTypeOf(rig_.input.Get());
            const MediaType out = rig_.ConnectionTypeOf(rig_.output.Get());
            EXPECT_TRUE(IsOneOf(in.Bitmap(), KnownFrames::kFrom, std::size(KnownFrames::kFrom)));
            EXPECT_TRUE(IsOneOf(out.Bitmap(), KnownFrames::kTo, std::size(KnownFrames::kTo)));
            break;
        }
        case 2: EXPECT_LE(rig_.OfferedTypes().size(), 1u); break;
        case 3: EXPECT_EQ(rig_.input->QueryAccept(known_.SourceType(1).Get()), S_OK); break;
        case 4: EXPECT_EQ(rig_.output->QueryAccept(known_.OutputType(1).Get()), S_OK); break;
        case 5: {
            CAUUID pages = {};
            const auto specify = rig_.filter.As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
            EXPECT_EQ(specify->GetPages(&pages), S_OK);
            CoTaskMemFree(pages.pElems);
            rig_.settings->GetScaleMethod(&number);
            rig_.settings->GetFrameRate(&value);
            EXPECT_TRUE(value == 0.0 || value == 25.0 || value == 30.0 || value == 100.0) << value;
            break;
        }
        case 6: EXPECT_EQ(quality_->Notify(rig_.sink.Get(), {Famine, 500, 0, 0}), S_OK); break;
        case 7: {
            LONGLONG duration = 0;
            EXPECT_EQ(seeking_->GetDuration(&duration), S_OK);
            EXPECT_EQ(duration, kSourceDuration);
            break;
        }
        case 8: {
            FILTER_STATE state = State_Stopped;
            EXPECT_EQ(rig_.filter->GetState(0, &state), S_OK);
            FILTER_INFO info = {};
            EXPECT_EQ(rig_.filter->QueryFilterInfo(&info), S_OK);
            EXPECT_EQ(info.pGraph, nullptr);
            break;
        }
    }
}

void Stream::CheckStatistics(DWORD frames) {
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

void Stream::CheckAccounts() {
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

class ThreadRoundsTest : public FilterTest {
  protected:
    ThreadRoundsTest() { checksTaskMemory_ = false; }

    const KnownFrames& Known(size_t format) {
        std::unique_ptr<KnownFrames>& known = known_[format % std::size(known_)];
        if (!known) known = std::make_unique<KnownFrames>(AllFormats()[format % 11]);
        return *known;
    }

    // How many filters somebody made meanwhile.
    static int MakeFilters(const std::atomic<bool>& done) {
        const ComApartment com;
        int made = 0;
        do {
            const ComPtr<IBaseFilter> filter = CreateFilter();
            ComPtr<IEnumPins> pins;
            EXPECT_EQ(filter->EnumPins(pins.Put()), S_OK);
            EXPECT_EQ(pins->Skip(2), S_OK);
            ++made;
        } while (!done);
        return made;
    }

    std::unique_ptr<KnownFrames> known_[11];
};

TEST_F(ThreadRoundsTest, TwoStreamsUnderTransportAndSettingsWhileOthersMakeFilters) {
    MultimediaTime time;
    std::atomic<int> made = 0;
    int frames = 0;
    int round = 0;
    for (; round < Rounds(50) && !HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        std::mt19937 random(static_cast<unsigned>(round));
        const KnownFrames& first = Known(random());
        const KnownFrames& second = Known(random());
        time.Next({kBegin});
        Stream streams[] = {{first, random(), round % 2 == 0}, {second, random(), round % 4 < 2}};
        const Watchdog dog("round " + std::to_string(round), 240,
                           [&] { return streams[0].Describe() + "\n" + streams[1].Describe(); });
        std::atomic<bool> done = false;
        std::thread makers[2];
        for (std::thread& maker : makers) maker = std::thread([&] { made += MakeFilters(done); });
        for (Stream& stream : streams) stream.Begin();
        for (int i = 0; i < 30 && !HasFailure(); ++i) streams[random() % 2].Transport(random);
        for (Stream& stream : streams) {
            if (random() % 4) stream.StartAll();
            stream.AwaitFrames(5);
        }
        done = true;
        for (std::thread& maker : makers) maker.join();
        for (Stream& stream : streams) stream.End();
        for (Stream& stream : streams) {
            stream.Close(time);
            frames += stream.frames();
        }
    }
    std::printf("  %d rounds, %d frames, %d filters made\n", round, frames, made.load());
}

}  // namespace
