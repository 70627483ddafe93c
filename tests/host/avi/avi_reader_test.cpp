// The AVI reader: valid files of all kinds, and damaged ones.

#include "host/avi/avi_reader.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "host/avi/avi_writer.h"
#include "host/avi/riff.h"
#include "tests/host/avi/memory_store.h"

namespace tavo {
namespace {

using tavo_test::MemoryStore;

struct StreamSpec {
    uint32_t compression = FourCc('Y', 'U', 'Y', '2');
    uint32_t bitCount = 16;
    int32_t width = 4;
    int32_t height = 2;
    ColorMasks masks{};
    uint32_t rate = 25;
    uint32_t scale = 1;
    uint32_t formatLength = 40;
};

void PutStream(RiffBlock& block, const StreamSpec& spec) {
    const size_t stream = block.OpenList(kList, kStreamList);
    const size_t head = block.Open(kStreamHeader);
    block.Put32(kVideoStream);
    block.PutZeros(16);
    block.Put32(spec.scale);
    block.Put32(spec.rate);
    block.PutZeros(28);
    block.Close(head);
    const size_t format = block.Open(kStreamFormat);
    RiffBlock bitmap;
    bitmap.Put32(40);
    bitmap.Put32(static_cast<uint32_t>(spec.width));
    bitmap.Put32(static_cast<uint32_t>(spec.height));
    bitmap.Put16(1);
    bitmap.Put16(spec.bitCount);
    bitmap.Put32(spec.compression);
    bitmap.PutZeros(20);
    for (const uint32_t mask : spec.masks) bitmap.Put32(mask);
    const std::vector<std::byte> bytes = bitmap.Take();
    for (uint32_t i = 0; i < spec.formatLength; ++i) {
        block.Put8(std::to_integer<uint32_t>(bytes[i]));
    }
    block.Close(format);
    block.Close(stream);
}

void PutAudio(RiffBlock& block) {
    const size_t stream = block.OpenList(kList, kStreamList);
    const size_t head = block.Open(kStreamHeader);
    block.Put32(FourCc('a', 'u', 'd', 's'));
    block.PutZeros(52);
    block.Close(head);
    block.Close(stream);
}

void PutFrame(RiffBlock& block, uint32_t code, uint32_t length, uint32_t value) {
    const size_t chunk = block.Open(code);
    for (uint32_t i = 0; i < length; ++i) block.Put8(value);
    block.Close(chunk);
}

// A file with one stream and the given movi list.
std::vector<std::byte> MakeAvi(const StreamSpec& spec,
                               const std::function<void(RiffBlock&)>& movie) {
    RiffBlock block;
    const size_t riff = block.OpenList(kRiff, kAvi);
    const size_t header = block.OpenList(kList, kHeaderList);
    PutStream(block, spec);
    block.Close(header);
    const size_t list = block.OpenList(kList, kMovieList);
    movie(block);
    block.Close(list);
    block.Close(riff);
    return block.Take();
}

constexpr uint32_t kFrame = FourCc('0', '0', 'd', 'b');
constexpr uint32_t kFrameBytes = 16;  // of the default stream

AviResult Open(const StreamSpec& spec, AviReader& reader) {
    static MemoryStore store;
    store = MemoryStore(MakeAvi(spec, [](RiffBlock& b) { PutFrame(b, kFrame, 4096, 1); }));
    return reader.Open(store);
}

AviResult Open(const StreamSpec& spec) {
    AviReader reader;
    return Open(spec, reader);
}

TEST(AviReader, EveryFormatBothWaysUp) {
    for (const PixelFormat format : AllPixelFormats()) {
        const PictureFormat& info = InfoOf(format);
        for (const int32_t height : {4, -4}) {
            StreamSpec spec{info.compression, static_cast<uint16_t>(info.bitsPerPixel), 8, height};
            if (format == PixelFormat::RGB565) spec.masks = kMasks565, spec.formatLength = 52;
            AviReader reader;
            ASSERT_EQ(Open(spec, reader), AviResult::Ok) << NameOf(format);
            EXPECT_EQ(reader.Video().format, format);
            EXPECT_EQ(reader.Video().compression, info.compression);
            EXPECT_EQ(reader.Video().width, 8);
            EXPECT_EQ(reader.Video().height, info.group == FormatGroup::Rgb ? height : 4);
            EXPECT_EQ(reader.FrameBytes(), FrameSize(reader.Video()));
        }
    }
}

TEST(AviReader, Masks) {
    const StreamSpec rgb555 = {kCompressionBitFields, 16, 4, 2, kMasks555, 25, 1, 52};
    AviReader reader;
    ASSERT_EQ(Open(rgb555, reader), AviResult::Ok);
    EXPECT_EQ(reader.Video().format, PixelFormat::RGB555);
    // Masks are announced and missing.
    EXPECT_EQ(Open({kCompressionBitFields, 16, 4, 2, kMasks565, 25, 1, 40}),
              AviResult::OtherFormat);
    EXPECT_EQ(Open({kCompressionBitFields, 16, 4, 2, {1, 2, 3}, 25, 1, 52}),
              AviResult::OtherFormat);
}

TEST(AviReader, FormatsAndSizesThatAreRefused) {
    EXPECT_EQ(Open({FourCc('M', 'J', 'P', 'G'), 24, 4, 2}), AviResult::OtherFormat);
    EXPECT_EQ(Open({kCompressionRgb, 32, 4, 2}), AviResult::OtherFormat);
    EXPECT_EQ(Open({kCompressionRgb, 24, 0, 2}), AviResult::BadSize);
    EXPECT_EQ(Open({kCompressionRgb, 24, -4, 2}), AviResult::BadSize);
    EXPECT_EQ(Open({kCompressionRgb, 24, 4, 0}), AviResult::BadSize);
    EXPECT_EQ(Open({kCompressionRgb, 24, 4, INT32_MIN}), AviResult::BadSize);
    EXPECT_EQ(Open({FourCc('Y', 'U', 'Y', '2'), 16, 4, INT32_MIN}), AviResult::BadSize);
    EXPECT_EQ(Open({kCompressionRgb, 24, INT32_MAX, INT32_MAX}), AviResult::BadSize);
    StreamSpec shortFormat;
    shortFormat.formatLength = 39;
    EXPECT_EQ(Open(shortFormat), AviResult::NoVideo);
}

TEST(AviReader, Rates) {
    StreamSpec spec;
    spec.rate = 30000;
    spec.scale = 1001;
    AviReader reader;
    ASSERT_EQ(Open(spec, reader), AviResult::Ok);
    EXPECT_EQ(reader.Rate(), (FrameRate{30000, 1001}));
    const FrameRate senseless[] = {{0, 1}, {1, 0}, {0xFFFFFFFF, 1}, {1, 0xFFFFFFFF}};
    for (const FrameRate& rate : senseless) {
        spec.rate = rate.rate;
        spec.scale = rate.scale;
        AviReader other;
        ASSERT_EQ(Open(spec, other), AviResult::Ok);
        EXPECT_EQ(other.Rate(), (FrameRate{25, 1}));
    }
}

TEST(AviReader, FramesInOrderAndInRecords) {
    MemoryStore store(MakeAvi({}, [](RiffBlock& b) {
        PutFrame(b, kFrame, kFrameBytes, 1);
        PutFrame(b, FourCc('0', '1', 'w', 'b'), 7, 9);
        PutFrame(b, kJunk, 5, 9);
        const size_t record = b.OpenList(kList, kRecordList);
        PutFrame(b, FourCc('0', '0', 'd', 'c'), kFrameBytes, 2);
        PutFrame(b, FourCc('0', '1', 'd', 'b'), kFrameBytes, 9);
        b.Close(record);
        PutFrame(b, FourCc('0', '0', 'p', 'c'), kFrameBytes, 9);
        PutFrame(b, kFrame, kFrameBytes + 3, 3);
    }));
    AviReader reader;
    ASSERT_EQ(reader.Open(store), AviResult::Ok);
    ASSERT_EQ(reader.FrameCount(), 3u);
    EXPECT_FALSE(reader.IsTruncated());
    for (uint32_t n = 0; n < 3; ++n) {
        std::vector<std::byte> frame(reader.FrameBytes());
        ASSERT_EQ(reader.ReadFrame(n, frame), IoResult::Ok);
        EXPECT_EQ(frame, std::vector<std::byte>(kFrameBytes, static_cast<std::byte>(n + 1)));
    }
}

TEST(AviReader, EmptyChunksRepeatThePicture) {
    MemoryStore store(MakeAvi({}, [](RiffBlock& b) {
        PutFrame(b, kFrame, 0, 0);
        PutFrame(b, kFrame, kFrameBytes, 1);
        PutFrame(b, kFrame, 0, 0);
        PutFrame(b, kFrame, 0, 0);
        PutFrame(b, kFrame, kFrameBytes, 2);
    }));
    AviReader reader;
    ASSERT_EQ(reader.Open(store), AviResult::Ok);
    ASSERT_EQ(reader.FrameCount(), 4u);
    std::vector<std::byte> frame(kFrameBytes);
    ASSERT_EQ(reader.ReadFrame(2, frame), IoResult::Ok);
    EXPECT_EQ(frame[0], std::byte{1});
}

TEST(AviReader, VideoBehindAudio) {
    RiffBlock block;
    const size_t riff = block.OpenList(kRiff, kAvi);
    const size_t header = block.OpenList(kList, kHeaderList);
    PutAudio(block);
    PutStream(block, {});
    block.Close(header);
    const size_t list = block.OpenList(kList, kMovieList);
    PutFrame(block, kFrame, kFrameBytes, 9);
    PutFrame(block, FourCc('0', '1', 'd', 'b'), kFrameBytes, 1);
    block.Close(list);
    block.Close(riff);
    MemoryStore store(block.Take());
    AviReader reader;
    ASSERT_EQ(reader.Open(store), AviResult::Ok);
    EXPECT_EQ(reader.FrameCount(), 1u);
}

TEST(AviReader, NoVideoNoFramesNoAvi) {
    RiffBlock block;
    const size_t riff = block.OpenList(kRiff, kAvi);
    const size_t header = block.OpenList(kList, kHeaderList);
    PutAudio(block);
    block.Close(header);
    block.Close(riff);
    MemoryStore audio(block.Take());
    EXPECT_EQ(AviReader().Open(audio), AviResult::NoVideo);

    MemoryStore none(MakeAvi({}, [](RiffBlock&) {}));
    EXPECT_EQ(AviReader().Open(none), AviResult::NoFrames);

    RiffBlock wave;
    wave.Close(wave.OpenList(kRiff, FourCc('W', 'A', 'V', 'E')));
    MemoryStore other(wave.Take());
    EXPECT_EQ(AviReader().Open(other), AviResult::NotAvi);
    MemoryStore empty;
    EXPECT_EQ(AviReader().Open(empty), AviResult::NotAvi);
}

TEST(AviReader, FramesOfAnotherLayout) {
    MemoryStore shorter(MakeAvi({}, [](RiffBlock& b) { PutFrame(b, kFrame, kFrameBytes - 1, 1); }));
    EXPECT_EQ(AviReader().Open(shorter), AviResult::OtherFrameLayout);
    // 5 x 3 has 22 bytes in tight rows, 27 with chroma rounded up, 48 in padded rows.
    const StreamSpec odd = {FourCc('Y', 'V', '1', '2'), 12, 5, 3};
    for (const uint32_t length : {21u, 23u, 26u, 28u, 47u, 49u}) {
        MemoryStore store(MakeAvi(odd, [&](RiffBlock& b) { PutFrame(b, kFrame, length, 1); }));
        EXPECT_EQ(AviReader().Open(store), AviResult::OtherFrameLayout) << length;
    }
    MemoryStore mixed(MakeAvi(odd, [](RiffBlock& b) {
        PutFrame(b, kFrame, 27, 1);
        PutFrame(b, kFrame, 48, 1);
    }));
    EXPECT_EQ(AviReader().Open(mixed), AviResult::OtherFrameLayout);
}

// A file that is cut off anywhere gives the frames before that, and nothing else.
TEST(AviReader, CutOffAtEveryByte) {
    MemoryStore whole;
    AviWriter writer(whole, {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 4, 2}, {25, 1},
                     {1000, 4});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    for (int n = 0; n < 40; ++n) {
        ASSERT_EQ(writer.WriteFrame(std::vector<std::byte>(16, static_cast<std::byte>(n))),
                  IoResult::Ok);
    }
    ASSERT_EQ(writer.Finish(), IoResult::Ok);
    uint32_t before = 0;
    for (size_t length = 0; length < whole.bytes.size(); ++length) {
        MemoryStore store(
            std::vector(whole.bytes.begin(), whole.bytes.begin() + static_cast<ptrdiff_t>(length)));
        AviReader reader;
        const AviResult result = reader.Open(store);
        if (result != AviResult::Ok) {
            ASSERT_EQ(before, 0u);
            continue;
        }
        ASSERT_GE(reader.FrameCount(), before);
        before = reader.FrameCount();
        std::vector<std::byte> frame(16);
        ASSERT_EQ(reader.ReadFrame(before - 1, frame), IoResult::Ok);
        ASSERT_EQ(frame[0], static_cast<std::byte>(before - 1));
    }
    EXPECT_EQ(before, 40u);
}

// As an interrupted writer leaves it.
TEST(AviReader, UnfinishedFile) {
    MemoryStore store;
    AviWriter writer(store, {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 4, 2}, {24, 1});
    ASSERT_EQ(writer.Begin(), IoResult::Ok);
    for (int n = 0; n < 5; ++n) {
        ASSERT_EQ(writer.WriteFrame(std::vector<std::byte>(16)), IoResult::Ok);
    }
    AviReader reader;
    ASSERT_EQ(reader.Open(store), AviResult::Ok);
    EXPECT_EQ(reader.FrameCount(), 5u);
    EXPECT_EQ(reader.Rate(), (FrameRate{24, 1}));
    EXPECT_TRUE(reader.IsTruncated());
}

TEST(AviReader, RandomDamageIsSurvived) {
    const std::vector<std::byte> sound = MakeAvi({}, [](RiffBlock& b) {
        for (uint32_t n = 0; n < 8; ++n) PutFrame(b, kFrame, kFrameBytes, n);
    });
    std::mt19937 random(1);
    int opened = 0;
    for (int round = 0; round < 20000; ++round) {
        MemoryStore store(sound);
        const int hits = 1 + static_cast<int>(random() % 8);
        for (int i = 0; i < hits; ++i) {
            constexpr uint32_t kNasty[] = {0, 1, 0x7F, 0x80, 0xFF};
            store.bytes[random() % sound.size()] =
                static_cast<std::byte>(random() % 2 ? kNasty[random() % 5] : random() % 256);
        }
        AviReader reader;
        if (reader.Open(store) != AviResult::Ok) continue;
        ++opened;
        ASSERT_GT(reader.FrameCount(), 0u);
        std::vector<std::byte> frame(reader.FrameBytes());
        for (uint32_t n = 0; n < reader.FrameCount(); ++n) {
            ASSERT_EQ(reader.ReadFrame(n, frame), IoResult::Ok);
        }
    }
    EXPECT_GT(opened, 1000);
}

}  // namespace
}  // namespace tavo
