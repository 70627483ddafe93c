// Calls from other threads while a frame is in progress: none may wait for it without need, none
// may deadlock.
#include <thread>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/module_imports.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"
#include "tests/support/graph.h"
#include "tests/support/hand_clock.h"
#include "tests/support/patience.h"

using namespace tavo_test;

namespace {

class ThreadsTest : public FilterTest {
  protected:
    ThreadsTest() { checksTaskMemory_ = false; }

    const PixelFormat& format_ = Format("YV12");
    const std::vector<BYTE> frame_ = RandomFrame(format_, 64, 48);
};

// A frame that a streaming thread has brought as far as the sink, where it is held.
class HeldFrame {
  public:
    HeldFrame(FilterRig& rig, const SampleSpec& spec) : rig_(rig) {
        rig_.sink->pin().HoldReceive();
        thread_ = std::thread([this, spec] { result_ = rig_.Deliver(spec); });
        EXPECT_TRUE(rig_.sink->pin().WaitUntilHeld());
    }
    ~HeldFrame() { LetGo(); }
    HRESULT LetGo() {
        rig_.sink->pin().ReleaseReceive();
        return Join();
    }
    HRESULT Join() {
        if (thread_.joinable()) thread_.join();
        return result_;
    }

  private:
    FilterRig& rig_;
    std::thread thread_;
    HRESULT result_ = E_PENDING;
};

TEST_F(ThreadsTest, StopWhileAFrameIsHeldInTheSink) {
    for (const double fps : {0.0, 25.0}) {
        FilterRig rig({}, {.choice = AllocatorChoice::kOwnOnly});
        rig.settings->SetFrameRate(fps);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        HeldFrame held(rig, {.start = 0, .stop = 4000000, .bytes = frame_});
        std::thread stopper([&] { EXPECT_EQ(rig.filter->Stop(), S_OK); });
        // The stop has begun and waits for the frame, with its lock held.
        const CallLog& allocator = rig.source->pin().testAllocator()->calls();
        EXPECT_TRUE(WaitUntil([&] { return allocator.Count("Decommit") > 0; }));
        EXPECT_EQ(held.LetGo(), S_OK);
        stopper.join();
        EXPECT_EQ(rig.samples().size(), 1u) << "no slot is filled once the stop has begun";
    }
}

TEST_F(ThreadsTest, StopFromTheSinkUpwardsAsAGraphDoes) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    HeldFrame held(rig, {.bytes = frame_});
    EXPECT_EQ(rig.Stop(), S_OK);
    held.Join();
    EXPECT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
}

// The filter's own lock is free while a frame is in the sink.
TEST_F(ThreadsTest, QuestionsAreAnsweredWhileAFrameIsHeld) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    HeldFrame held(rig, {.bytes = frame_});
    const Watchdog dog("questions while a frame is held", 120);
    EXPECT_EQ(rig.ConnectionTypeOf(rig.input.Get()), TypeOf(format_, 64, 48));
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 64);
    EXPECT_EQ(rig.OfferedTypes().size(), 1u);
    EXPECT_EQ(rig.input->QueryAccept(TypeOf(format_, 32, 24).Get()), S_OK);
    EXPECT_EQ(rig.output->QueryAccept(TypeOf(format_, 32, 24).Get()), S_OK);
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 1) << "the next frame changes";
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 64);
    double value = 0;
    rig.settings->GetModuleTime(&value);
    rig.settings->GetSystemFps(&value);
    rig.settings->SetFrameRate(25.0);
    EXPECT_EQ(rig.filter->Pause(), S_OK);
    EXPECT_EQ(rig.filter->Run(0), S_OK);
    FILTER_STATE state = State_Stopped;
    EXPECT_EQ(rig.filter->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Running);
    EXPECT_EQ(rig.input->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(rig.output->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(held.LetGo(), S_OK);
}

TEST_F(ThreadsTest, FlushWhileAFrameIsHeld) {
    for (const double fps : {0.0, 25.0}) {
        FilterRig rig;
        rig.settings->SetFrameRate(fps);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        HeldFrame held(rig, {.start = 0, .stop = 4000000, .bytes = frame_});
        EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        EXPECT_EQ(held.Join(), S_FALSE);
        EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        EXPECT_TRUE(rig.samples().empty());
        ASSERT_EQ(rig.Deliver({.start = 0, .stop = 400000, .bytes = frame_}), S_OK);
        ASSERT_EQ(rig.samples().size(), 1u);
        EXPECT_EQ(rig.samples()[0].start, 0);
    }
}

// With a type on the sample, the streaming thread changes what ConnectionMediaType reads while a
// stop, which holds the filter lock, waits for that very thread.
TEST_F(ThreadsTest, StopWhileATypeChangeIsInProgress) {
    for (int round = 0; round < 30; ++round) {
        FilterRig rig;
        rig.settings->SetOutputSize(40, 36);
        rig.settings->SetScaleMethod(VantrelMethodNearest);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        std::atomic<bool> done = false;
        std::thread streamer([&] {
            for (int i = 0; !done; ++i) {
                const Size size = i % 2 ? Size{64, 48} : Size{80, 60};
                const SampleSpec spec = {
                    .bytes = RandomFrame(format_, size.width, size.height),
                    .type = TypeOf(format_, size.width, size.height),
                    .freestanding = SampleConfig{.size = size.width * size.height * 3 / 2}};
                const HRESULT result = rig.Deliver(spec);
                if (result != S_OK) break;
            }
        });
        Sleep(static_cast<DWORD>(round % 5));
        EXPECT_EQ(rig.filter->Stop(), S_OK);
        done = true;
        streamer.join();
    }
}

// A sink that takes its time, so that not too many frames come while a test waits for a processor.
HRESULT TakeSlowly(IMediaSample*) {
    Sleep(1);
    return S_OK;
}

// More slots than can be walked over in a day.
TEST_F(ThreadsTest, AnAgeOfSlotsEndsWithAStopOrAFlush) {
    constexpr REFERENCE_TIME kAge = 7'000'000'000'000'000'000;
    for (const bool flush : {false, true}) {
        FilterRig rig({.keepBytes = false, .onReceive = TakeSlowly});
        rig.settings->SetFrameRate(1000.0);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        std::thread streamer(
            [&] { rig.Deliver({.start = kAge, .stop = kAge + 400000, .bytes = frame_}); });
        EXPECT_TRUE(rig.sink->pin().WaitForSamples(10));
        if (flush) {
            EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        } else {
            EXPECT_EQ(rig.filter->Stop(), S_OK);
        }
        const size_t sent = rig.samples().size();
        streamer.join();
        EXPECT_LE(rig.samples().size(), sent + 1) << "only the one that was under way";
        if (flush) {
            EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        }
    }
}

std::atomic<int> waits = 0;

DWORD WINAPI CountedWait(HANDLE handle, DWORD milliseconds) {
    ++waits;
    return WaitForSingleObject(handle, milliseconds);
}

// A wait that times out gives the processor away: no slot may cost one.
TEST_F(ThreadsTest, SlotsDoNotWaitToFindOutWhetherTheStreamStops) {
    HandClock clock;
    FilterRig rig({.keepBytes = false});
    ASSERT_EQ(rig.filter->SetSyncSource(&clock), S_OK);
    rig.settings->SetFrameRate(1000.0);
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    {
        const ImportPatch patch(TheModule().handle(), "kernel32.dll", "WaitForSingleObject",
                                reinterpret_cast<ULONG_PTR>(CountedWait));
        waits = 0;
        EXPECT_EQ(rig.Deliver({.start = 0, .stop = 1'000'001, .bytes = frame_}), S_OK);
        EXPECT_EQ(waits, 0);
    }
    EXPECT_EQ(rig.samples().size(), 100u);
    EXPECT_EQ(rig.filter->SetSyncSource(nullptr), S_OK);
}

TEST_F(ThreadsTest, RatesChangedToOffEndTheSlotsToo) {
    FilterRig rig({.keepBytes = false, .onReceive = TakeSlowly});
    rig.settings->SetFrameRate(1e7);
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    std::thread streamer([&] { rig.Deliver({.start = 0, .stop = 36000000000, .bytes = frame_}); });
    EXPECT_TRUE(rig.sink->pin().WaitForSamples(10));
    rig.settings->SetFrameRate(0.0);
    streamer.join();
    EXPECT_EQ(rig.Deliver(frame_), S_OK);
}

// What a page does while frames flow: everything, at once, from its own thread.
TEST_F(ThreadsTest, AUserInterfaceThreadChangesEverythingWhileFramesFlow) {
    constexpr int kFrames = 10'000;
    constexpr int kChanges = 5'000;
    FilterRig rig({.keepBytes = false});
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    std::atomic<bool> done = false;
    std::atomic<int> changes = 0;
    std::thread page([&] {
        ComApartment com;
        const int methods[] = {0, 1, 2, 3, 99, -1};
        for (int i = 0; !done; ++i) {
            rig.settings->SetOutputSize(i % 7 ? 16 + i % 100 : 0, i % 5 ? 16 + i % 90 : 0);
            rig.settings->SetScaleMethod(methods[i % 6]);
            rig.settings->SetOutputFormat(i % 3 ? 0 : 1);
            rig.settings->SetVideoType(i % 2);
            rig.settings->SetFrameRate(i % 4 == 0 ? 0.0 : i % 100);
            double value = 0;
            rig.settings->GetModuleTime(&value);
            rig.settings->GetSystemFps(&value);
            rig.settings->GetGenerateFps(&value);
            rig.settings->GetFrameRate(&value);
            EXPECT_EQ(rig.settings->ApplySettings(), 1);
            rig.OfferedTypes();
            const LONG width = rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth;
            EXPECT_TRUE(width >= 16 && width < 116) << width;
            EXPECT_EQ(rig.input->QueryAccept(TypeOf(format_, 32, 24).Get()), S_OK);
            // Who is ahead goes on slowly.
            if (++changes > kChanges) Sleep(1);
        }
    });
    // Either of the two may have to wait for a processor.
    for (int frames = 0; frames < kFrames || changes < kChanges; ++frames) {
        // From 0 again after each flush, or all slots in between would be filled.
        const REFERENCE_TIME start = frames % 50 * REFERENCE_TIME{400000};
        const SampleSpec spec = {.start = start, .stop = start + 400000, .bytes = frame_};
        EXPECT_TRUE(SUCCEEDED(rig.Deliver(spec)));
        if (frames > kFrames) Sleep(1);
        if (frames % 50 == 49) {
            rig.source->pin().SendBeginFlush();
            rig.source->pin().SendEndFlush();
        }
        if (frames % 64 == 63) rig.sink->pin().ClearSamples();
    }
    done = true;
    page.join();
}

TEST_F(ThreadsTest, TypesAreReadWholeWhileTheyChangeOnSamples) {
    constexpr int kChanges = 5'000;
    FilterRig rig({.allocator = SinkAllocator::kOwn,
                   .ownAllocator = {.size = 80 * 60 * 2},
                   .keepBytes = false});
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    std::vector<std::vector<BYTE>> frames;
    for (int i = 0; i < 10; ++i) {
        const int height = 30 + i * 3;
        frames.push_back(RandomFrame(format_, height * 4 / 3, height));
    }
    std::atomic<bool> done = false;
    std::atomic<int> looks = 0;
    std::thread reader([&] {
        for (; !done; ++looks) {
            const MediaType in = rig.ConnectionTypeOf(rig.input.Get());
            const MediaType out = rig.ConnectionTypeOf(rig.output.Get());
            ASSERT_TRUE(in.Bitmap() && out.Bitmap());
            EXPECT_EQ(in.Bitmap()->biWidth * 3, in.Bitmap()->biHeight * 4);
            EXPECT_TRUE(out.Bitmap()->biWidth == 40 || out.Bitmap()->biWidth == 44);
            EXPECT_EQ(rig.OfferedTypes().size(), 1u);
            if (looks > kChanges) Sleep(1);
        }
    });
    for (int i = 0; i < kChanges || looks < kChanges; ++i) {
        const int height = 30 + i % 10 * 3;
        const int width = height * 4 / 3;
        const SampleSpec spec = {
            .bytes = frames[static_cast<size_t>(i % 10)],
            .type = TypeOf(format_, width, height),
            .freestanding =
                SampleConfig{.size = static_cast<long>(RuleFrameBytes(format_, width, height))}};
        const MediaType asked = TypeOf(format_, i % 2 ? 40 : 44, i % 2 ? 40 : 37);
        rig.sink->pin().ownAllocator()->AttachTypeOnce(*asked);
        const HRESULT result = rig.Deliver(spec);
        // An equal height would need a row that this version may lack.
        ASSERT_TRUE(result == S_OK || width == 40 || width == 44 || height == 40 || height == 37)
            << width << "x" << height;
        if (i > kChanges) Sleep(1);
    }
    done = true;
    reader.join();
}

TEST_F(ThreadsTest, PinsAreMadeOnceByWhoeverAsksFirst) {
    for (int round = 0; round < 50; ++round) {
        const ComPtr<IBaseFilter> filter = CreateFilter();
        IPin* found[4] = {};
        std::vector<std::thread> threads;
        for (IPin*& pin : found) {
            threads.emplace_back([&] { pin = GetPin(filter.Get(), PINDIR_OUTPUT).Get(); });
        }
        for (std::thread& thread : threads) thread.join();
        for (const IPin* pin : found) EXPECT_EQ(pin, found[0]);
        EXPECT_NE(found[0], nullptr);
    }
}

}  // namespace
