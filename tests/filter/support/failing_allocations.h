// A filter whose requests to the platform are refused, and that must work afterwards.
#pragma once

#include <vector>

#include "tests/filter/support/pictures.h"
#include "tests/filter/support/refusing_test.h"
#include "tests/picture/support/expected_pixels.h"

namespace tavo_test {

class FailingAllocationsTest : public RefusingTest {
  protected:
    // Whatever went wrong before.
    void ExpectWorks(FilterRig& rig) {
        rig.Stop();
        rig.DisconnectOutput();
        rig.DisconnectInput();
        rig.settings->SetFrameRate(0.0);
        rig.settings->SetOutputSize(40, 36);
        rig.settings->SetScaleMethod(VantrelMethodNearest);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK) << names_;
        ASSERT_EQ(rig.Start(), S_OK) << names_;
        rig.sink->pin().ClearSamples();
        ASSERT_EQ(rig.Deliver(frame_), S_OK) << names_;
        EXPECT_TRUE(
            Matches(NearestPlanar(format_, frame_, {64, 48}, {40, 36}), rig.samples().at(0).bytes))
            << names_;
    }

    // A connected and running rig, something that fails, and frames again.
    template <typename Prepare, typename Call>
    void OnARig(Prepare prepare, Call call) {
        WithEveryRefusal([&] {
            FilterRig rig({.allocator = SinkAllocator::kOwn});
            prepare(rig);
            call(rig);
            ExpectWorks(rig);
        });
    }

    void Connect(FilterRig& rig) {
        rig.settings->SetOutputSize(40, 36);
        rig.settings->SetScaleMethod(VantrelMethodNearest);
        ASSERT_EQ(rig.Connect(TypeOf(format_, 64, 48)), S_OK);
    }
    void Start(FilterRig& rig) {
        Connect(rig);
        ASSERT_EQ(rig.Start(), S_OK);
    }

    const PixelFormat& format_ = Format("YV12");
    const std::vector<BYTE> frame_ = RandomFrame(format_, 64, 48);
};

}  // namespace tavo_test
