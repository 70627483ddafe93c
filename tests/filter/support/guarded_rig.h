// Connections of filters whose buffers lie between protected pages.
//
//   class FooTest : public GuardedFramesTest {};
//   GuardedRig rig(BufferGuard::kPageAfter, type, {40, 36});
//   EXPECT_TRUE(Matches(want, rig.Frame(source)));
#pragma once

#include <memory>
#include <vector>

#include "tests/filter/support/filter_rig.h"
#include "tests/picture/support/expected_pixels.h"

namespace tavo_test {

class GuardedFramesTest : public FilterTest {
  protected:
    void TearDown() override {
        for (std::unique_ptr<FilterRig>& rig : rigs) rig.reset();
        FilterTest::TearDown();
    }

  public:
    // Both sides have buffers of exactly one frame between protected pages.
    static FilterRig& Rig(BufferGuard guard) {
        std::unique_ptr<FilterRig>& rig = rigs[guard == BufferGuard::kPageAfter];
        if (!rig) {
            const SinkConfig sink = {.allocator = SinkAllocator::kOwn,
                                     .ownAllocator = {.guard = guard}};
            const SourceConfig source = {.choice = AllocatorChoice::kOwnOnly,
                                         .allocator = {.guard = guard}};
            rig = std::make_unique<FilterRig>(sink, source);
        }
        return *rig;
    }

  private:
    // Made once: each filter looks at the processor anew.
    inline static std::unique_ptr<FilterRig> rigs[2];
};

// One connection of a filter that has had others before.
class GuardedRig {
  public:
    GuardedRig(BufferGuard guard, const MediaType& type, Size to)
        : rig_(GuardedFramesTest::Rig(guard)), settings(rig_.settings) {
        settings->SetScaleMethod(VantrelMethodAuto);
        settings->SetFrameRate(0.0);
        settings->SetOutputSize(to.width, to.height);
        EXPECT_EQ(rig_.Connect(type), S_OK);
        EXPECT_EQ(rig_.Start(), S_OK);
    }
    ~GuardedRig() {
        EXPECT_EQ(rig_.Stop(), S_OK);
        EXPECT_EQ(rig_.source->pin().testAllocator()->damagedSamples(), 0);
        EXPECT_EQ(rig_.sink->pin().ownAllocator()->damagedSamples(), 0);
        rig_.sink->pin().ClearSamples();
        rig_.DisconnectOutput();
        rig_.DisconnectInput();
    }
    GuardedRig(const GuardedRig&) = delete;
    GuardedRig& operator=(const GuardedRig&) = delete;

    HRESULT Deliver(const SampleSpec& spec) { return rig_.Deliver(spec); }
    std::vector<ReceivedSample> samples() const { return rig_.samples(); }
    std::vector<BYTE> Frame(const std::vector<BYTE>& bytes) {
        rig_.sink->pin().ClearSamples();
        const HRESULT result = rig_.Deliver(bytes);
        EXPECT_EQ(result, S_OK);
        const auto received = samples();
        return received.empty() ? std::vector<BYTE>() : received[0].bytes;
    }

  private:
    FilterRig& rig_;

  public:
    const ComPtr<IVantrelSettings>& settings;
};

}  // namespace tavo_test
