// ApplySettings while frames flow, step by step: with sinks that take the change, in both of the
// platform's ways, and with sinks that do not.
#include <thread>

#include "tests/filter/support/live_change.h"

using namespace tavo_test;

namespace {

TEST_F(LiveStepTest, TheTypeGoesWithTheFirstFrameOfItsSize) {
    SurfaceRig rig(format_, RoomySink());
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    ExpectFrame(rig, {40, 36}, false);
    const int connections = rig.sink->pin().calls().Count("ReceiveConnection");
    Change(rig, {72, 52});
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 40) << "not before";
    ExpectFrame(rig, {72, 52}, true);
    ExpectFrame(rig, {72, 52}, false);
    // The last one that was applied counts.
    Change(rig, {24, 20});
    Change(rig, {32, 24});
    ExpectFrame(rig, {32, 24}, true);
    EXPECT_EQ(rig.sink->pin().calls().Count("ReceiveConnection"), connections);
    EXPECT_EQ(rig.sink->pin().ownAllocator()->calls().Count("Decommit"), 0);
}

TEST_F(LiveStepTest, AnUnchangedTypeIsNotSent) {
    SurfaceRig rig(format_, RoomySink());
    rig.surfaces = {{8}};
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    ASSERT_EQ(rig.Deliver(frame_), S_OK);
    rig.surfaces.clear();
    const MediaType surface = rig.ConnectionTypeOf(rig.output.Get());
    ASSERT_EQ(rig.Deliver(frame_), S_OK);  // what the sink asked for last
    rig.settings->SetScaleMethod(VantrelMethodBilinear);
    Change(rig, {40, 36});
    ASSERT_EQ(rig.Deliver(frame_), S_OK);
    EXPECT_FALSE(rig.pictures.back().type);
    EXPECT_TRUE(rig.pictures.back().isClean);
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), surface) << "the surface's pitch stays";
}

TEST_F(LiveStepTest, LargerBuffersComeByAConnectionWhileRunning) {
    SurfaceRig rig(format_, ExactSink());
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    ExpectFrame(rig, {40, 36}, false);
    TestAllocator& allocator = *rig.sink->pin().ownAllocator();
    Change(rig, {72, 52});
    ExpectFrame(rig, {72, 52}, false);
    EXPECT_EQ(rig.sink->pin().connectionType(), rig.ConnectionTypeOf(rig.output.Get()));
    EXPECT_EQ(allocator.calls().Count("Decommit"), 1);
    EXPECT_EQ(allocator.asked().cbBuffer, 72 * 52 * 3 / 2);
    EXPECT_EQ(rig.sink->pin().calls().Count("NotifyAllocator"), 2);
    EXPECT_TRUE(allocator.committed());
    // Smaller again: the buffers do.
    Change(rig, {32, 24});
    ExpectFrame(rig, {32, 24}, true);
    EXPECT_EQ(allocator.calls().Count("Decommit"), 1);
}

TEST_F(LiveStepTest, AConnectionThatTheSinkRefusesLeavesTheOldType) {
    for (const bool keepsTheSize : {false, true}) {
        SurfaceRig rig(format_, ExactSink());
        rig.reconnects = false;
        ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
        Change(rig, {72, 52});
        if (keepsTheSize) rig.settings->SetOutputSize(11, 12);
        ASSERT_EQ(rig.Deliver(frame_), S_OK);
        if (keepsTheSize) {
            EXPECT_EQ(rig.OutputSize(), std::pair(11, 12)) << "set meanwhile";
            rig.settings->SetOutputSize(40, 36);
        }
        ExpectFrame(rig, {40, 36}, false);
        EXPECT_EQ(rig.pictures.size(), 2u);
        EXPECT_EQ(rig.sink->pin().ownAllocator()->calls().Count("Decommit"), 0);
        Change(rig, {32, 24});
        ExpectFrame(rig, {32, 24}, true);
    }
}

// Whatever fails on the way to larger buffers.
TEST_F(LiveStepTest, AnAllocatorThatDoesNotFollowIsReplacedOrKept) {
    struct Fault {
        const char* step;
        bool ofAllocator;
        bool isReplaced;
    };
    for (const Fault& fault : {Fault{"SetProperties", true, true}, Fault{"Commit", true, true},
                               Fault{"NotifyAllocator", false, false}}) {
        SCOPED_TRACE(fault.step);
        SurfaceRig rig(format_, ExactSink());
        ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
        TestAllocator& allocator = *rig.sink->pin().ownAllocator();
        (fault.ofAllocator ? allocator.calls() : rig.sink->pin().calls())
            .Inject(fault.step, E_FAIL);
        Change(rig, {72, 52});
        if (fault.isReplaced) {
            ExpectFrame(rig, {72, 52}, false);
            ExpectFrame(rig, {72, 52}, false);
            EXPECT_FALSE(allocator.committed());
        } else {
            ExpectFrame(rig, {40, 36}, false);
            EXPECT_TRUE(allocator.committed());
            EXPECT_EQ(rig.sink->pin().connectionType().Bitmap()->biWidth, 40);
        }
    }
}

TEST_F(LiveStepTest, ASinkThatHoldsABufferGetsOthers) {
    ComPtr<IMediaSample> shown;
    SinkConfig config = ExactSink();
    config.onReceive = [&](IMediaSample* sample) {
        if (!shown) shown = ComPtr<IMediaSample>(sample);
        return S_OK;
    };
    config.ownAllocator.count = 2;
    SurfaceRig rig(format_, config);
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    ExpectFrame(rig, {40, 36}, false);
    Change(rig, {72, 52});
    ExpectFrame(rig, {72, 52}, false);
    ExpectFrame(rig, {72, 52}, false);
    shown.Reset();
    ExpectFrame(rig, {72, 52}, false);
}

TEST_F(LiveStepTest, ASinkThatRefusesTheSampleGetsTheFrameInTheOldType) {
    for (const double fps : {0.0, 50.0}) {
        SinkConfig config = RoomySink();
        int refused = 0;
        config.onReceive = [&](IMediaSample* sample) {
            AM_MEDIA_TYPE* type = nullptr;
            if (sample->GetMediaType(&type) != S_OK) return S_OK;
            DeleteType(type);
            ++refused;
            return VFW_E_TYPE_NOT_ACCEPTED;
        };
        SurfaceRig rig(format_, config);
        rig.settings->SetFrameRate(fps);
        ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
        for (int i = 0; i < 10; ++i) {
            Change(rig, {72, 52});
            EXPECT_EQ(rig.OutputSize(), std::pair(72, 52));
            ASSERT_EQ(rig.Deliver(FrameAt(i, frame_)), S_OK);
            EXPECT_EQ(rig.OutputSize(), std::pair(40, 36)) << "the failure shows";
            EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 40);
        }
        EXPECT_EQ(refused, 10);
        ASSERT_EQ(rig.pictures.size(), fps > 0 ? 19u : 10u);
        for (const DrawnPicture& picture : rig.pictures) {
            EXPECT_TRUE(Matches(NearestFrame(format_, frame_, kFrom, {40, 36}), picture.bytes));
        }
    }
}

// Between two of its slots: the second one still repeats the picture that was kept.
TEST_F(LiveStepTest, AChangeThatIsRefusedKeepsTheKeptPicture) {
    const std::vector<BYTE> other = RandomFrame(format_, kFrom.width, kFrom.height, 7);
    SinkConfig config = RoomySink();
    config.onReceive = [&](IMediaSample* sample) {
        AM_MEDIA_TYPE* type = nullptr;
        if (sample->GetMediaType(&type) != S_OK) return S_OK;
        DeleteType(type);
        return VFW_E_TYPE_NOT_ACCEPTED;
    };
    SurfaceRig rig(format_, config);
    rig.settings->SetFrameRate(25.0);
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    ASSERT_EQ(rig.Deliver(FrameAt(0, frame_)), S_OK);
    Change(rig, {32, 24});
    // It starts in the third slot; the second one repeats the first frame.
    ASSERT_EQ(rig.Deliver({.start = 1'000'000, .stop = 1'200'001, .bytes = other}), S_OK);
    ASSERT_EQ(rig.pictures.size(), 3u);
    EXPECT_TRUE(Matches(NearestFrame(format_, frame_, kFrom, {40, 36}), rig.pictures[1].bytes));
    EXPECT_TRUE(Matches(NearestFrame(format_, other, kFrom, {40, 36}), rig.pictures[2].bytes));
}

TEST_F(LiveStepTest, ASinkThatRefusesIsAskedAndNothingElse) {
    SurfaceRig rig(format_, RoomySink());
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    ExpectFrame(rig, {40, 36}, false);
    rig.sink->pin().config.queryAccept = S_FALSE;
    Change(rig, {72, 52}, 0);
    rig.settings->SetOutputSize(40, 36);
    ExpectFrame(rig, {40, 36}, false);
    rig.sink->pin().config.queryAccept = S_OK;
    Change(rig, {72, 52});
    ExpectFrame(rig, {72, 52}, true);
}

TEST_F(LiveStepTest, ApplyDoesNotWaitForAPausedSink) {
    checksTaskMemory_ = false;
    SurfaceRig rig(format_, RoomySink());
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    ASSERT_EQ(rig.sink->Pause(), S_OK);
    ASSERT_EQ(rig.filter->Pause(), S_OK);
    rig.sink->pin().HoldReceive();
    std::thread streamer([&] {
        EXPECT_EQ(rig.Deliver(frame_), S_OK);
        EXPECT_EQ(rig.Deliver(frame_), S_OK);
    });
    ASSERT_TRUE(rig.sink->pin().WaitUntilHeld());
    const Watchdog dog("apply while the sink blocks", 60);
    Change(rig, {72, 52});
    Change(rig, {32, 24});
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 40);
    EXPECT_TRUE(rig.pictures.empty());
    rig.filter->Run(0);
    rig.sink->pin().ReleaseReceive();
    streamer.join();
    ASSERT_EQ(rig.pictures.size(), 2u);
    EXPECT_EQ(rig.pictures[0].size.width, 40);
    EXPECT_EQ(rig.pictures[1].size.width, 32);
}

// The sink asks back while it is connected anew, and while it gets a sample.
TEST_F(LiveStepTest, ASinkMayAskTheFilterWhileItChanges) {
    SinkConfig config = ExactSink();
    SurfaceRig* running = nullptr;
    const auto ask = [&] {
        if (!running) return;
        running->ConnectionTypeOf(running->output.Get());
        running->ConnectionTypeOf(running->input.Get());
        EXPECT_GT(running->OutputSize().first, 0);
    };
    config.onReceive = [&](IMediaSample*) {
        ask();
        return S_OK;
    };
    SurfaceRig rig(format_, config);
    const auto onConnection = rig.sink->pin().config.onConnection;
    rig.sink->pin().config.onConnection = [&](const AM_MEDIA_TYPE& type) {
        onConnection(type);
        ask();
    };
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    running = &rig;
    for (const Size& size : kSizes) {
        rig.settings->SetOutputSize(size.width, size.height);
        EXPECT_EQ(rig.settings->ApplySettings(), 1);
        ASSERT_EQ(rig.Deliver(frame_), S_OK);
        EXPECT_TRUE(Matches(NearestFrame(format_, frame_, kFrom, size), rig.pictures.back().bytes));
    }
    running = nullptr;
}

TEST_F(LiveStepTest, AFlushOrAStopDoesNotLoseTheChange) {
    checksTaskMemory_ = false;
    for (const bool stops : {false, true}) {
        SurfaceRig rig(format_, RoomySink());
        ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
        rig.sink->pin().HoldReceive();
        Change(rig, {72, 52});
        std::thread streamer([&] { EXPECT_NE(rig.Deliver(frame_), E_FAIL); });
        ASSERT_TRUE(rig.sink->pin().WaitUntilHeld());
        // A sink that is stopped ends its call as if it were flushed.
        if (stops) {
            EXPECT_EQ(rig.sink->pin().BeginFlush(), S_OK);
            EXPECT_EQ(rig.Stop(), S_OK);
        } else {
            EXPECT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        }
        streamer.join();
        if (stops) {
            EXPECT_EQ(rig.sink->pin().EndFlush(), S_OK);
        } else {
            EXPECT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        }
        EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 40);
        EXPECT_TRUE(rig.pictures.empty());
        if (stops) {
            ASSERT_EQ(rig.Start(), S_OK);
        }
        ExpectFrame(rig, {72, 52}, true);
    }
}

TEST_F(LiveStepTest, ANewConnectionForgetsTheChange) {
    SurfaceRig rig(format_, RoomySink());
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    Change(rig, {72, 52});
    ASSERT_EQ(rig.Stop(), S_OK);
    rig.DisconnectOutput();
    rig.settings->SetOutputSize(32, 24);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    ExpectFrame(rig, {32, 24}, false);
}

TEST_F(LiveStepTest, SlotsGoOnAndFiguresBeginAnew) {
    SurfaceRig rig(format_, RoomySink());
    rig.settings->SetFrameRate(50.0);
    ASSERT_EQ(rig.Begin(kFrom, {40, 36}), S_OK);
    for (int i = 0; i < 5; ++i) ASSERT_EQ(rig.Deliver(FrameAt(i, frame_)), S_OK);
    const size_t before = rig.pictures.size();
    Change(rig, {32, 24});
    SampleSpec spec = FrameAt(5, frame_);
    spec.mediaStart = 100;
    spec.mediaEnd = 101;
    std::optional<LONGLONG> first;
    rig.sink->pin().config.onReceive = [&](IMediaSample* sample) {
        LONGLONG start = -1;
        LONGLONG end = -1;
        REFERENCE_TIME begin = -1;
        REFERENCE_TIME stop = -1;
        EXPECT_EQ(sample->GetMediaTime(&start, &end), S_OK);
        EXPECT_EQ(sample->GetTime(&begin, &stop), S_OK);
        if (!first) {
            first = start;
            EXPECT_EQ(begin, static_cast<REFERENCE_TIME>(before) * kFrameTime / 2) << "not from 0";
        }
        return S_OK;
    };
    ASSERT_EQ(rig.Deliver(spec), S_OK);
    EXPECT_EQ(first, 0) << "frames are counted anew";
}

}  // namespace
