// Whole frames of every format and every small size, in buffers that end, or begin, at a page that
// cannot be touched. The sanitizers watch everything else.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "picture/conversion.h"
#include "resample/kernel_table.h"
#include "tests/picture/support/expected_pixels.h"
#include "tests/picture/support/known_format.h"
#include "tests/support/guarded_buffer.h"

using namespace tavo;
using tavo::test::BufferGuard;
using tavo::test::GuardedBuffer;
using tavo_test::AllFormats;
using tavo_test::KnownFormat;
using tavo_test::Layout;
using tavo_test::PixelFormat;

namespace {

constexpr int kMethods[] = {0, 1, 2, 5, 6, 7, 10, 11, 12};
constexpr int kMostPixels = 65;

Picture PictureOf(const PixelFormat& format, int width, int height,
                  PlaneLayout layout = PlaneLayout::Tight) {
    return {KnownFormat(format), width, height, format.bits, layout};
}

// A conversion in buffers of exactly the bytes that the pictures have.
class ExactFrames {
  public:
    // False for sizes that the filter refuses.
    bool Scale(const Picture& source, const Picture& output, int method, BufferGuard guard) {
        if (!IsUsablePicture(source) || !IsUsableOutput(output)) return false;
        tavo::test::SetCurrentTrial(Describe(source, output, method).c_str());
        const auto conversion = Conversion::Build(source, output);
        EXPECT_TRUE(conversion);
        const auto bytesIn = static_cast<size_t>(KernelBytes(source));
        const auto bytesOut = static_cast<size_t>(KernelBytes(output));
        FrameSpan from = {source_.Place(bytesIn, guard, 0), bytesIn};
        FrameSpan to = {output_.Place(bytesOut, guard, 0), bytesOut};
        given_ = tavo_test::RandomBytes(static_cast<int64_t>(bytesIn), ++seed_ % 64);
        std::memcpy(from.data, given_.data(), bytesIn);
        EXPECT_TRUE(conversion->Scale(to, from, method));
        EXPECT_EQ(std::memcmp(from.data, given_.data(), bytesIn), 0) << "the source was written";
        EXPECT_TRUE(source_.Intact() && output_.Intact());
        result_.assign(to.data, to.data + to.size);
        return true;
    }

    const std::vector<uint8_t>& Given() const { return given_; }
    const std::vector<uint8_t>& Result() const { return result_; }

  private:
    static std::string Describe(const Picture& source, const Picture& output, int method) {
        return "setting " + std::to_string(source.format->setting) + ": " +
               std::to_string(source.width) + "x" + std::to_string(source.height) + " to " +
               std::to_string(output.width) + "x" + std::to_string(output.height) + ", method " +
               std::to_string(method);
    }

    GuardedBuffer source_;
    GuardedBuffer output_;
    std::vector<uint8_t> given_;
    std::vector<uint8_t> result_;
    uint32_t seed_ = 0;
};

class ConversionSafetyTest : public testing::Test {
  protected:
    ConversionSafetyTest() { FillKernelTable(); }

    // The method and the guarded side take turns.
    bool ScaleNext(const Picture& source, const Picture& output) {
        const int turn = turn_++;
        return frames.Scale(source, output, kMethods[turn % 9],
                            turn / 9 % 2 == 0 ? BufferGuard::kPageAfter : BufferGuard::kPageBefore);
    }

    ExactFrames frames;

  private:
    int turn_ = 0;
};

TEST_F(ConversionSafetyTest, EveryFormatAndSizeOnEveryAxis) {
    int scaled = 0;
    for (const PixelFormat& format : AllFormats()) {
        for (int from = 1; from <= kMostPixels; ++from) {
            for (int to = 1; to <= kMostPixels; ++to) {
                const int fixed = 1 + (from + to) % kMostPixels;
                const int even = fixed + fixed % 2;
                scaled += ScaleNext(PictureOf(format, from, fixed), PictureOf(format, to, fixed));
                scaled += ScaleNext(PictureOf(format, even, from), PictureOf(format, even, to));
                scaled += ScaleNext(PictureOf(format, from, to), PictureOf(format, to, from));
                scaled += ScaleNext(PictureOf(format, from, -fixed), PictureOf(format, to, -to));
                if (HasFailure()) return;
            }
        }
    }
    EXPECT_GT(scaled, 140'000);
}

TEST_F(ConversionSafetyTest, PaddedSourcesOfEverySize) {
    int scaled = 0;
    for (const PixelFormat& format : tavo_test::PlanarFormats()) {
        for (int from = 1; from <= kMostPixels; ++from) {
            for (int to = 1; to <= kMostPixels; ++to) {
                const Picture source = PictureOf(format, from, to, PlaneLayout::Padded);
                scaled += ScaleNext(source, PictureOf(format, to, from));
                scaled += ScaleNext(source, PictureOf(format, from, to));
                if (HasFailure()) return;
            }
        }
    }
    EXPECT_GT(scaled, 30'000);
}

TEST_F(ConversionSafetyTest, SameSizesAndTheFixedRatios) {
    for (const PixelFormat& format : AllFormats()) {
        for (const int method : kMethods) {
            for (const BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
                for (int size = 1; size <= kMostPixels; ++size) {
                    const Picture picture = PictureOf(format, size, kMostPixels - size + 1);
                    frames.Scale(picture, picture, method, guard);
                }
                for (const int width : {640, 720}) {
                    for (const int height : {2, 5, 7}) {
                        frames.Scale(PictureOf(format, width, height),
                                     PictureOf(format, 480, height), method, guard);
                    }
                }
                if (HasFailure()) return;
            }
        }
    }
}

// What is read is read from the right place.
TEST_F(ConversionSafetyTest, NearestNeighbourGivesThePixelsOfTheFormula) {
    for (const PixelFormat& format : AllFormats()) {
        const int step = format.layout == Layout::kRgb ? 1 : 1 << format.chromaShift;
        const int even = format.layout == Layout::kPacked ? 2 : step;
        for (int from = even; from <= kMostPixels; from += even) {
            for (int to = even; to <= kMostPixels; to += 3 * even) {
                if (from == to) continue;
                const Picture source = PictureOf(format, from, to);
                const Picture output = PictureOf(format, to, from);
                ASSERT_TRUE(frames.Scale(source, output, 5, BufferGuard::kPageAfter));
                std::vector<uint8_t> result = frames.Result();
                result.resize(static_cast<size_t>(tavo_test::RuleFrameBytes(format, to, from)));
                std::vector<uint8_t> given = frames.Given();
                given.resize(static_cast<size_t>(tavo_test::RuleFrameBytes(format, from, to)));
                const tavo_test::Expected want =
                    tavo_test::NearestFrame(format, given, {from, to}, {to, from});
                ASSERT_TRUE(Matches(want, result)) << format.name << " " << from << " to " << to;
            }
        }
    }
}

}  // namespace
