// Output types that the sink proposes, the allocator that is settled for them, and what a failure
// on the way leaves behind.
#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/graph.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

class OutputTypeTest : public FilterTest {};

TEST_F(OutputTypeTest, OnlyTheSubtypeOfTheInputIsAccepted) {
    for (const PixelFormat& input : AllFormats()) {
        FilterRig rig;
        ASSERT_EQ(rig.ConnectInput(TypeOf(input, 64, 48)), S_OK);
        for (const PixelFormat& asked : AllFormats()) {
            const MediaType type = TypeOf(asked, 32, 24);
            const bool isSame = asked.name == input.name;
            EXPECT_EQ(rig.output->QueryAccept(type.Get()), isSame ? S_OK : S_FALSE)
                << input.name << " to " << asked.name;
            if (!isSame) {
                EXPECT_EQ(rig.ConnectOutput(&type), VFW_E_TYPE_NOT_ACCEPTED);
            }
        }
    }
}

TEST_F(OutputTypeTest, TheTypeTestHoldsForTheOutputToo) {
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    const MediaType second = TypeOf(Format("YV12"), 64, 48, FORMAT_VideoInfo2);
    EXPECT_EQ(rig.output->QueryAccept(second.Get()), S_OK);
    rig.settings->SetVideoType(VantrelTypeMpeg1);
    EXPECT_EQ(rig.output->QueryAccept(second.Get()), S_FALSE);
    rig.settings->SetVideoType(VantrelTypeAuto);
    rig.settings->SetOutputFormat(VantrelFormatYuy2);
    EXPECT_EQ(rig.output->QueryAccept(second.Get()), S_FALSE);
    rig.settings->SetOutputFormat(VantrelFormatAuto);
    VideoSpec cut = SpecOf(Format("YV12"), 64, 48);
    cut.formatBytes = sizeof(VIDEOINFOHEADER) - 1;
    EXPECT_EQ(rig.output->QueryAccept(MakeVideoType(cut).Get()), S_FALSE);
}

TEST_F(OutputTypeTest, ASinkMayChooseTheSize) {
    FilterRig rig({.types = {TypeOf(Format("YV12"), 100, 50)}});
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    EXPECT_EQ(rig.sink->pin().connectionType().Bitmap()->biWidth, 100);
    EXPECT_EQ(rig.OutputSize(), std::pair(100, 50));
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(rig.Deliver(RandomFrame(Format("YV12"), 64, 48)), S_OK);
    ASSERT_EQ(rig.samples().size(), 1u);
    EXPECT_EQ(rig.samples()[0].actualLength, RuleFrameBytes(Format("YV12"), 100, 50));
}

TEST_F(OutputTypeTest, AnExplicitPackedTypeOfOddWidthIsRefused) {
    for (const char* name : {"YUY2", "YUYV", "YVYU", "UYVY"}) {
        FilterRig rig;
        ASSERT_EQ(rig.ConnectInput(TypeOf(Format(name), 64, 48)), S_OK);
        const MediaType odd = TypeOf(Format(name), 63, 48);
        EXPECT_EQ(rig.output->QueryAccept(odd.Get()), S_FALSE);
        EXPECT_EQ(rig.ConnectOutput(&odd), VFW_E_TYPE_NOT_ACCEPTED);
        const MediaType even = TypeOf(Format(name), 62, 47);
        EXPECT_EQ(rig.ConnectOutput(&even), S_OK);
    }
}

TEST_F(OutputTypeTest, UnusableSizesAreRefused) {
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("RGB24"), 64, 48)), S_OK);
    for (const auto& [width, height] :
         std::initializer_list<std::pair<int, int>>{{0, 48}, {64, 0}, {-64, 48}, {50000, 50000}}) {
        VideoSpec spec = SpecOf(Format("RGB24"), 64, 48);
        spec.width = width;
        spec.height = height;
        EXPECT_EQ(rig.output->QueryAccept(MakeVideoType(spec).Get()), S_FALSE);
    }
}

TEST_F(OutputTypeTest, ADepthBelowThatOfTheSubtypeCountsAsItsOwn) {
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("RGB24"), 64, 48)), S_OK);
    VideoSpec shallow = SpecOf(Format("RGB24"), 32, 24);
    shallow.bitCount = WORD{16};
    const MediaType type = MakeVideoType(shallow);
    ASSERT_EQ(rig.ConnectOutput(&type), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    ASSERT_EQ(rig.Deliver(RandomFrame(Format("RGB24"), 64, 48)), S_OK);
    EXPECT_EQ(rig.samples().at(0).actualLength, 32 * 24 * 3);
}

TEST_F(OutputTypeTest, ARefusingSinkEndsTheConnectionAttempt) {
    FilterRig rig({.accept = [](const AM_MEDIA_TYPE&) { return false; }});
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    EXPECT_EQ(rig.ConnectOutput(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_FALSE(rig.sink->pin().connected());
    EXPECT_EQ(rig.sink->pin().calls().Count("ReceiveConnection"), 1);
    rig.sink->pin().config.accept = {};
    EXPECT_EQ(rig.ConnectOutput(), S_OK);
}

TEST_F(OutputTypeTest, OneBufferOfOneFrameIsAskedForWhateverTheSinkWishes) {
    for (const PixelFormat& format : AllFormats()) {
        for (const auto& [width, height] :
             std::initializer_list<std::pair<int, int>>{{64, 48}, {6, 5}, {22, 7}, {64, -48}}) {
            FilterRig rig({.allocator = SinkAllocator::kOwn,
                           .requirements = ALLOCATOR_PROPERTIES{5, 1, 16, 8}});
            rig.settings->SetOutputSize(width, height);
            ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
            const ALLOCATOR_PROPERTIES asked = rig.sink->pin().ownAllocator()->asked();
            EXPECT_EQ(asked.cBuffers, 1);
            EXPECT_EQ(asked.cbBuffer, RuleFrameBytes(format, width, height)) << format.name;
            EXPECT_EQ(asked.cbAlign, 1);
            EXPECT_EQ(asked.cbPrefix, 0);
            EXPECT_EQ(rig.sink->pin().allocator(), rig.sink->pin().ownAllocator());
        }
    }
}

TEST_F(OutputTypeTest, TheBufferFollowsTheDepthThatTheTypeStates) {
    FilterRig rig({.allocator = SinkAllocator::kOwn});
    VideoSpec spec = SpecOf(Format("YV12"), 64, 48);
    spec.bitCount = 16;
    ASSERT_EQ(rig.Connect(MakeVideoType(spec)), S_OK);
    EXPECT_EQ(rig.sink->pin().ownAllocator()->asked().cbBuffer, 64 * 48 * 2);
}

// The offer is made of what was set last, by whichever pin.
TEST_F(OutputTypeTest, TheOfferedDepthIsThatOfTheTypeSetLast) {
    VideoSpec spec = SpecOf(Format("YV12"), 64, 48);
    const MediaType plain = MakeVideoType(spec);
    spec.bitCount = 16;
    spec.sizeImage = 64 * 48 * 2;
    const MediaType deep = MakeVideoType(spec);
    const auto offeredDepth = [](const FilterRig& rig) {
        return int{rig.OfferedTypes().at(0).Bitmap()->biBitCount};
    };
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(plain), S_OK);
    EXPECT_EQ(offeredDepth(rig), 12);
    ASSERT_EQ(rig.ConnectOutput(&deep), S_OK);
    EXPECT_EQ(offeredDepth(rig), 16) << "the output came last";
    rig.DisconnectInput();
    ASSERT_EQ(rig.ConnectInput(plain), S_OK);
    EXPECT_EQ(offeredDepth(rig), 12) << "now the input did";
    rig.DisconnectOutput();
    rig.DisconnectInput();
    ASSERT_EQ(rig.ConnectInput(deep), S_OK);
    EXPECT_EQ(offeredDepth(rig), 16);
    ASSERT_EQ(rig.ConnectOutput(&plain), S_OK);
    EXPECT_EQ(offeredDepth(rig), 12);
}

TEST_F(OutputTypeTest, WhatTheAllocatorGrantsIsNotLookedAt) {
    FilterRig rig({.allocator = SinkAllocator::kOwn, .ownAllocator = {.count = 7, .size = 10}});
    EXPECT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
}

TEST_F(OutputTypeTest, AnAllocatorThatRefusesIsReplacedByOneOfThePlatform) {
    FilterRig rig({.allocator = SinkAllocator::kOwn});
    rig.sink->pin().ownAllocator()->calls().Inject("SetProperties", E_FAIL);
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    EXPECT_NE(rig.sink->pin().allocator(), rig.sink->pin().ownAllocator());
    ALLOCATOR_PROPERTIES granted = {};
    ASSERT_EQ(rig.sink->pin().allocator()->GetProperties(&granted), S_OK);
    EXPECT_EQ(granted.cBuffers, 1);
    EXPECT_EQ(granted.cbBuffer, 64 * 48 * 3 / 2);
}

TEST_F(OutputTypeTest, ASinkThatTakesNoAllocatorLeavesNothingConnected) {
    FilterRig rig;
    rig.sink->pin().calls().Inject("NotifyAllocator", E_OUTOFMEMORY);
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    EXPECT_EQ(rig.ConnectOutput(), E_OUTOFMEMORY);
    EXPECT_FALSE(rig.sink->pin().connected());
    rig.sink->pin().calls().ClearInjections();
    EXPECT_EQ(rig.ConnectOutput(), S_OK);
}

TEST_F(OutputTypeTest, WithoutTaskMemoryTheInputFailsCleanlyAndWorksLater) {
    for (const char* name : {"YV12", "RGB565"}) {
        const MediaType type = TypeOf(Format(name), 64, 48);
        bool refused = true;
        for (int after = 0; refused; ++after) {
            ASSERT_LT(after, 100);
            FilterRig rig;
            HRESULT result = S_OK;
            {
                const FailTaskMemory fail(after);
                result = rig.input->ReceiveConnection(&rig.source->pin(), type.Get());
                refused = fail.refused() > 0;
            }
            EXPECT_EQ(result, refused ? E_OUTOFMEMORY : S_OK) << after;
            rig.input->Disconnect();
            EXPECT_EQ(rig.Connect(type), S_OK);
        }
    }
}

// What the filter does on the way to an output type; the test's sink could not do without memory.
bool AskWithLittleMemory(FilterRig& rig, int after) {
    const FailTaskMemory fail(after);
    const HRESULT accepted = rig.output->QueryAccept(rig.source->pin().connectionType().Get());
    EXPECT_TRUE(accepted == S_OK || (accepted == S_FALSE && fail.refused() > 0));
    ComPtr<IEnumMediaTypes> list;
    AM_MEDIA_TYPE* type = nullptr;
    if (SUCCEEDED(rig.output->EnumMediaTypes(list.Put()))) {
        if (list->Next(1, &type, nullptr) == S_OK) DeleteType(type);
    }
    AM_MEDIA_TYPE copy = {};
    if (rig.input->ConnectionMediaType(&copy) == S_OK) CoTaskMemFree(copy.pbFormat);
    return fail.refused() > 0;
}

TEST_F(OutputTypeTest, WithoutTaskMemoryTheOutputFailsCleanlyAndWorksLater) {
    VideoSpec spec = SpecOf(Format("RGB565"), 64, 48);
    spec.compression = BI_RGB;  // so that the block has to grow
    bool refused = true;
    for (int after = 0; refused; ++after) {
        ASSERT_LT(after, 100);
        FilterRig rig;
        ASSERT_EQ(rig.ConnectInput(MakeVideoType(spec)), S_OK);
        refused = AskWithLittleMemory(rig, after);
        EXPECT_EQ(rig.ConnectOutput(), S_OK);
    }
}

#if defined(__i386__)
// Almost 2 GB: a frame that the rules allow and that 32-bit memory cannot hold.
TEST_F(OutputTypeTest, FramesThatMemoryCannotHoldAreRefusedWithoutHarm) {
    FilterRig rig;
    rig.settings->SetOutputSize(26000, 26000);
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("RGB24"), 64, 48)), S_OK);
    EXPECT_EQ(rig.ConnectOutput(), E_OUTOFMEMORY);
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.ConnectOutput(), S_OK);
}
#endif

TEST_F(OutputTypeTest, AnUnknownSubtypeCanConnectUnderFormat11) {
    FilterRig rig({.allocator = SinkAllocator::kOwn});
    rig.settings->SetOutputFormat(11);
    const MediaType type =
        MakeVideoType({.subtype = MEDIASUBTYPE_RGB32, .width = 64, .height = 48});
    ASSERT_EQ(rig.Connect(type), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(rig.Deliver(std::vector<BYTE>(64 * 48 * 4)), E_FAIL);
    EXPECT_TRUE(rig.samples().empty());
}

// Of its fields the filter understands none: those of the type before it stay.
TEST_F(OutputTypeTest, AnUnknownSubtypeAfterAKnownOneLeavesSizeAndDepth) {
    FilterRig rig;
    rig.settings->SetOutputFormat(11);
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    rig.DisconnectInput();
    const MediaType unknown =
        MakeVideoType({.subtype = MEDIASUBTYPE_RGB32, .width = 320, .height = 240});
    rig.settings->SetOutputSize(0, 0);
    ASSERT_EQ(rig.ConnectInput(unknown), S_OK);
    EXPECT_EQ(rig.OutputSize(), std::pair(0, 0)) << "its size is not taken";
    const RECT offered = rig.OfferedTypes().at(0).Video()->rcTarget;
    EXPECT_EQ(offered.right, 64) << "the source is still as large as it was";
    EXPECT_EQ(offered.bottom, 48);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    EXPECT_EQ(rig.Deliver(SampleSpec{}), E_FAIL) << "and its frames are not taken for YV12";
    EXPECT_TRUE(rig.samples().empty());
}

}  // namespace
