// The tools themselves: source to sink without anything between, and every fault they promise.
#include <gtest/gtest.h>
#include <vfwmsgs.h>
#include <windows.h>

#include <evcode.h>

#include <thread>

#include "tests/support/graph.h"
#include "tests/support/handles.h"
#include "tests/support/live_objects.h"
#include "tests/support/task_memory.h"
#include "tests/support/test_sink.h"
#include "tests/support/test_source.h"
#include "tests/support/watchdog.h"

using namespace tavo_test;

namespace {

class Support : public testing::Test {
  protected:
    ~Support() override { EXPECT_EQ(CurrentLiveCounts(), before_); }

    ComApartment com_;
    Watchdog dog_{"support test"};
    const LiveCounts before_ = CurrentLiveCounts();
    const MediaType type_ = MakeVideoType({.width = 8, .height = 4});
};

TEST_F(Support, StreamsThroughPlatformGraph) {
    auto source = TestSource::Create({.types = {type_}});
    auto sink = TestSink::Create();
    Graph graph;
    ASSERT_EQ(graph.Add(source.Get(), L"source"), S_OK);
    ASSERT_EQ(graph.Add(sink.Get(), L"sink"), S_OK);
    ASSERT_EQ(graph.Connect(&source->pin(), &sink->pin()), S_OK);
    EXPECT_EQ(sink->pin().connectionType(), type_);
    ASSERT_EQ(graph.Run(), S_OK);
    const std::vector<BYTE> bytes(96, 7);
    EXPECT_EQ(source->pin().Deliver({.start = 1, .stop = 2, .preroll = true, .bytes = bytes}),
              S_OK);
    EXPECT_EQ(source->pin().Deliver({.start = 5, .type = type_, .streamId = 9}), S_OK);
    EXPECT_EQ(source->pin().SendEndOfStream(), S_OK);
    ASSERT_EQ(graph.Stop(), S_OK);
    const auto samples = sink->pin().samples();
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[0].bytes, bytes);
    EXPECT_EQ(samples[0].timeResult, S_OK);
    EXPECT_EQ(samples[0].stop, 2);
    EXPECT_TRUE(samples[0].preroll);
    EXPECT_EQ(samples[1].timeResult, VFW_S_NO_STOP_TIME);
    EXPECT_EQ(samples[1].streamId, 9u);
    ASSERT_TRUE(samples[1].type);
    EXPECT_EQ(*samples[1].type, type_);
    EXPECT_EQ(sink->pin().calls().Count("EndOfStream"), 1);
}

TEST_F(Support, FailedAllocatorLeavesNothingConnected) {
    auto source = TestSource::Create({.types = {type_}});
    auto sink = TestSink::Create({.allocator = SinkAllocator::kOwn});
    sink->pin().calls().Inject("NotifyAllocator", E_FAIL);
    EXPECT_EQ(ConnectPins(&source->pin(), &sink->pin()), E_FAIL);
    EXPECT_EQ(sink->pin().calls().Count("NotifyAllocator"), 2);
    EXPECT_FALSE(source->pin().connected());
    EXPECT_FALSE(sink->pin().connected());
}

TEST_F(Support, HeldReceiveIsReleasedByFlush) {
    auto source = TestSource::Create({.types = {type_}});
    auto sink = TestSink::Create();
    ASSERT_EQ(ConnectPins(&source->pin(), &sink->pin()), S_OK);
    ASSERT_EQ(source->Pause(), S_OK);
    sink->pin().HoldReceive();
    HRESULT result = E_PENDING;
    std::thread streaming([&] { result = source->pin().Deliver(SampleSpec{}); });
    ASSERT_TRUE(sink->pin().WaitUntilHeld());
    EXPECT_EQ(source->pin().SendBeginFlush(), S_OK);
    streaming.join();
    EXPECT_EQ(result, S_FALSE);
    EXPECT_EQ(source->pin().SendEndFlush(), S_OK);
    EXPECT_EQ(source->pin().Deliver(SampleSpec{}), S_OK);
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(source->pin().testAllocator()->samplesOut(), 0);
    EXPECT_EQ(DisconnectPins(&source->pin(), &sink->pin()), S_OK);
}

TEST_F(Support, AllocatorKeepsThePlatformsRules) {
    auto allocator = TestAllocator::Create({.count = 1, .sizeChange = -4});
    ALLOCATOR_PROPERTIES wish = {3, 100, 0, 0};
    ALLOCATOR_PROPERTIES granted = {};
    EXPECT_EQ(allocator->SetProperties(&wish, &granted), VFW_E_BADALIGN);
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);
    wish.cbAlign = 1;
    EXPECT_EQ(allocator->SetProperties(&wish, &granted), S_OK);
    EXPECT_EQ(granted.cBuffers, 1);
    EXPECT_EQ(granted.cbBuffer, 96);
    ComPtr<IMediaSample> sample;
    EXPECT_EQ(allocator->GetBuffer(sample.Put(), nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
    ASSERT_EQ(allocator->Commit(), S_OK);
    EXPECT_EQ(allocator->SetProperties(&wish, &granted), VFW_E_ALREADY_COMMITTED);
    ASSERT_EQ(allocator->GetBuffer(sample.Put(), nullptr, nullptr, 0), S_OK);
    ComPtr<IMediaSample> second;
    EXPECT_EQ(allocator->GetBuffer(second.Put(), nullptr, nullptr, AM_GBF_NOWAIT), VFW_E_TIMEOUT);
    BYTE* data = nullptr;
    sample->GetPointer(&data);
    data[96] = 0;
    sample.Reset();
    EXPECT_EQ(allocator->damagedSamples(), 1);
    EXPECT_EQ(allocator->Decommit(), S_OK);
}

TEST_F(Support, GuardPagesEndTheBuffer) {
    const GuardedBuffer after(100, BufferGuard::kPageAfter);
    const GuardedBuffer before(100, BufferGuard::kPageBefore);
    MEMORY_BASIC_INFORMATION info = {};
    ASSERT_NE(VirtualQuery(after.data() + 100, &info, sizeof info), 0u);
    EXPECT_EQ(info.State, static_cast<DWORD>(MEM_RESERVE));
    ASSERT_NE(VirtualQuery(before.data() - 1, &info, sizeof info), 0u);
    EXPECT_EQ(info.State, static_cast<DWORD>(MEM_RESERVE));
    EXPECT_TRUE(after.Intact());
    before.data()[100] = 1;
    EXPECT_FALSE(before.Intact());
}

TEST_F(Support, HandlesAreCounted) {
    const int before = HandlesInUse();
    EXPECT_EQ(HandlesInUse(), before);
    HANDLE made[7] = {};
    for (HANDLE& handle : made) handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(HandlesInUse(), before + 7);
    CloseHandle(made[2]);
    CloseHandle(made[4]);
    EXPECT_EQ(HandlesInUse(), before + 5) << "gaps do not count";
    for (const int i : {0, 1, 3, 5, 6}) CloseHandle(made[i]);
    EXPECT_EQ(HandlesInUse(), before);
}

TEST_F(Support, TaskMemoryIsCountedAndRefused) {
    const long before = LiveTaskBlocks();
    void* block = CoTaskMemAlloc(10);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(LiveTaskBlocks(), before + 1);
    {
        FailTaskMemory fail;
        EXPECT_EQ(CoTaskMemAlloc(10), nullptr);
        EXPECT_EQ(CoTaskMemRealloc(block, 20), nullptr);
        EXPECT_EQ(fail.refused(), 2);
    }
    CoTaskMemFree(block);
    EXPECT_EQ(LiveTaskBlocks(), before);
    FailTaskMemory fail(1);
    block = CoTaskMemAlloc(10);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(CoTaskMemAlloc(10), nullptr);
    CoTaskMemFree(block);
}

TEST_F(Support, BrokenFormatBlocks) {
    const MediaType cut = MakeVideoType({.formatBytes = 40});
    EXPECT_EQ(cut->cbFormat, 40u);
    EXPECT_EQ(cut.Video(), nullptr);
    const MediaType absent = MakeVideoType({.formatBytes = 88, .absentFormat = true});
    EXPECT_EQ(absent->cbFormat, 88u);
    EXPECT_EQ(absent->pbFormat, nullptr);
    const MediaType second = MakeVideoType({.subtype = FourCC("YV12"),
                                            .formattype = FORMAT_VideoInfo2,
                                            .width = 6,
                                            .height = -4,
                                            .aspectX = 16});
    ASSERT_NE(second.Video2(), nullptr);
    EXPECT_EQ(second.Video2()->dwPictAspectRatioX, 16u);
    EXPECT_EQ(second.Bitmap()->biHeight, -4);
    EXPECT_EQ(second.Bitmap()->biSizeImage, 36u);
}

}  // namespace
