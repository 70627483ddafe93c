// Frames at irregular times through vantrel.exe: the file lasts as long as the input.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/host/avi/movie_files.h"
#include "tests/host/avi/written_frames.h"
#include "tests/host/cli/run_program.h"

namespace tavo {
namespace {

using tavo_test::Contains;
using tavo_test::Frame;
using tavo_test::Movie;
using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::ReadMovie;
using tavo_test::RunVantrel;
using tavo_test::WriteMovie;

class VantrelTiming : public tavo_test::MovieTest {
  protected:
    // 15 frames per second, some repeated. The platform delivers each once, with its time.
    void SetUp() override {
        MovieTest::SetUp();
        frames_ = NoiseFrames(video_, 30);
        for (uint32_t n = 0; n < 30; ++n) repeats_.push_back(n * n % 5);
        repeats_.back() = 0;
        for (const uint32_t repeats : repeats_) slots_ += 1 + repeats;
        WriteMovie(Path(L"in.avi"), video_, frames_, {15, 1}, repeats_);
    }

    const VideoFormat video_ = {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 64, 48};
    std::vector<Frame> frames_;
    std::vector<uint32_t> repeats_;
    uint32_t slots_ = 0;
};

TEST_F(VantrelTiming, IrregularTimesAreKept) {
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi")});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    const Movie movie = ReadMovie(Path(L"out.avi"));
    ASSERT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.frames, frames_);
    EXPECT_EQ(movie.avi.rate, 15u);
    EXPECT_EQ(movie.avi.scale, 1u);
    EXPECT_EQ(movie.avi.repeats, repeats_);
    EXPECT_EQ(movie.avi.streamFrames, slots_);
    const std::string counts = "30 in, " + std::to_string(slots_) + " out, 0 dropped, " +
                               std::to_string(slots_ - 30) + " repeated";
    EXPECT_TRUE(Contains(run.out, counts.c_str())) << run.out;
    EXPECT_TRUE(Contains(run.out, "66.667 to 333.333 ms apart")) << run.out;
    EXPECT_TRUE(Contains(run.out, "the file has 15 fps and shows them for as long")) << run.out;
}

TEST_F(VantrelTiming, AsIsIsFrameForFrame) {
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--as-is"});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    const Movie movie = ReadMovie(Path(L"out.avi"));
    ASSERT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.frames, frames_);
    EXPECT_EQ(movie.avi.repeats, std::vector<uint32_t>(30));
    EXPECT_EQ(movie.avi.rate, 15u);
    EXPECT_TRUE(Contains(run.out, "30 in, 30 out, 0 dropped, 0 repeated")) << run.out;
    EXPECT_TRUE(Contains(run.out, "one after the other at 15 fps")) << run.out;
}

TEST_F(VantrelTiming, AFixedRateHasWholeFrames) {
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--fps", L"15"});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    const Movie movie = ReadMovie(Path(L"out.avi"));
    ASSERT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.avi.repeats, std::vector<uint32_t>(movie.frames.size()));
    EXPECT_NEAR(static_cast<double>(movie.frames.size()), slots_, 2.0);
    EXPECT_FALSE(Contains(run.out, "as long as they last")) << run.out;
}

TEST_F(VantrelTiming, SteadyTimesGetNoNote) {
    WriteMovie(Path(L"in.avi"), video_, frames_, {30000, 1001});
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi")});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    const Movie movie = ReadMovie(Path(L"out.avi"));
    EXPECT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.avi.rate, 30000u);
    EXPECT_EQ(movie.avi.repeats, std::vector<uint32_t>(30));
    EXPECT_FALSE(Contains(run.out, "Note")) << run.out;
}

// Frame numbers, by their bytes.
std::vector<size_t> NumbersOf(const std::vector<Frame>& frames, const std::vector<Frame>& among) {
    std::vector<size_t> numbers;
    for (const Frame& frame : frames) {
        numbers.push_back(static_cast<size_t>(std::ranges::find(among, frame) - among.begin()));
    }
    return numbers;
}

std::vector<size_t> Range(size_t begin, size_t end) {
    std::vector<size_t> numbers;
    for (size_t n = begin; n < end; ++n) numbers.push_back(n);
    return numbers;
}

// Read by the program itself, and by the platform, which seeks.
TEST_F(VantrelTiming, SectionsAreExactToTheFrame) {
    const struct {
        PixelFormat format;
        const wchar_t* start;
        const wchar_t* duration;
        std::vector<size_t> frames;
    } rows[] = {{PixelFormat::YVYU, L"3", L"0.2", Range(75, 80)},
                {PixelFormat::YUY2, L"0", L"0.08", Range(0, 2)},
                {PixelFormat::YUY2, L"2.9600001", L"0.0400001", Range(75, 76)},
                {PixelFormat::YUY2, L"0:00:03.5", L"10", Range(88, 100)}};
    std::vector<Frame> frames;
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << NameOf(row.format) << " from " << row.start);
        const VideoFormat video = tavo_test::Video(row.format, 32, 16);
        frames = NoiseFrames(video, 100);
        WriteMovie(Path(L"in.avi"), video, frames, {25, 1});
        const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite",
                                       L"--start", row.start, L"--duration", row.duration});
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        EXPECT_EQ(NumbersOf(ReadMovie(Path(L"out.avi")).frames, frames), row.frames);
    }
    // The slots of a fixed rate begin with the section.
    Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--start", L"2.4",
                             L"--duration", L"0.4", L"--fps", L"50"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_TRUE(Contains(run.out, "10 in, 19 out, 0 dropped, 9 repeated")) << run.out;
    std::vector<size_t> slots;
    for (size_t n = 0; n < 19; ++n) slots.push_back(60 + (n + 1) / 2);
    EXPECT_EQ(NumbersOf(ReadMovie(Path(L"out.avi")).frames, frames), slots);
    for (const wchar_t* option : {L"--graph", L"--dry-run"}) {
        run = RunVantrel({Path(L"in.avi"), Path(L"none.avi"), L"--start", L"4", L"--log",
                          Path(L"none.csv"), option});
        EXPECT_EQ(run.exitCode, 1u);
        EXPECT_TRUE(Contains(run.error, "starts in that section")) << run.error;
        EXPECT_FALSE(std::filesystem::exists(Path(L"none.avi")));
        EXPECT_FALSE(std::filesystem::exists(Path(L"none.csv")));
    }
}

TEST_F(VantrelTiming, PixelsThatAreNotSquareStaySo) {
    WriteMovie(Path(L"in.avi"), video_, frames_, {25, 1}, std::vector<uint32_t>(30), {16, 9});
    Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--size", L"32x48"});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    Movie movie = ReadMovie(Path(L"out.avi"));
    EXPECT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.avi.displayAspect, 16u << 16 | 9u);
    EXPECT_TRUE(Contains(run.out, "show 16:9")) << run.out;
    // A picture that fits a box has square pixels.
    run = RunVantrel({Path(L"in.avi"), Path(L"fit.avi"), L"--fit", L"32x32"});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    movie = ReadMovie(Path(L"fit.avi"));
    EXPECT_EQ(movie.avi.width, 32);
    EXPECT_EQ(movie.avi.height, 18);
    EXPECT_EQ(movie.avi.displayAspect, 0u);
    EXPECT_FALSE(Contains(run.out, "not square")) << run.out;
}

}  // namespace
}  // namespace tavo
