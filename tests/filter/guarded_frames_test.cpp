// Frames in buffers that end, or begin, exactly at a protected page: nothing is read or written
// outside, whatever the size.
#include "tests/filter/support/guarded_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

namespace {

void CheckScaling(const PixelFormat& format, Size from, Size to, BufferGuard guard) {
    SCOPED_TRACE(testing::Message() << format.name << " " << from.width << "x" << from.height
                                    << " to " << to.width << "x" << to.height);
    GuardedRig rig(guard, TypeOf(format, from.width, from.height), to);
    const std::vector<BYTE> source = RandomFrame(format, from.width, from.height);
    const Expected nearest = NearestPlanar(format, source, from, to);
    for (const int method : {5, 6, 7, 1}) {
        rig.settings->SetScaleMethod(method);
        EXPECT_TRUE(Matches(nearest, rig.Frame(source))) << "method " << method;
    }
    const Expected bilinear = BilinearPlanar(format, source, from, to);
    const bool hasInterior =
        std::find(bilinear.settled.begin(), bilinear.settled.end(), true) != bilinear.settled.end();
    for (const int method : {10, 11, 12, 2, 0}) {
        rig.settings->SetScaleMethod(method);
        const std::vector<BYTE> bytes = rig.Frame(source);
        EXPECT_EQ(bytes.size(), static_cast<size_t>(RuleFrameBytes(format, to.width, to.height)));
        if (hasInterior && method != 0) {
            EXPECT_TRUE(Matches(bilinear, bytes)) << "method " << method;
        }
    }
}

TEST_F(GuardedFramesTest, Yv12Of5x5To10x10StaysInsideItsChromaPlanes) {
    CheckScaling(Format("YV12"), {5, 5}, {10, 10}, BufferGuard::kPageAfter);
}

TEST_F(GuardedFramesTest, PlanarPicturesOfOddSizes) {
    for (const char* name : {"YV12", "YVU9"}) {
        const PixelFormat& format = Format(name);
        const int least = 1 << format.chromaShift;
        for (int i = 0; i < 12; ++i) {
            const Size from = {least + i, least + (i * 7) % 12};
            for (int j = 0; j < 12; ++j) {
                const Size to = {1 + (i * 5 + j * 3) % 37, 1 + (i * 11 + j * 8) % 41};
                if (to.width == from.width || to.height == from.height) continue;
                CheckScaling(format, from, to,
                             j % 2 ? BufferGuard::kPageAfter : BufferGuard::kPageBefore);
            }
        }
    }
}

TEST_F(GuardedFramesTest, LargerPlanarPicturesOfOddSizes) {
    constexpr Size kFrom[] = {{173, 101}, {641, 33}, {99, 255}, {35, 17}};
    constexpr Size kTo[] = {{101, 173}, {77, 31}, {343, 201}, {15, 7}, {480, 19}};
    for (const PixelFormat& format : PlanarFormats()) {
        for (const Size& from : kFrom)
            for (const Size& to : kTo) CheckScaling(format, from, to, BufferGuard::kPageAfter);
    }
}

TEST_F(GuardedFramesTest, OutputsWithoutRoomForAChromaSample) {
    for (const PixelFormat& format : PlanarFormats()) {
        for (const Size& to : {Size{1, 1}, Size{1, 9}, Size{9, 1}, Size{3, 3}, Size{2, 1}}) {
            CheckScaling(format, {37, 29}, to, BufferGuard::kPageAfter);
        }
    }
}

void CheckCopies(const PixelFormat& format, Size size, BufferGuard guard) {
    SCOPED_TRACE(testing::Message() << format.name << " " << size.width << "x" << size.height);
    GuardedRig rig(guard, TypeOf(format, size.width, size.height), size);
    const std::vector<BYTE> source = RandomFrame(format, size.width, size.height);
    for (const int method : {0, 1, 2}) {
        rig.settings->SetScaleMethod(method);
        EXPECT_TRUE(Matches(CopiedFrame(format, source, size), rig.Frame(source)));
    }
}

TEST_F(GuardedFramesTest, ARgb24CopyOf172x1024WhichIsExactly129Pages) {
    ASSERT_EQ(RuleFrameBytes(Format("RGB24"), 172, 1024), 129 * 4096);
    CheckCopies(Format("RGB24"), {172, 1024}, BufferGuard::kPageAfter);
    CheckCopies(Format("RGB24"), {172, 1024}, BufferGuard::kPageBefore);
}

TEST_F(GuardedFramesTest, CopiesOfEveryFormatAndWidth) {
    for (const PixelFormat& format : AllFormats()) {
        const int step = format.layout == Layout::kPacked ? 2 : 1;
        for (int width = 4; width < 44; width += step) {
            for (const int height : {4, 7}) {
                CheckCopies(format, {width, height}, BufferGuard::kPageAfter);
                CheckCopies(format, {width, height}, BufferGuard::kPageBefore);
            }
        }
    }
}

TEST_F(GuardedFramesTest, UpsideDownCopies) {
    for (const char* name : {"RGB24", "RGB555", "RGB565", "I420"}) {
        const PixelFormat& format = Format(name);
        for (int width = 4; width < 24; ++width) {
            for (const BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
                GuardedRig rig(guard, TypeOf(format, width, 7), {width, -7});
                const std::vector<BYTE> source = RandomFrame(format, width, 7);
                for (const int method : {0, 1, 2}) {
                    rig.settings->SetScaleMethod(method);
                    EXPECT_TRUE(
                        Matches(CopiedFrame(format, source, {width, 7}, true), rig.Frame(source)))
                        << format.name << " " << width;
                }
            }
        }
    }
}

TEST_F(GuardedFramesTest, TopDownPlanarPicturesOfOddSizes) {
    for (const PixelFormat& format : PlanarFormats()) {
        for (int height = 4; height < 16; ++height) {
            GuardedRig rig(BufferGuard::kPageAfter, TypeOf(format, 9, -height), {23, 0});
            for (const int method : {0, 1, 2, 5, 6, 7, 10, 11, 12}) {
                rig.settings->SetScaleMethod(method);
                EXPECT_EQ(rig.Deliver({.bytes = RandomFrame(format, 9, height)}), S_OK);
            }
        }
    }
}

TEST_F(GuardedFramesTest, RegulatedFramesStayInsideToo) {
    for (const Size& size : {Size{5, 5}, Size{172, 64}, Size{7, 9}}) {
        const PixelFormat& format = Format(size.width == 172 ? "RGB24" : "YV12");
        GuardedRig rig(BufferGuard::kPageAfter, TypeOf(format, size.width, size.height), size);
        rig.settings->SetFrameRate(25.0);
        const std::vector<BYTE> source = RandomFrame(format, size.width, size.height);
        ASSERT_EQ(rig.Deliver({.start = 0, .stop = 4000000, .bytes = source}), S_OK);
        ASSERT_EQ(rig.samples().size(), 9u);
        for (const ReceivedSample& sample : rig.samples())
            EXPECT_TRUE(Matches(CopiedFrame(format, source, size), sample.bytes));
    }
}

// One sample, four slots, and for each of them a buffer of another size: the kept picture serves
// none of them.
TEST_F(GuardedFramesTest, ASinkThatChangesItsTypeBetweenTheSlotsOfASample) {
    constexpr Size kFrom = {22, 18};
    constexpr Size kTo[] = {{34, 10}, {6, 50}, {58, 31}, {2, 1}};
    for (const PixelFormat& format : AllFormats()) {
        for (const BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
            size_t slot = 0;
            const auto reshape = [&](TestSample& sample) {
                if (slot == std::size(kTo)) return;
                const Size to = kTo[slot++];
                sample.Reshape(static_cast<long>(PictureBytes(format, to.width, to.height)), guard,
                               0);
                sample.AttachType(TypeOf(format, to.width, to.height).Get());
            };
            FilterRig rig(
                {.allocator = SinkAllocator::kOwn, .ownAllocator = {.onHandOut = reshape}});
            rig.settings->SetScaleMethod(VantrelMethodNearest);
            rig.settings->SetFrameRate(25.0);
            ASSERT_EQ(rig.Connect(TypeOf(format, kFrom.width, kFrom.height)), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
            const std::vector<BYTE> source = RandomFrame(format, kFrom.width, kFrom.height);
            ASSERT_EQ(rig.Deliver({.start = 0, .stop = 1600001, .bytes = source}), S_OK);
            const std::vector<ReceivedSample> received = rig.samples();
            ASSERT_EQ(received.size(), std::size(kTo));
            for (size_t i = 0; i < std::size(kTo); ++i) {
                std::vector<BYTE> bytes = received[i].bytes;
                EXPECT_EQ(static_cast<int64_t>(bytes.size()),
                          PictureBytes(format, kTo[i].width, kTo[i].height));
                bytes.resize(
                    static_cast<size_t>(RuleFrameBytes(format, kTo[i].width, kTo[i].height)));
                EXPECT_TRUE(Matches(NearestFrame(format, source, kFrom, kTo[i]), bytes))
                    << format.name << " slot " << i;
            }
            EXPECT_EQ(rig.sink->pin().ownAllocator()->damagedSamples(), 0);
        }
    }
}

// Every row of the kernel table, with the buffers of both sides exactly as large as the frame.
void CheckEveryMethod(const PixelFormat& format, Size from, Size to, BufferGuard guard) {
    SCOPED_TRACE(testing::Message() << format.name << " " << from.width << "x" << from.height
                                    << " to " << to.width << "x" << to.height);
    GuardedRig rig(guard, TypeOf(format, from.width, from.height), to);
    const std::vector<BYTE> source = RandomFrame(format, from.width, from.height);
    const Expected nearest = NearestFrame(format, source, from, to);
    for (const int method : {0, 1, 2, 5, 6, 7, 10, 11, 12}) {
        rig.settings->SetScaleMethod(method);
        const std::vector<BYTE> bytes = rig.Frame(source);
        EXPECT_EQ(bytes.size(), static_cast<size_t>(RuleFrameBytes(format, to.width, to.height)));
        const bool bothChange = from.width != to.width && from.height != to.height;
        if (bothChange && method >= 5 && method <= 7) {
            EXPECT_TRUE(Matches(nearest, bytes)) << "method " << method;
        }
    }
}

TEST_F(GuardedFramesTest, EveryAxisModeOfEveryFormatInOddSizes) {
    constexpr Size kFrom[] = {{37, 29}, {5, 4}, {173, 11}, {640, 5}, {720, 5}};
    for (const PixelFormat& format : AllFormats()) {
        for (const Size& from : kFrom) {
            for (const Size& to :
                 {Size{from.width, 7}, Size{22, from.height}, Size{480, from.height}, Size{480, 9},
                  Size{14, 6}, Size{2, 2}, Size{46, 31}}) {
                // Widths of packed pictures are even by rule.
                const bool isPacked = format.layout == Layout::kPacked;
                if (isPacked && to.width % 2) continue;
                CheckEveryMethod(format, from, to,
                                 to.width % 4 ? BufferGuard::kPageAfter : BufferGuard::kPageBefore);
            }
        }
    }
}

void CheckSteepReductions(Layout layout) {
    for (const PixelFormat& format : AllFormats()) {
        if (format.layout != layout) continue;
        for (const int width : {1000, 5000, 20000, 46341}) {
            for (const Size& to : {Size{2, 30}, Size{6, 4}, Size{16, 8}, Size{6, 9}})
                CheckEveryMethod(format, {width, 9}, to, BufferGuard::kPageAfter);
        }
        for (const int height : {5000, 30000})
            CheckEveryMethod(format, {9, height}, {6, 3}, BufferGuard::kPageAfter);
    }
}

TEST_F(GuardedFramesTest, SteepReductionsOfPlanarPictures) {
    CheckSteepReductions(Layout::kPlanar);
}

TEST_F(GuardedFramesTest, SteepReductionsOfRgbPictures) { CheckSteepReductions(Layout::kRgb); }

TEST_F(GuardedFramesTest, SteepReductionsOfPackedPictures) {
    CheckSteepReductions(Layout::kPacked);
}

TEST_F(GuardedFramesTest, SteepEnlargementsOfEveryFormat) {
    for (const PixelFormat& format : AllFormats()) {
        for (const Size& to : {Size{3000, 7}, Size{10, 3000}, Size{2050, 5}})
            CheckEveryMethod(format, {4, 5}, to, BufferGuard::kPageAfter);
    }
}

// Rows whose bits 32-bit integers cannot count: refused, or copied right, but never half done.
TEST_F(GuardedFramesTest, AVeryWideRow) {
    for (const auto& [name, width] : std::initializer_list<std::pair<const char*, int>>{
             {"RGB24", 89478486}, {"RGB555", 134217728}, {"UYVY", 134217728}}) {
        const PixelFormat& format = Format(name);
        FilterRig rig({.keepBytes = false});
        VideoSpec spec = SpecOf(format, 64, 48);
        spec.width = width;
        spec.height = 1;
        spec.sizeImage = static_cast<DWORD>(RuleFrameBytes(format, width, 1));
        const HRESULT connected = rig.Connect(MakeVideoType(spec));
        if (connected == VFW_E_NO_ACCEPTABLE_TYPES || connected == VFW_E_TYPE_NOT_ACCEPTED)
            continue;
        ASSERT_EQ(connected, S_OK);
        bool same = false;
        rig.sink->pin().config.onReceive = [&](IMediaSample* sample) {
            BYTE* data = nullptr;
            sample->GetPointer(&data);
            same = data && data[0] == 0xA5 && data[*spec.sizeImage - 4] == 0x5A;
            return S_OK;
        };
        ASSERT_EQ(rig.Start(), S_OK);
        const ComPtr<IMediaSample> sample = rig.source->pin().MakeSample(SampleSpec{});
        ASSERT_TRUE(sample);
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        data[0] = 0xA5;
        data[*spec.sizeImage - 4] = 0x5A;
        EXPECT_EQ(rig.source->pin().Deliver(sample.Get()), S_OK);
        EXPECT_TRUE(same) << name;
    }
}

}  // namespace
