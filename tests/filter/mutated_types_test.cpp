// Types damaged at random: whatever is accepted must be a picture that the filter can handle in
// buffers of exactly the size that it states.
#include <cmath>
#include <random>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"

using namespace tavo_test;

namespace {

class MutatedTypesTest : public FilterTest {};

LONG OddLong(std::mt19937& random, LONG usual) {
    constexpr LONG kOdd[] = {
        0,     1,     -1,         2,          3,       4,          5,
        7,     -7,    65535,      65536,      -65536,  0x7fffffff, LONG(0x80000000),
        46341, 92682, 0x40000000, 0x10000000, 1 << 20, 37,         719};
    return random() % 3 ? usual : kOdd[random() % (sizeof kOdd / sizeof *kOdd)];
}

MediaType Mutate(std::mt19937& random, const PixelFormat& format) {
    const GUID blocks[] = {FORMAT_VideoInfo, FORMAT_VideoInfo2, FORMAT_None, GUID_NULL};
    VideoSpec spec = SpecOf(format, 4 + random() % 60, 4 + random() % 50,
                            blocks[random() % 8 < 6 ? random() % 2 : random() % 4]);
    spec.width = OddLong(random, spec.width);
    spec.height = OddLong(random, spec.height);
    if (random() % 8 == 0) spec.bitCount = static_cast<WORD>(random());
    if (random() % 8 == 0) spec.compression = random();
    if (random() % 4 == 0) spec.sizeImage = random();
    if (random() % 8 == 0) spec.formatBytes = random() % 160;
    if (random() % 16 == 0) spec.absentFormat = true;
    MediaType type = MakeVideoType(spec);
    if (type->pbFormat && type->cbFormat && random() % 4 == 0) {
        for (int i = 0; i < 4; ++i)
            type->pbFormat[random() % type->cbFormat] = static_cast<BYTE>(random());
    }
    return type;
}

// Small enough for the buffers of a test.
bool IsSmall(const MediaType& type) {
    const BITMAPINFOHEADER* const bitmap = type.Bitmap();
    if (!bitmap) return false;
    const double bits = std::abs(double(bitmap->biWidth) * bitmap->biHeight * bitmap->biBitCount);
    return bits < 16 << 20;
}

TEST_F(MutatedTypesTest, WhatIsAcceptedStreamsOrFailsButNeverLeavesItsBuffers) {
    std::mt19937 random(20240611);
    int streamed = 0;
    int refused = 0;
    for (int i = 0; i < 6000; ++i) {
        SCOPED_TRACE(i);
        const PixelFormat& format = AllFormats()[random() % AllFormats().size()];
        const MediaType type = Mutate(random, format);
        FilterRig rig({.allocator = SinkAllocator::kOwn,
                       .ownAllocator = {.guard = BufferGuard::kPageAfter},
                       .keepBytes = false},
                      {.choice = AllocatorChoice::kOwnOnly,
                       .wish = {1, 1, 1, 0},
                       .allocator = {.guard = BufferGuard::kPageAfter}});
        rig.settings->SetVideoType(static_cast<int>(random() % 5) - 1);
        rig.settings->SetOutputFormat(random() % 2 ? 0 : 11);
        rig.settings->SetScaleMethod(static_cast<int>(random() % 13));
        if (random() % 2) rig.settings->SetOutputSize(OddLong(random, 40), OddLong(random, 30));
        if (random() % 8 == 0) rig.settings->SetFrameRate(25.0);
        const bool small = IsSmall(type);
        if (FAILED(rig.ConnectInput(type))) {
            ++refused;
            continue;
        }
        const std::vector<MediaType> offered = rig.OfferedTypes();
        if (offered.empty() || !small || !IsSmall(offered[0]) || FAILED(rig.ConnectOutput()) ||
            FAILED(rig.Start())) {
            continue;
        }
        const BITMAPINFOHEADER& bitmap = *type.Bitmap();
        const auto bytes = static_cast<long>(
            RuleFrameBytes(format, bitmap.biWidth, bitmap.biHeight, bitmap.biBitCount));
        const SampleSpec spec = {
            .start = 0,
            .stop = 1000000,
            .freestanding = SampleConfig{.size = bytes, .guard = BufferGuard::kPageAfter}};
        const HRESULT result = rig.Deliver(spec);
        EXPECT_TRUE(result == S_OK || result == E_FAIL) << std::hex << result;
        EXPECT_EQ(rig.samples().empty(), result != S_OK);
        streamed += result == S_OK;
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
    for (int i = 0; i < 3000; ++i) {
        const MediaType type = Mutate(random, format);
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
