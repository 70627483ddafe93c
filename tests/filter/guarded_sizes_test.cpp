// Every format, method, axis mode and small size, in buffers of exactly the bytes of the picture
// that begin, or end, at a protected page. What comes out must not depend on which of the two.
//
// Each round pairs every size from 1 to 65 with another one; TAVO_ROUNDS=130 makes all pairs, each
// regulated and not, and a fifth of them by connections as well.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/guarded_trial.h"
#include "tests/picture/support/expected_pixels.h"
#include "tests/support/hand_clock.h"
#include "tests/support/rounds.h"

using namespace tavo_test;

namespace {

constexpr int kAllRounds = 2 * kMostPixels;
constexpr int kMethods[] = {
    VantrelMethodAuto,     VantrelMethodNearestAuto, VantrelMethodBilinearAuto,
    VantrelMethodNearest,  VantrelMethodNearestMmx,  VantrelMethodNearestSse,
    VantrelMethodBilinear, VantrelMethodBilinearMmx, VantrelMethodBilinearSse};
constexpr double kRate = 25.0;
constexpr REFERENCE_TIME kSlot = 400'000;

int RoundsToDo() { return std::min(Rounds(1), kAllRounds); }

// Whether the picture is the one that the formula gives; true where no formula is written down.
testing::AssertionResult IsRight(const Trial& trial, int method, const std::vector<BYTE>& source,
                                 const std::vector<BYTE>& output) {
    const PixelFormat& format = trial.format;
    const bool isCopy = trial.shape == Shape::kSame && method <= VantrelMethodBilinearAuto;
    const bool isNearest = trial.shape == Shape::kBoth && method == VantrelMethodNearest;
    const bool bothChange =
        trial.from.width != trial.to.width && trial.from.height != trial.to.height;
    if (!isCopy && !(isNearest && bothChange)) return testing::AssertionSuccess();
    const Expected want = isCopy ? CopiedFrame(format, source, trial.from)
                                 : NearestFrame(format, source, trial.from, trial.to);
    // A picture of a row or column may have no sample that the formula settles.
    if (std::find(want.settled.begin(), want.settled.end(), true) == want.settled.end())
        return testing::AssertionSuccess();
    return Matches(want, output);
}

// Whole frames in buffers that are whole pictures.
std::vector<BYTE> Resized(std::vector<BYTE> bytes, int64_t size) {
    bytes.resize(static_cast<size_t>(size));
    return bytes;
}

// One connection for all sizes of a format: every sample, on both sides, carries its type.
class GuardedStream {
  public:
    explicit GuardedStream(const PixelFormat& format)
        : rig_({.allocator = SinkAllocator::kOwn,
                .ownAllocator = {.onHandOut = [this](TestSample& sample) { HandOut(sample); }},
                .keepBytes = false,
                .onReceive = [this](IMediaSample* sample) { return Take(sample); }}),
          random_(RandomBytes(1 << 18, 3)),
          input_(TestSample::Create({.size = 1})) {
        EXPECT_EQ(rig_.Connect(TypeOf(format, 64, 48)), S_OK);
        EXPECT_EQ(rig_.Start(), S_OK);
    }

    void Run(const Trial& trial) {
        trial_ = &trial;
        rig_.settings->SetFrameRate(trial.isRegulated ? kRate : 0.0);
        const MediaType sourceType = trial.SourceType();
        outputType_ = trial.OutputType();
        input_->AttachType(sourceType.Get());
        given_ = random_.data() + ++turn_ % 256;
        for (const int method : kMethods) {
            rig_.settings->SetScaleMethod(method);
            tavo::test::SetCurrentTrial(trial.Text(method).c_str());
            std::vector<BYTE> first;
            for (const BufferGuard guard : {BufferGuard::kPageBefore, BufferGuard::kPageAfter}) {
                guard_ = guard;
                received_.clear();
                Deliver(method);
                const size_t wanted = trial.isRegulated ? 2 : 1;
                ASSERT_EQ(received_.size(), wanted) << trial.Text(method);
                if (first.empty()) first = received_[0];
                for (const std::vector<BYTE>& bytes : received_)
                    ASSERT_TRUE(bytes == first) << trial.Text(method);
            }
            Check(first, method);
        }
        rig_.sink->pin().ClearSamples();
        rig_.sink->pin().calls().Clear();
        rig_.source->pin().calls().Clear();
        rig_.sink->pin().ownAllocator()->calls().Clear();
    }

    int frames() const { return frames_; }
    int damaged() { return rig_.sink->pin().ownAllocator()->damagedSamples(); }

  private:
    void Deliver(int method) {
        const auto size = static_cast<size_t>(trial_->SourceBytes());
        input_->Reshape(trial_->SourceBytes(), guard_, 0);
        std::memcpy(input_->data(), given_, size);
        if (trial_->isRegulated) {
            input_->SetTimes(0, 2 * kSlot + 1);
            EXPECT_EQ(rig_.source->pin().SendBeginFlush(), S_OK);
            EXPECT_EQ(rig_.source->pin().SendEndFlush(), S_OK);
        } else {
            input_->ClearTimes();
        }
        EXPECT_EQ(rig_.source->pin().Deliver(input_.Get()), S_OK) << trial_->Text(method);
        EXPECT_EQ(std::memcmp(input_->data(), given_, size), 0)
            << "the source was written: " << trial_->Text(method);
        EXPECT_TRUE(input_->buffer().Intact()) << trial_->Text(method);
        input_->AttachType(nullptr);
    }

    void Check(const std::vector<BYTE>& output, int method) {
        const PixelFormat& format = trial_->format;
        const std::vector<BYTE> source(given_, given_ + trial_->SourceBytes());
        EXPECT_TRUE(IsRight(
            *trial_, method,
            Resized(source, RuleFrameBytes(format, trial_->from.width, trial_->from.height)),
            Resized(output, RuleFrameBytes(format, trial_->to.width, trial_->to.height))))
            << trial_->Text(method);
    }

    void HandOut(TestSample& sample) {
        if (!trial_) return;
        sample.Reshape(trial_->OutputBytes(), guard_, 0xA7);
        sample.AttachType(outputType_ ? outputType_->Get() : nullptr);
        outputType_.reset();
    }

    HRESULT Take(IMediaSample* sample) {
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        EXPECT_EQ(sample->GetActualDataLength(), trial_->OutputBytes());
        received_.emplace_back(data, data + trial_->OutputBytes());
        ++frames_;
        return S_OK;
    }

    FilterRig rig_;
    const std::vector<BYTE> random_;
    const ComPtr<TestSample> input_;
    const Trial* trial_ = nullptr;
    std::optional<MediaType> outputType_;
    BufferGuard guard_ = BufferGuard::kPageAfter;
    std::vector<std::vector<BYTE>> received_;
    const BYTE* given_ = nullptr;
    unsigned turn_ = 0;
    int frames_ = 0;
};

class GuardedSizesTest : public FilterTest {};

TEST_F(GuardedSizesTest, TypesOnSamplesOfEverySize) {
    int trials = 0;
    int frames = 0;
    for (const PixelFormat& format : AllFormats()) {
        GuardedStream stream(format);
        for (int round = 0; round < RoundsToDo() && !HasFailure(); ++round) {
            ForTrials(format, round, [&](const Trial& trial) {
                stream.Run(trial);
                ++trials;
                return !HasFailure();
            });
        }
        EXPECT_EQ(stream.damaged(), 0) << format.name;
        frames += stream.frames();
    }
    EXPECT_EQ(trials, RoundsToDo() * kMostPixels * (11 * 9 + 4 * 2));
    std::printf("  %d pairs of pictures, %d frames\n", trials, frames);
}

// The same by connections, with the allocators that these agree on: buffers of the bytes that the
// types state.
void ConnectAndRun(FilterRig& rig, const Trial& trial) {
    tavo::test::SetCurrentTrial(trial.Text(-1).c_str());
    rig.settings->SetOutputSize(trial.to.width, trial.to.height);
    rig.settings->SetFrameRate(trial.isRegulated ? kRate : 0.0);
    ASSERT_EQ(rig.Connect(trial.SourceType()), S_OK) << trial.Text(-1);
    ASSERT_EQ(rig.Start(), S_OK);
    const int64_t sourceBytes =
        trial.IsPadded() ? PaddedBytes(trial.format, trial.from)
                         : RuleFrameBytes(trial.format, trial.from.width, trial.from.height);
    const int64_t outputBytes = RuleFrameBytes(trial.format, trial.to.width, trial.to.height);
    SampleSpec spec = {.bytes = RandomBytes(sourceBytes, static_cast<uint32_t>(sourceBytes))};
    if (trial.isRegulated) {
        spec.start = 0;
        spec.stop = 2 * kSlot + 1;
    }
    for (const int method : kMethods) {
        tavo::test::SetCurrentTrial(trial.Text(method).c_str());
        rig.settings->SetScaleMethod(method);
        rig.sink->pin().ClearSamples();
        ASSERT_EQ(rig.source->pin().SendBeginFlush(), S_OK);
        ASSERT_EQ(rig.source->pin().SendEndFlush(), S_OK);
        ASSERT_EQ(rig.Deliver(spec), S_OK) << trial.Text(method);
        const std::vector<ReceivedSample> received = rig.samples();
        ASSERT_EQ(received.size(), trial.isRegulated ? 2u : 1u) << trial.Text(method);
        ASSERT_EQ(static_cast<int64_t>(received[0].bytes.size()), outputBytes);
        EXPECT_TRUE(received.back().bytes == received[0].bytes) << trial.Text(method);
        EXPECT_TRUE(IsRight(trial, method, spec.bytes, received[0].bytes)) << trial.Text(method);
    }
    EXPECT_EQ(rig.Stop(), S_OK);
    EXPECT_EQ(rig.source->pin().testAllocator()->damagedSamples(), 0) << trial.Text(-1);
    EXPECT_EQ(rig.sink->pin().ownAllocator()->damagedSamples(), 0) << trial.Text(-1);
    rig.DisconnectOutput();
    rig.DisconnectInput();
    rig.sink->calls().Clear();
    rig.source->calls().Clear();
    rig.sink->pin().calls().Clear();
    rig.source->pin().calls().Clear();
    rig.sink->pin().ownAllocator()->calls().Clear();
}

TEST_F(GuardedSizesTest, ConnectionsOfEverySize) {
    HandClock clock;  // without one the filter makes a clock with each start
    int connections = 0;
    for (const PixelFormat& format : AllFormats()) {
        for (const BufferGuard guard : {BufferGuard::kPageBefore, BufferGuard::kPageAfter}) {
            FilterRig rig({.allocator = SinkAllocator::kOwn, .ownAllocator = {.guard = guard}},
                          {.choice = AllocatorChoice::kOwnOnly, .allocator = {.guard = guard}});
            ASSERT_EQ(rig.filter->SetSyncSource(&clock), S_OK);
            for (int round = 0; round < RoundsToDo() && !HasFailure(); ++round) {
                int turn = round;
                ForTrials(format, round, [&](const Trial& trial) {
                    const bool before = ++turn % 2;
                    if (turn % 5 || before != (guard == BufferGuard::kPageBefore)) return true;
                    ConnectAndRun(rig, trial);
                    ++connections;
                    return !HasFailure();
                });
            }
        }
    }
    EXPECT_EQ(clock.references, 1);
    EXPECT_EQ(connections, RoundsToDo() * kMostPixels / 5 * (11 * 9 + 4 * 2));
    std::printf("  %d connections\n", connections);
}

}  // namespace
