// Outputs whose rows lie at a pitch: the pixels are those of the same picture without one, bytes
// between the rows stay, and buffers end, or begin, at a page that cannot be touched.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "picture/conversion.h"
#include "resample/kernel_table.h"
#include "tests/picture/support/known_format.h"
#include "tests/picture/support/methods.h"
#include "tests/picture/support/pitched_rows.h"
#include "tests/support/guarded_buffer.h"

using namespace tavo;
using tavo::test::BufferGuard;
using tavo::test::GuardedBuffer;
using tavo_test::AllFormats;
using tavo_test::kMethods;
using tavo_test::KnownFormat;
using tavo_test::Layout;
using tavo_test::PitchedRows;
using tavo_test::PixelFormat;
using tavo_test::RowsAtPitch;
using tavo_test::RuleFrameBytes;

namespace {

constexpr uint8_t kBetween = 0xEE;

// What an unpitched frame is in rows at a pitch.
std::vector<uint8_t> AtPitch(const PixelFormat& format, int width, int height, int pitch,
                             const std::vector<uint8_t>& frame) {
    const std::vector<PitchedRows> to = RowsAtPitch(format, width, height, pitch);
    const PitchedRows& last = to.back();
    std::vector<uint8_t> pitched(static_cast<size_t>(last.At(last.count - 1) + last.bytes),
                                 kBetween);
    CopyRows(pitched.data(), to, frame.data(), RowsAtPitch(format, width, height, width));
    return pitched;
}

class PitchedOutputTest : public testing::Test {
  protected:
    PitchedOutputTest() : random_(tavo_test::RandomBytes(1 << 16, 1)) { FillKernelTable(); }

    // By every method, at pitches of `more` pixels above the width. The number of frames.
    int ScaleByAll(const Picture& source, Picture output, const PixelFormat& format, int more) {
        if (!IsUsablePicture(source) || !IsUsableOutput(output)) return 0;
        const std::unique_ptr<Conversion> plain = Conversion::Build(source, output);
        output.pitch = output.width + more;
        EXPECT_TRUE(IsUsableOutput(output));
        const std::unique_ptr<Conversion> pitched = Conversion::Build(source, output);
        const int height = std::abs(output.height);
        EXPECT_EQ(pitched->OutputFrameBytes(),
                  static_cast<size_t>(RuleFrameBytes(format, output.pitch, height)));
        // Slack for what a kernel spills, so that it goes the same way as anywhere.
        std::vector<uint8_t> frame(plain->OutputPictureBytes() + 8);
        for (const int method : kMethods) {
            const std::string what = Describe(*pitched, method);
            tavo::test::SetCurrentTrial(what.c_str());
            const std::vector<uint8_t> given = Given(source);
            EXPECT_TRUE(plain->Scale({frame.data(), frame.size()}, Source(given), method));
            const std::vector<uint8_t> want =
                AtPitch(format, output.width, height, output.pitch, frame);
            EXPECT_EQ(want.size(), pitched->OutputPictureBytes()) << what;
            const FrameSpan to = {buffer_.Place(want.size(), NextGuard(), kBetween), want.size()};
            EXPECT_TRUE(pitched->Scale(to, Source(given), method)) << what;
            EXPECT_TRUE(std::equal(want.begin(), want.end(), to.data)) << what;
            EXPECT_TRUE(buffer_.Intact()) << what;
            CheckCopy(*pitched, want, what);
            if (HasFailure()) return 0;
        }
        EXPECT_FALSE(pitched->Scale({buffer_.data(), pitched->OutputPictureBytes() - 1},
                                    Source(Given(source)), 0));
        return static_cast<int>(std::size(kMethods));
    }

    static Picture PictureOf(const PixelFormat& format, int width, int height) {
        return {KnownFormat(format), width, height, format.bits};
    }

  private:
    // A kept frame goes back to where it came from, and nothing beside it.
    void CheckCopy(const Conversion& conversion, const std::vector<uint8_t>& frame,
                   const std::string& what) {
        const FrameSpan kept = conversion.WorkBuffer();
        std::memset(kept.data, 0, kept.size);
        conversion.CopyOutput(kept, {buffer_.data(), frame.size()});
        uint8_t* const data = copy_.Place(frame.size(), NextGuard(), kBetween);
        conversion.CopyOutput({data, frame.size()}, kept);
        EXPECT_TRUE(std::equal(frame.begin(), frame.end(), data)) << what;
        EXPECT_TRUE(copy_.Intact()) << what;
    }

    std::vector<uint8_t> Given(const Picture& source) {
        const auto bytes = static_cast<ptrdiff_t>(KernelBytes(source));
        const auto begin = random_.begin() + ++turn_ % 256;
        return {begin, begin + bytes};
    }
    FrameSpan Source(const std::vector<uint8_t>& given) {
        uint8_t* const data = source_.Place(given.size(), BufferGuard::kPageAfter, 0);
        std::memcpy(data, given.data(), given.size());
        return {data, given.size()};
    }
    BufferGuard NextGuard() {
        return ++turn_ % 2 == 0 ? BufferGuard::kPageAfter : BufferGuard::kPageBefore;
    }

    static std::string Describe(const Conversion& conversion, int method) {
        const Picture& source = conversion.Source();
        const Picture& output = conversion.Output();
        return "setting " + std::to_string(source.format->setting) + ": " +
               std::to_string(source.width) + "x" + std::to_string(source.height) + " to " +
               std::to_string(output.width) + "x" + std::to_string(output.height) + ", pitch " +
               std::to_string(output.pitch) + ", method " + std::to_string(method);
    }

    const std::vector<uint8_t> random_;
    GuardedBuffer source_;
    GuardedBuffer buffer_;
    GuardedBuffer copy_;
    int turn_ = 0;
};

TEST_F(PitchedOutputTest, EveryFormatOnEveryAxis) {
    constexpr int kSizes[] = {1, 2, 3, 6, 9, 16, 31, 34, 66};
    int frames = 0;
    for (const PixelFormat& format : AllFormats()) {
        for (const int from : kSizes) {
            for (const int to : kSizes) {
                const int more = 1 + (from * 7 + to) % 18;
                const int sign = format.keepsHeightSign ? -1 : 1;
                for (const auto& [source, output] :
                     {std::pair{PictureOf(format, from, 10), PictureOf(format, to, 10)},
                      std::pair{PictureOf(format, to, from), PictureOf(format, to, to)},
                      std::pair{PictureOf(format, from, to), PictureOf(format, to, from)},
                      std::pair{PictureOf(format, from, to), PictureOf(format, to, sign * from)},
                      std::pair{PictureOf(format, from, to), PictureOf(format, from, sign * to)},
                      std::pair{PictureOf(format, from, -to), PictureOf(format, from, to)}}) {
                    frames += ScaleByAll(source, output, format, more);
                    if (HasFailure()) return;
                }
            }
        }
    }
    EXPECT_GT(frames, 30'000);
}

// One of the kernels for these writes past its rows.
TEST_F(PitchedOutputTest, TheFixedRatios) {
    for (const PixelFormat& format : AllFormats()) {
        for (const int width : {640, 720}) {
            for (const int height : {2, 5, format.keepsHeightSign ? -7 : 7}) {
                for (const int more : {1, 32}) {
                    EXPECT_GT(ScaleByAll(PictureOf(format, width, std::abs(height)),
                                         PictureOf(format, 480, height), format, more),
                              0);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_F(PitchedOutputTest, APitchThatNoFrameCanHaveIsUnusable) {
    for (const PixelFormat& format : AllFormats()) {
        Picture picture = PictureOf(format, 64, 48);
        for (const int32_t pitch : {INT32_MAX, INT32_MAX - 3, 1 << 30, 1 << 27}) {
            picture.pitch = pitch;
            EXPECT_FALSE(IsUsableOutput(picture)) << pitch;
        }
        for (const int32_t pitch : {INT32_MIN, -1, 0, 1, 64}) {
            picture.pitch = pitch;
            EXPECT_FALSE(IsPitched(picture)) << pitch;
            EXPECT_EQ(KernelBytes(picture), KernelBytes(PictureOf(format, 64, 48)));
        }
    }
}

}  // namespace
