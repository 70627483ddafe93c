// Sinks for changes of a stream that is under way, and one step of such a change.
#pragma once

#include <utility>

#include "tests/filter/support/surface_rig.h"

namespace tavo_test {

constexpr Size kFrom = {64, 48};
constexpr Size kSizes[] = {{40, 36}, {24, 60}, {72, 52}, {32, 24}, {88, 72}};
constexpr REFERENCE_TIME kFrameTime = 400'000;

inline SampleSpec FrameAt(int number, const std::vector<BYTE>& bytes) {
    return {.start = number * kFrameTime, .stop = (number + 1) * kFrameTime, .bytes = bytes};
}

inline SinkConfig RoomySink() {
    return {.allocator = SinkAllocator::kOwn,
            .ownAllocator = {.guard = BufferGuard::kPageAfter, .count = 1, .size = 160 * 90 * 3}};
}

inline SinkConfig ExactSink() {
    return {.allocator = SinkAllocator::kOwn, .ownAllocator = {.guard = BufferGuard::kPageAfter}};
}

inline SinkConfig OverlaySink() {
    return {.allocator = SinkAllocator::kOwn,
            .ownAllocator = {.guard = BufferGuard::kPageAfter, .count = 3, .sizeChange = 1000}};
}

// One format, to look at the steps.
class LiveStepTest : public FilterTest {
  protected:
    void Change(FilterRig& rig, Size to, int result = 1) const {
        rig.settings->SetOutputSize(to.width, to.height);
        EXPECT_EQ(rig.settings->ApplySettings(), result);
    }
    // The next frame, as it must arrive.
    void ExpectFrame(SurfaceRig& rig, Size to, bool carriesType) const {
        const size_t before = rig.pictures.size();
        ASSERT_EQ(rig.Deliver(frame_), S_OK);
        ASSERT_EQ(rig.pictures.size(), before + 1);
        const DrawnPicture& picture = rig.pictures.back();
        EXPECT_EQ(std::pair(picture.size.width, picture.size.height),
                  std::pair(to.width, to.height));
        EXPECT_TRUE(Matches(NearestFrame(format_, frame_, kFrom, to), picture.bytes));
        EXPECT_EQ(picture.type.has_value(), carriesType);
        EXPECT_EQ(rig.OutputSize(), std::pair(to.width, to.height));
        EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, to.width);
    }

    const PixelFormat& format_ = Format("YV12");
    const std::vector<BYTE> frame_ = RandomFrame(format_, kFrom.width, kFrom.height);
};

}  // namespace tavo_test
