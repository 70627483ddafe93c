// Two hundred changes of every format, with sinks that take them in both of the platform's ways.
#include <map>
#include <tuple>

#include "tests/filter/support/live_change.h"

using namespace tavo_test;

namespace {

// What changes in a run, beside the size that is applied.
struct Scenario {
    const char* name;
    SinkConfig (*sink)();
    std::vector<Surface> surfaces;
    bool sourceChanges = false;
    bool sourceAsksFirst = false;
};

class LiveChangeTest : public FilterTest {
  protected:
    // Every frame is of a size of its own, and must be the picture of its number.
    void Run(const PixelFormat& format, const Scenario& scenario, double fps);
};

// Pictures of one source size, and what they must become. Planes whose rows can be padded are.
class Pictures {
  public:
    Pictures(const PixelFormat& format, Size from)
        : format_(format), from_(from), isPlanar_(format.layout == Layout::kPlanar) {
        for (uint32_t i = 0; i < 3; ++i) {
            tight_.push_back(RandomFrame(format, from.width, from.height, i + 1));
            sent_.push_back(isPlanar_ ? PadRows(format, from, tight_[i]) : tight_[i]);
        }
    }
    MediaType Type() const {
        return isPlanar_ ? PaddedTypeOf(format_, from_)
                         : TypeOf(format_, from_.width, from_.height);
    }
    const std::vector<BYTE>& Frame(size_t number) const { return sent_[number % 3]; }
    const Expected& At(size_t number, Size to) {
        const auto key = std::tuple(number % 3, to.width, to.height);
        const auto found = wanted_.find(key);
        if (found != wanted_.end()) return found->second;
        return wanted_.emplace(key, NearestFrame(format_, tight_[number % 3], from_, to))
            .first->second;
    }

  private:
    const PixelFormat& format_;
    const Size from_;
    const bool isPlanar_;
    std::vector<std::vector<BYTE>> tight_;
    std::vector<std::vector<BYTE>> sent_;
    std::map<std::tuple<size_t, int, int>, Expected> wanted_;
};

constexpr int kFrames = 200;

void LiveChangeTest::Run(const PixelFormat& format, const Scenario& scenario, double fps) {
    SCOPED_TRACE(std::string(format.name) + ", " + scenario.name + (fps > 0 ? ", regulated" : ""));
    Pictures sources[] = {{format, kFrom}, {format, {100, 80}}, {format, {48, 40}}};
    SurfaceRig rig(format, scenario.sink());
    rig.settings->SetFrameRate(fps);
    rig.surfaces = scenario.surfaces;
    ASSERT_EQ(rig.Begin(kFrom, kSizes[0]), S_OK);
    const auto sourceOf = [&](int i) -> Pictures& {
        return sources[scenario.sourceChanges ? i / 3 % 3 : 0];
    };
    // Surfaces are followed in between.
    const int step = scenario.surfaces.empty() ? 1 : 2;
    const auto sizeOf = [&](int i) { return kSizes[i / step % std::size(kSizes)]; };
    for (int i = 0; i < kFrames; ++i) {
        const Pictures& source = sourceOf(i);
        rig.settings->SetOutputSize(sizeOf(i).width, sizeOf(i).height);
        if (i % step == 0) {
            ASSERT_EQ(rig.settings->ApplySettings(), 1);
        }
        SampleSpec spec = FrameAt(i, source.Frame(i));
        spec.freestanding = SampleConfig{.size = static_cast<long>(spec.bytes.size())};
        if (scenario.sourceChanges) {
            spec.type = source.Type();
        }
        if (scenario.sourceAsksFirst) {
            ASSERT_EQ(rig.input->QueryAccept(source.Type().Get()), S_OK);
        }
        ASSERT_EQ(rig.Deliver(spec), S_OK) << i;
        ASSERT_EQ(rig.OutputSize(), std::pair(sizeOf(i).width, sizeOf(i).height)) << i;
    }
    const size_t slots = fps > 0 ? 2 * kFrames - 1 : kFrames;
    ASSERT_EQ(rig.pictures.size(), slots);
    for (size_t i = 0; i < slots; ++i) {
        const DrawnPicture& picture = rig.pictures[i];
        const int frame = static_cast<int>(fps > 0 ? (i + 1) / 2 : i);
        ASSERT_EQ(std::pair(picture.size.width, picture.size.height),
                  std::pair(sizeOf(frame).width, sizeOf(frame).height))
            << i;
        ASSERT_TRUE(Matches(sourceOf(frame).At(frame, sizeOf(frame)), picture.bytes)) << i;
        EXPECT_TRUE(picture.isClean) << i;
        if (fps > 0) {
            EXPECT_EQ(picture.start, static_cast<REFERENCE_TIME>(i) * kFrameTime / 2);
        }
    }
    EXPECT_EQ(rig.sink->pin().ownAllocator()->damagedSamples(), 0);
}

TEST_F(LiveChangeTest, EveryFormatAndSinkTakesTwoHundredChanges) {
    const Scenario scenarios[] = {
        {"large buffers", RoomySink, {}},
        {"exact buffers", ExactSink, {}, true},
        {"an overlay", OverlaySink, {}},
        {"surfaces", RoomySink, {{8}, {24, true}, {24}}, true, true},
    };
    for (const PixelFormat& format : AllFormats()) {
        for (const Scenario& scenario : scenarios) {
            for (const double fps : {0.0, 50.0}) {
                Run(format, scenario, fps);
                if (HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
