// Types damaged at random: whatever is accepted must be a picture that the filter can handle in
// buffers of exactly the size that it states.
#include <memory>
#include <random>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/mutated_types.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/rounds.h"

using namespace tavo_test;

namespace {

class MutatedTypesTest : public FilterTest {};

// One filter for many types: what is left of one must not matter to the next.
class MutatedConnections {
  public:
    // Whether the type was refused, and whether a frame came out.
    struct Outcome {
        bool isRefused;
        bool streams;
    };

    Outcome Try(std::mt19937& random, const PixelFormat& format, const MediaType& type) {
        rig_.settings->SetVideoType(static_cast<int>(random() % 5) - 1);
        rig_.settings->SetOutputFormat(random() % 2 ? 0 : 11);
        rig_.settings->SetScaleMethod(static_cast<int>(random() % 13));
        const bool asksForSize = random() % 2;
        rig_.settings->SetOutputSize(asksForSize ? OddLong(random, 40) : 0,
                                     asksForSize ? OddLong(random, 30) : 0);
        rig_.settings->SetFrameRate(random() % 8 == 0 ? 25.0 : 0.0);
        const Outcome outcome = Stream(format, type);
        rig_.Stop();
        rig_.DisconnectOutput();
        rig_.DisconnectInput();
        rig_.sink->pin().ClearSamples();
        rig_.sink->pin().calls().Clear();
        rig_.source->pin().calls().Clear();
        rig_.sink->pin().ownAllocator()->calls().Clear();
        return outcome;
    }

  private:
    Outcome Stream(const PixelFormat& format, const MediaType& type) {
        const bool small = IsSmall(type);
        if (FAILED(rig_.ConnectInput(type))) return {true, false};
        const std::vector<MediaType> offered = rig_.OfferedTypes();
        if (offered.empty() || !small || !IsSmall(offered[0]) || FAILED(rig_.ConnectOutput()) ||
            FAILED(rig_.Start())) {
            return {false, false};
        }
        const BITMAPINFOHEADER& bitmap = *type.Bitmap();
        const auto bytes = static_cast<long>(
            RuleFrameBytes(format, bitmap.biWidth, bitmap.biHeight, bitmap.biBitCount));
        const SampleSpec spec = {
            .start = 0,
            .stop = 1000000,
            .freestanding = SampleConfig{.size = bytes, .guard = BufferGuard::kPageAfter}};
        const HRESULT result = rig_.Deliver(spec);
        EXPECT_TRUE(result == S_OK || result == E_FAIL) << std::hex << result;
        EXPECT_EQ(rig_.samples().empty(), result != S_OK);
        return {false, result == S_OK};
    }

    FilterRig rig_{{.allocator = SinkAllocator::kOwn,
                    .ownAllocator = {.guard = BufferGuard::kPageAfter},
                    .keepBytes = false},
                   {.choice = AllocatorChoice::kOwnOnly,
                    .wish = {1, 1, 1, 0},
                    .allocator = {.guard = BufferGuard::kPageAfter}}};
};

TEST_F(MutatedTypesTest, WhatIsAcceptedStreamsOrFailsButNeverLeavesItsBuffers) {
    std::mt19937 random(20240611);
    std::unique_ptr<MutatedConnections> connections;
    int streamed = 0;
    int refused = 0;
    for (int i = 0; i < Rounds(6000); ++i) {
        SCOPED_TRACE(i);
        if (i % 20 == 0) connections = std::make_unique<MutatedConnections>();
        const PixelFormat& format = AllFormats()[random() % AllFormats().size()];
        const auto outcome = connections->Try(random, format, MutatedType(random, format));
        streamed += outcome.streams;
        refused += outcome.isRefused;
    }
    EXPECT_GT(streamed, 200);
    EXPECT_GT(refused, 500);
}

TEST_F(MutatedTypesTest, TypesOnSamplesDoNoHarmEither) {
    std::mt19937 random(77);
    const PixelFormat& format = Format("YV12");
    FilterRig rig({.allocator = SinkAllocator::kOwn,
                   .ownAllocator = {.guard = BufferGuard::kPageAfter},
                   .keepBytes = false});
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    int delivered = 0;
    for (int i = 0; i < Rounds(3000); ++i) {
        const MediaType type = MutatedType(random, format);
        if (random() % 3 == 0 && IsSmall(type))
            rig.sink->pin().ownAllocator()->AttachTypeOnce(*type);
        SampleSpec spec = {.type = random() % 3 ? type : TypeOf(format, 64, 48)};
        const BITMAPINFOHEADER* const bitmap = spec.type->Bitmap();
        const long bytes =
            bitmap && IsSmall(*spec.type)
                ? static_cast<long>(RuleFrameBytes(format, std::max(bitmap->biWidth, LONG{0}),
                                                   bitmap->biHeight, bitmap->biBitCount))
                : 4;
        spec.freestanding = SampleConfig{.size = bytes, .guard = BufferGuard::kPageAfter};
        delivered += rig.Deliver(spec) == S_OK;
        rig.source->pin().SendBeginFlush();
        rig.source->pin().SendEndFlush();
    }
    EXPECT_GT(delivered, 100);
    SampleSpec last = {.type = TypeOf(format, 64, 48)};
    last.freestanding = SampleConfig{.size = 64 * 48 * 3 / 2};
    rig.sink->pin().ownAllocator()->AttachTypeOnce(*TypeOf(format, 40, 36));
    EXPECT_EQ(rig.Deliver(last), S_OK) << "the stream has survived";
}

}  // namespace
