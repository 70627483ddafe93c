// Through vantrel.exe: frames of every format in, frames out, compared byte by byte.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "host/avi/riff.h"
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
using tavo_test::Video;
using tavo_test::WriteMovie;

class VantrelFrames : public tavo_test::MovieTest {};

std::vector<VideoFormat> AllVideos(int32_t width, int32_t height) {
    std::vector<VideoFormat> videos;
    for (const PixelFormat format : AllPixelFormats()) {
        videos.push_back(Video(format, width, height));
    }
    videos.push_back({PixelFormat::IYUV, kCompressionI420, width, height});
    return videos;
}

std::string Name(const VideoFormat& video) {
    const std::wstring name = NameOf(video.format);
    return video.compression == kCompressionI420 ? "I420" : std::string(name.begin(), name.end());
}

TEST_F(VantrelFrames, SameSizeIsACopyInEveryFormat) {
    for (const VideoFormat& video : AllVideos(64, 48)) {
        SCOPED_TRACE(Name(video));
        const std::vector<Frame> frames = NoiseFrames(video, 5);
        WriteMovie(Path(L"in put.avi"), video, frames);
        const Output run = RunVantrel({Path(L"in put.avi"), Path(L"out.avi"), L"--overwrite"});
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        EXPECT_TRUE(Contains(run.out, "5 in, 5 out, 0 dropped, 0 repeated")) << run.out;
        const Movie movie = ReadMovie(Path(L"out.avi"));
        ASSERT_EQ(movie.avi.fault, "");
        EXPECT_EQ(movie.avi.width, 64);
        EXPECT_EQ(movie.avi.height, 48);
        EXPECT_EQ(movie.avi.rate, 30000u);
        EXPECT_EQ(movie.avi.scale, 1001u);
        EXPECT_EQ(movie.avi.bitCount, InfoOf(video.format).bitsPerPixel);
        EXPECT_EQ(movie.avi.masks.size(), video.format == PixelFormat::RGB565 ? 3u : 0u);
        EXPECT_EQ(movie.frames, frames);
    }
}

TEST_F(VantrelFrames, FormatOptionTakesTheFilesOwnFormat) {
    for (const PixelFormat format : AllPixelFormats()) {
        SCOPED_TRACE(Name(Video(format, 32, 16)));
        const VideoFormat video = Video(format, 32, 16);
        const std::vector<Frame> frames = NoiseFrames(video, 2);
        WriteMovie(Path(L"in.avi"), video, frames);
        const Output run = RunVantrel(
            {Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--format", NameOf(format)});
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        EXPECT_EQ(ReadMovie(Path(L"out.avi")).frames, frames);
    }
}

TEST_F(VantrelFrames, BothKindsOfFormatBlock) {
    const VideoFormat video = Video(PixelFormat::YVYU, 32, 16);
    const std::vector<Frame> frames = NoiseFrames(video, 2);
    WriteMovie(Path(L"in.avi"), video, frames);
    for (const wchar_t* type : {L"MPEG1", L"MPEG2"}) {
        const Output run = RunVantrel(
            {Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--type", type, L"--graph"});
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        EXPECT_EQ(Contains(run.out, "(VideoInfo2)"), type == std::wstring(L"MPEG2")) << run.out;
        EXPECT_EQ(ReadMovie(Path(L"out.avi")).frames, frames);
    }
}

// Top-down files come out bottom-up, with the same picture.
TEST_F(VantrelFrames, TopDownRgbIsTurnedOver) {
    for (const PixelFormat format :
         {PixelFormat::RGB24, PixelFormat::RGB555, PixelFormat::RGB565}) {
        const VideoFormat video = Video(format, 16, -8);
        SCOPED_TRACE(Name(video));
        std::vector<Frame> frames = NoiseFrames(video, 2);
        WriteMovie(Path(L"in.avi"), video, frames);
        const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite"});
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        const Movie movie = ReadMovie(Path(L"out.avi"));
        EXPECT_EQ(movie.avi.height, 8);
        for (Frame& frame : frames) FlipRows(frame, RowStride(format, 16));
        EXPECT_EQ(movie.frames, frames);
    }
}

// Sizes that a format cannot hold are rounded up; the platform can read the result.
TEST_F(VantrelFrames, SizesAreRoundedToWhatTheFormatHolds) {
    struct Row {
        PixelFormat format;
        const wchar_t* size;
        const char* said;
        int width;
        int height;
    };
    const Row rows[] = {
        {PixelFormat::YV12, L"51x37", "52 x 38 and not 51 x 37", 52, 38},
        {PixelFormat::IYUV, L"51x0", "52 x 48 and not 51 x 48", 52, 48},
        {PixelFormat::YVU9, L"50x37", "52 x 40 and not 50 x 37", 52, 40},
        {PixelFormat::YUY2, L"51x37", "52 x 37 and not 51 x 37", 52, 37},
        {PixelFormat::YVYU, L"51x37", "52 x 37 and not 51 x 37", 52, 37},
        {PixelFormat::RGB24, L"51x37", nullptr, 51, 37},
        {PixelFormat::RGB565, L"51x37", nullptr, 51, 37},
    };
    for (const Row& row : rows) {
        const VideoFormat video = Video(row.format, 64, 48);
        SCOPED_TRACE(Name(video));
        WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 2));
        const Output run =
            RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--size", row.size});
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        const Movie movie = ReadMovie(Path(L"out.avi"));
        EXPECT_EQ(movie.avi.fault, "");
        EXPECT_EQ(movie.avi.width, row.width);
        EXPECT_EQ(movie.avi.height, row.height);
        EXPECT_EQ(movie.frames.size(), 2u);
        const char* const said = row.said != nullptr ? row.said : " and not ";
        EXPECT_EQ(Contains(run.out, said), row.said != nullptr) << run.out;
    }
}

TEST_F(VantrelFrames, FitKeepsTheShape) {
    const VideoFormat video = Video(PixelFormat::RGB565, 160, 60);
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 2));
    const std::pair<const wchar_t*, std::pair<int, int>> rows[] = {{L"80x80", {80, 30}},
                                                                   {L"200x15", {40, 15}},
                                                                   {L"640x480", {160, 60}},
                                                                   {L"80x0", {80, 30}},
                                                                   {L"0x15", {40, 15}}};
    for (const auto& [box, size] : rows) {
        const Output run =
            RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--fit", box});
        EXPECT_EQ(run.exitCode, 0u) << run.error;
        const Movie movie = ReadMovie(Path(L"out.avi"));
        EXPECT_EQ(movie.avi.width, size.first) << box;
        EXPECT_EQ(movie.avi.height, size.second) << box;
    }
}

// Nearest neighbour of one plane: the sample at the truncated position. Every product is rounded to
// double, also on x87.
uint32_t Position(uint32_t index, uint32_t from, uint32_t to) {
    const volatile double step = static_cast<double>(from) / to;
    const volatile double position = index * step;
    return static_cast<uint32_t>(position);
}

void NearestPlane(const std::byte* source, uint32_t width, uint32_t height, uint32_t newWidth,
                  uint32_t newHeight, Frame& result) {
    for (uint32_t y = 0; y < newHeight; ++y) {
        for (uint32_t x = 0; x < newWidth; ++x) {
            const size_t row = Position(y, height, newHeight);
            result.push_back(source[row * width + Position(x, width, newWidth)]);
        }
    }
}

Frame NearestFrame(const Frame& frame, const VideoFormat& from, const VideoFormat& to) {
    const uint32_t shift = InfoOf(from.format).chromaShift;
    const std::byte* plane = frame.data();
    Frame result;
    for (const uint32_t s : {0u, shift, shift}) {
        const uint32_t width = static_cast<uint32_t>(from.width) >> s;
        const uint32_t height = static_cast<uint32_t>(from.height) >> s;
        NearestPlane(plane, width, height, static_cast<uint32_t>(to.width) >> s,
                     static_cast<uint32_t>(to.height) >> s, result);
        plane += size_t{width} * height;
    }
    return result;
}

TEST_F(VantrelFrames, PlanarFormatsAreScaledByNearestNeighbour) {
    const VideoFormat sources[] = {Video(PixelFormat::YV12, 64, 48),
                                   Video(PixelFormat::IYUV, 64, 48),
                                   Video(PixelFormat::YVU9, 64, 48),
                                   {PixelFormat::IYUV, kCompressionI420, 64, 48}};
    for (const VideoFormat& video : sources) {
        SCOPED_TRACE(Name(video));
        const std::vector<Frame> frames = NoiseFrames(video, 3);
        WriteMovie(Path(L"in.avi"), video, frames);
        for (const wchar_t* size : {L"96x72", L"32x24", L"128x24", L"40x64"}) {
            SCOPED_TRACE(testing::Message() << size);
            const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite",
                                           L"--size", size, L"--method", L"nearest"});
            ASSERT_EQ(run.exitCode, 0u) << run.error;
            const Movie movie = ReadMovie(Path(L"out.avi"));
            ASSERT_EQ(movie.avi.fault, "");
            VideoFormat target = video;
            target.width = movie.avi.width;
            target.height = movie.avi.height;
            EXPECT_EQ(std::to_wstring(target.width) + L"x" + std::to_wstring(target.height), size);
            ASSERT_EQ(movie.frames.size(), frames.size());
            for (size_t n = 0; n < frames.size(); ++n) {
                EXPECT_EQ(movie.frames[n], NearestFrame(frames[n], video, target)) << n;
            }
        }
    }
}

// The filter has a setting for IYUV and none for I420; their pictures are the same.
TEST_F(VantrelFrames, IyuvAndI420AreTakenByEitherName) {
    for (const uint32_t compression : {FourCc('I', 'Y', 'U', 'V'), kCompressionI420}) {
        const VideoFormat video = {PixelFormat::IYUV, compression, 64, 48};
        SCOPED_TRACE(Name(video));
        const std::vector<Frame> frames = NoiseFrames(video, 2);
        WriteMovie(Path(L"in.avi"), video, frames);
        for (const wchar_t* name : {L"IYUV", L"I420"}) {
            SCOPED_TRACE(testing::Message() << name);
            const Output run =
                RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--format", name});
            ASSERT_EQ(run.exitCode, 0u) << run.error;
            EXPECT_EQ(ReadMovie(Path(L"out.avi")).frames, frames);
        }
    }
    const VideoFormat other = Video(PixelFormat::YUY2, 64, 48);
    WriteMovie(Path(L"in.avi"), other, NoiseFrames(other, 2));
    const Output run =
        RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--format", L"I420"});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_NE(run.error.find("gives video YUY2"), std::string::npos) << run.error;
}

// How often the text is in the file.
size_t CountLines(const std::filesystem::path& path, const std::string& part) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(VantrelFrames, RegulatorRepeatsAndDrops) {
    const VideoFormat video = Video(PixelFormat::YVYU, 32, 16);
    const std::vector<Frame> frames = NoiseFrames(video, 50);
    WriteMovie(Path(L"in.avi"), video, frames, {25, 1});

    Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--fps", L"50"});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    Movie movie = ReadMovie(Path(L"out.avi"));
    EXPECT_EQ(movie.avi.rate, 50u);
    // The slot that ends with the stream is not started.
    ASSERT_EQ(movie.frames.size(), 99u);
    for (size_t n = 0; n < 99; ++n) EXPECT_EQ(movie.frames[n], frames[(n + 1) / 2]) << n;
    EXPECT_TRUE(Contains(run.out, "50 fps set")) << run.out;
    EXPECT_TRUE(Contains(run.out, "50 in, 99 out, 0 dropped, 49 repeated")) << run.out;

    run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--fps", L"12.5",
                      L"--log", Path(L"log.csv")});
    ASSERT_EQ(run.exitCode, 0u) << run.error;
    movie = ReadMovie(Path(L"out.avi"));
    EXPECT_EQ(movie.avi.rate, 25u);
    EXPECT_EQ(movie.avi.scale, 2u);
    EXPECT_NEAR(static_cast<double>(movie.frames.size()), 25.0, 1.0);
    EXPECT_TRUE(Contains(run.out, "50 in")) << run.out;
    const size_t taken = CountLines(Path(L"log.csv"), ",taken,");
    EXPECT_EQ(taken, movie.frames.size());
    EXPECT_EQ(CountLines(Path(L"log.csv"), ",dropped,"), 50 - taken);
    for (const char* line : {"ms\n0,0.0000000,0.0400000,0,0.0000000,0.0800000,taken,",
                             "\n1,0.0400000,0.0800000,,,,dropped,",
                             "\n4,0.1600000,0.2000000,1,0.0800000,0.1600000,taken,"}) {
        EXPECT_EQ(CountLines(Path(L"log.csv"), line), 1u) << line;
    }
}

TEST_F(VantrelFrames, GraphIsPrinted) {
    const VideoFormat video = Video(PixelFormat::RGB565, 32, 16);
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 1));
    const Output run =
        RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--graph", L"--quiet"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.out,
              "AVI source\n"
              "  out  Output -> Frame counter / In: video RGB565, 32 x 16, 16 bits, 29.97 fps "
              "(VideoInfo)\n"
              "Frame counter\n"
              "  in   In <- AVI source / Output: video RGB565, 32 x 16, 16 bits, 29.97 fps "
              "(VideoInfo)\n"
              "  out  Out -> Mira Vantrel / Input: video RGB565, 32 x 16, 16 bits, 29.97 fps "
              "(VideoInfo)\n"
              "Mira Vantrel\n"
              "  in   Input <- Frame counter / Out: video RGB565, 32 x 16, 16 bits, 29.97 fps "
              "(VideoInfo)\n"
              "  out  Output -> AVI sink / Input: video RGB565, 32 x 16, 16 bits, 29.97 fps "
              "(VideoInfo)\n"
              "AVI sink\n"
              "  in   Input <- Mira Vantrel / Output: video RGB565, 32 x 16, 16 bits, 29.97 fps "
              "(VideoInfo)\n");
}

TEST_F(VantrelFrames, QuietSaysNothing) {
    const VideoFormat video = Video(PixelFormat::YVU9, 32, 16);
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 3));
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite", L"--quiet"});
    EXPECT_EQ(run.exitCode, 0u);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.error, "");
}

TEST_F(VantrelFrames, CutOffInputGivesItsWholeFrames) {
    const VideoFormat video = Video(PixelFormat::RGB555, 32, 16);
    const std::vector<Frame> frames = NoiseFrames(video, 6);
    WriteMovie(Path(L"in.avi"), video, frames);
    const Movie whole = ReadMovie(Path(L"in.avi"));
    std::filesystem::resize_file(Path(L"in.avi"), whole.avi.frames[4] + 10);
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--overwrite"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_TRUE(Contains(run.error, "is cut off")) << run.error;
    const Movie movie = ReadMovie(Path(L"out.avi"));
    EXPECT_EQ(movie.frames, std::vector<Frame>(frames.begin(), frames.begin() + 4));
}

}  // namespace
}  // namespace tavo
