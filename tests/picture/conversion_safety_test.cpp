// Whole frames of every format and every small size, in buffers that end, or begin, at a page that
// cannot be touched. The sanitizers watch everything else.
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "picture/conversion.h"
#include "resample/kernel_table.h"
#include "tests/picture/support/expected_pixels.h"
#include "tests/picture/support/known_format.h"
#include "tests/picture/support/methods.h"
#include "tests/support/guarded_buffer.h"

using namespace tavo;
using tavo::test::BufferGuard;
using tavo::test::GuardedBuffer;
using tavo_test::AllFormats;
using tavo_test::kMethods;
using tavo_test::KnownFormat;
using tavo_test::Layout;
using tavo_test::PixelFormat;

namespace {

constexpr int kMostPixels = 65;

Picture PictureOf(const PixelFormat& format, int width, int height,
                  PlaneLayout layout = PlaneLayout::Tight) {
    return {KnownFormat(format), width, height, format.bits, layout};
}

// Conversions in buffers of exactly the bytes that the pictures have.
class ExactFrames {
  public:
    ExactFrames() : random_(tavo_test::RandomBytes(1 << 16, 1)) {}

    // By every method. 0 for sizes that the filter refuses, else the number of frames.
    int ScaleByAll(const Picture& source, const Picture& output, BufferGuard guard) {
        if (!Begin(source, output, guard)) return 0;
        for (const int method : kMethods) ScaleBy(method);
        EXPECT_TRUE(source_.Intact() && output_.Intact()) << Describe(0);
        return static_cast<int>(std::size(kMethods));
    }

    // By one.
    bool Scale(const Picture& source, const Picture& output, int method, BufferGuard guard) {
        if (!Begin(source, output, guard)) return false;
        ScaleBy(method);
        EXPECT_TRUE(source_.Intact() && output_.Intact()) << Describe(method);
        return true;
    }

    std::vector<uint8_t> Given() const { return {source_.data(), source_.data() + from_.size}; }
    std::vector<uint8_t> Result() const { return {output_.data(), output_.data() + to_.size}; }

  private:
    bool Begin(const Picture& source, const Picture& output, BufferGuard guard) {
        if (!IsUsablePicture(source) || !IsUsableOutput(output)) return false;
        conversion_ = Conversion::Build(source, output);
        EXPECT_TRUE(conversion_);
        from_.size = static_cast<size_t>(KernelBytes(source));
        to_.size = static_cast<size_t>(KernelBytes(output));
        from_.data = source_.Place(from_.size, guard, 0);
        to_.data = output_.Place(to_.size, guard, 0);
        given_ = random_.data() + ++turn_ % 256;
        std::memcpy(from_.data, given_, from_.size);
        return true;
    }

    void ScaleBy(int method) {
        tavo::test::SetCurrentTrial(Describe(method).c_str());
        EXPECT_TRUE(conversion_->Scale(to_, from_, method)) << Describe(method);
        EXPECT_EQ(std::memcmp(from_.data, given_, from_.size), 0)
            << "the source was written: " << Describe(method);
    }

    std::string Describe(int method) const {
        const Picture& source = conversion_->Source();
        const Picture& output = conversion_->Output();
        return "setting " + std::to_string(source.format->setting) + ": " +
               std::to_string(source.width) + "x" + std::to_string(source.height) + " to " +
               std::to_string(output.width) + "x" + std::to_string(output.height) + ", method " +
               std::to_string(method);
    }

    const std::vector<uint8_t> random_;
    std::unique_ptr<Conversion> conversion_;
    GuardedBuffer source_;
    GuardedBuffer output_;
    FrameSpan from_ = {};
    FrameSpan to_ = {};
    const uint8_t* given_ = nullptr;
    unsigned turn_ = 0;
};

class ConversionSafetyTest : public testing::Test {
  protected:
    ConversionSafetyTest() { FillKernelTable(); }

    // The guarded side takes turns.
    int ScaleNext(const Picture& source, const Picture& output) {
        const bool after = ++turn_ % 2 == 0;
        return frames.ScaleByAll(source, output,
                                 after ? BufferGuard::kPageAfter : BufferGuard::kPageBefore);
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
    EXPECT_GT(scaled, 1'300'000);
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
    EXPECT_GT(scaled, 270'000);
}

TEST_F(ConversionSafetyTest, SameSizesAndTheFixedRatios) {
    for (const PixelFormat& format : AllFormats()) {
        for (const BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
            for (int size = 1; size <= kMostPixels; ++size) {
                const Picture picture = PictureOf(format, size, kMostPixels - size + 1);
                frames.ScaleByAll(picture, picture, guard);
            }
            for (const int width : {640, 720}) {
                for (const int height : {2, 5, 7}) {
                    EXPECT_GT(frames.ScaleByAll(PictureOf(format, width, height),
                                                PictureOf(format, 480, height), guard),
                              0);
                }
            }
            if (HasFailure()) return;
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
