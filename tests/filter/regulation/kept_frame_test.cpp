// A repeated frame is the kept one, byte for byte, in every format: also when the sink has made
// something else of the buffer that it was given.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/filter/regulation/scenario.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/time_units.h"

using namespace tavo_test;

namespace {

using Bytes = std::vector<BYTE>;

struct Sizes {
    int sourceWidth, sourceHeight, width, height;
};

class KeptFrameTest : public FilterTest {
  protected:
    // Every frame's bytes; each buffer is spoiled once it is read.
    static std::vector<Bytes> Stream(const PixelFormat& format, const Sizes& sizes, int method,
                                     double rate, const std::vector<SampleSpec>& samples) {
        std::vector<Bytes> frames;
        FilterRig rig({.keepBytes = false, .onReceive = [&frames](IMediaSample* sample) {
                           BYTE* data = nullptr;
                           EXPECT_EQ(sample->GetPointer(&data), S_OK);
                           frames.emplace_back(data, data + sample->GetActualDataLength());
                           std::memset(data, 0xEE, static_cast<size_t>(sample->GetSize()));
                           return S_OK;
                       }});
        rig.settings->SetFrameRate(rate);
        rig.settings->SetScaleMethod(method);
        rig.settings->SetOutputSize(sizes.width, sizes.height);
        EXPECT_EQ(rig.Connect(TypeOf(format, sizes.sourceWidth, sizes.sourceHeight)), S_OK);
        EXPECT_EQ(rig.Start(), S_OK);
        for (const SampleSpec& sample : samples) EXPECT_EQ(rig.Deliver(sample), S_OK);
        return frames;
    }
};

TEST_F(KeptFrameTest, InAllFormats) {
    constexpr Sizes kSizes[] = {{48, 32, 48, 32}, {48, 32, 36, 40}, {48, 32, 48, 20},
                                {48, 32, 64, 32}, {640, 8, 480, 8}, {720, 8, 480, 8}};
    for (const PixelFormat& format : AllFormats()) {
        for (const Sizes& sizes : kSizes) {
            for (const int method :
                 {VantrelMethodAuto, VantrelMethodNearest, VantrelMethodBilinear}) {
                SCOPED_TRACE(testing::Message() << format.name << " " << sizes.sourceWidth << " to "
                                                << sizes.width << ", method " << method);
                std::vector<SampleSpec> samples = {{.start = 0, .stop = 40 * kMs},
                                                   {.start = 200 * kMs, .stop = 240 * kMs},
                                                   {.start = 240 * kMs, .stop = 330 * kMs}};
                for (uint32_t i = 0; i < 3; ++i) {
                    samples[i].bytes =
                        RandomFrame(format, sizes.sourceWidth, sizes.sourceHeight, i + 1);
                }
                const std::vector<Bytes> plain = Stream(format, sizes, method, 0.0, samples);
                ASSERT_EQ(plain.size(), 3u);
                ASSERT_NE(plain[0], plain[1]);
                const std::vector<Bytes> frames = Stream(format, sizes, method, 50.0, samples);
                // The slots of 20 ms up to 330; the samples start in those that end at 200 and 240.
                ASSERT_EQ(frames.size(), 16u);
                for (size_t slot = 0; slot < frames.size(); ++slot) {
                    const size_t picture = slot < 9 ? 0 : slot < 11 ? 1 : 2;
                    ASSERT_EQ(frames[slot], plain[picture]) << "slot " << slot;
                }
            }
        }
    }
}

TEST_F(KeptFrameTest, ATopDownSource) {
    for (const char* name : {"RGB24", "RGB565", "YUY2"}) {
        const PixelFormat format = Format(name);
        const Sizes sizes = {32, -24, 40, 30};
        std::vector<SampleSpec> samples = {
            {.start = 0, .stop = 100 * kMs, .bytes = RandomFrame(format, 32, 24)}};
        const std::vector<Bytes> plain = Stream(format, sizes, VantrelMethodBilinear, 0.0, samples);
        const std::vector<Bytes> frames =
            Stream(format, sizes, VantrelMethodBilinear, 50.0, samples);
        ASSERT_EQ(frames.size(), 4u);
        for (const Bytes& frame : frames) EXPECT_EQ(frame, plain.at(0)) << name;
    }
}

}  // namespace
