// Sizes that formats can hold, and sizes within a box.

#include "host/graph/output_size.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

TEST(OutputSize, RoundedUpToWhatTheFormatHolds) {
    struct Row {
        PixelFormat format;
        PictureSize rounded;  // of 427 x 241
    };
    const Row rows[] = {
        {PixelFormat::YV12, {428, 242}},   {PixelFormat::IYUV, {428, 242}},
        {PixelFormat::YVU9, {428, 244}},   {PixelFormat::YUY2, {428, 241}},
        {PixelFormat::YUYV, {428, 241}},   {PixelFormat::YVYU, {428, 241}},
        {PixelFormat::UYVY, {428, 241}},   {PixelFormat::RGB24, {427, 241}},
        {PixelFormat::RGB555, {427, 241}}, {PixelFormat::RGB565, {427, 241}},
        {PixelFormat::Auto, {427, 241}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(RoundedFor(row.format, {427, 241}), row.rounded) << static_cast<int>(row.format);
        EXPECT_EQ(RoundedFor(row.format, {428, 244}), (PictureSize{428, 244}));
    }
    EXPECT_EQ(RoundedFor(PixelFormat::YVU9, {1, 2}), (PictureSize{4, 4}));
    EXPECT_EQ(RoundedFor(PixelFormat::YVU9, {65535, 65533}), (PictureSize{65532, 65532}));
    EXPECT_EQ(RoundedFor(PixelFormat::YV12, {65535, 65534}), (PictureSize{65534, 65534}));
}

TEST(OutputSize, FitKeepsTheShapeAndNeverEnlarges) {
    const AspectRatio square;
    EXPECT_EQ(FitInside({640, 640}, {1920, 1080}, square), (PictureSize{640, 360}));
    EXPECT_EQ(FitInside({640, 200}, {1920, 1080}, square), (PictureSize{356, 200}));
    EXPECT_EQ(FitInside({640, 360}, {1080, 1920}, square), (PictureSize{203, 360}));
    EXPECT_EQ(FitInside({4000, 4000}, {1920, 1080}, square), (PictureSize{1920, 1080}));
    EXPECT_EQ(FitInside({1920, 1080}, {1920, 1080}, square), (PictureSize{1920, 1080}));
    EXPECT_EQ(FitInside({1, 1}, {1920, 1080}, square), (PictureSize{1, 1}));
    EXPECT_EQ(FitInside({100, 100}, {65535, 1}, square), (PictureSize{100, 1}));
    // A wide picture with narrow rows is shown 1024 wide.
    EXPECT_EQ(FitInside({512, 512}, {720, 576}, {64, 45}), (PictureSize{512, 288}));
    EXPECT_EQ(FitInside({1024, 576}, {720, 576}, {64, 45}), (PictureSize{720, 576}));
}

TEST(OutputSize, NeverBeyondTheBox) {
    for (int width = 1; width < 200; ++width) {
        for (int height = 1; height < 200; height += 7) {
            const PictureSize size = FitInside({64, 48}, {width, height}, {});
            ASSERT_LE(size.width, 64);
            ASSERT_LE(size.height, 48);
            ASSERT_GE(size.width, 1);
            ASSERT_GE(size.height, 1);
        }
    }
}

TEST(OutputSize, SidesThatStayAreLeftToTheFilter) {
    RunOptions options;
    SizeChoice choice = ChooseSize(options, PixelFormat::YV12, {320, 240}, {});
    EXPECT_EQ(choice.setting, (PictureSize{0, 0}));
    EXPECT_EQ(choice.wanted, (PictureSize{320, 240}));
    EXPECT_EQ(choice.rounded, (PictureSize{320, 240}));

    choice = ChooseSize(options, PixelFormat::YV12, {321, 240}, {});
    EXPECT_EQ(choice.setting, (PictureSize{322, 0}));
    EXPECT_EQ(choice.wanted, (PictureSize{321, 240}));

    options.width = 101;
    choice = ChooseSize(options, PixelFormat::YVU9, {320, 242}, {});
    EXPECT_EQ(choice.setting, (PictureSize{104, 244}));
    EXPECT_EQ(choice.wanted, (PictureSize{101, 242}));
    EXPECT_EQ(choice.rounded, (PictureSize{104, 244}));

    options.fit = true;
    options.height = 101;
    choice = ChooseSize(options, PixelFormat::YUY2, {640, 480}, {});
    EXPECT_EQ(choice.wanted, (PictureSize{101, 76}));
    EXPECT_EQ(choice.setting, (PictureSize{100, 76}));
    choice = ChooseSize(options, PixelFormat::YV12, {640, 300}, {});
    EXPECT_EQ(choice.wanted, (PictureSize{101, 47}));
    EXPECT_EQ(choice.setting, (PictureSize{100, 48}));
    options.width = 1;
    EXPECT_EQ(ChooseSize(options, PixelFormat::YVU9, {640, 640}, {}).setting, (PictureSize{4, 4}));
}

TEST(OutputSize, AspectRatios) {
    EXPECT_EQ(DisplayAspect({720, 576}, {64, 45}), (AspectRatio{16, 9}));
    EXPECT_EQ(DisplayAspect({720, 576}, {16, 15}), (AspectRatio{4, 3}));
    EXPECT_EQ(DisplayAspect({640, 480}, {1, 1}), (AspectRatio{4, 3}));
    EXPECT_FALSE(DisplayAspect({720, 576}, {}).IsKnown());
    EXPECT_FALSE(Reduced(0, 5).IsKnown());
    EXPECT_EQ(Reduced(131070, 2), (AspectRatio{65535, 1}));
    const AspectRatio large = Reduced(4000000007, 3000000019);
    EXPECT_LE(large.x, 65535u);
    EXPECT_NEAR(static_cast<double>(large.x) / large.y, 4.0 / 3.0, 1e-3);
}

}  // namespace
}  // namespace tavo
