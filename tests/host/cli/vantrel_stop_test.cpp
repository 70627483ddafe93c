// Stopping early leaves a complete file.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "host/avi/file_store.h"
#include "tests/host/avi/movie_files.h"
#include "tests/host/cli/run_program.h"
#include "tests/support/patience.h"

namespace tavo {
namespace {

using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::RunningProgram;
using tavo_test::WriteMovie;

class VantrelStop : public tavo_test::MovieTest {};

// One frame and very many empty chunks that repeat it: a small file with a run too long to end
// before it is interrupted.
void WriteEndlessMovie(const std::filesystem::path& path, const VideoFormat& video) {
    WriteMovie(path, video, NoiseFrames(video, 1), {25, 1});
    const tavo_test::Movie movie = tavo_test::ReadMovie(path);
    FileStore file;
    std::vector<std::byte> start(static_cast<size_t>(movie.avi.frames[0]) + movie.avi.imageSize);
    ASSERT_EQ(file.OpenForReading(path), IoResult::Ok);
    ASSERT_EQ(file.ReadAt(0, start), IoResult::Ok);
    constexpr size_t kRepeats = 2'000'000;
    // Sizes of 0, as from an interrupted writer, reach to the end of the file.
    for (const uint64_t at : {uint64_t{4}, movie.avi.frames[0] - 16}) {
        std::fill_n(start.begin() + static_cast<ptrdiff_t>(at), 4, std::byte{0});
    }
    const size_t tail = start.size();
    start.resize(tail + kRepeats * 8);
    for (size_t i = 0; i < kRepeats; ++i) {
        const char code[] = "00dc";
        for (size_t k = 0; k < 4; ++k) start[tail + i * 8 + k] = static_cast<std::byte>(code[k]);
    }
    ASSERT_EQ(file.Create(path), IoResult::Ok);
    ASSERT_EQ(file.WriteAt(0, start), IoResult::Ok);
}

TEST_F(VantrelStop, CtrlCLeavesACompleteFile) {
    const VideoFormat video = {PixelFormat::YVYU, FourCc('Y', 'V', 'Y', 'U'), 64, 48};
    WriteEndlessMovie(Path(L"in.avi"), video);
    ASSERT_TRUE(tavo_test::ShareConsole()) << GetLastError();
    RunningProgram program(tavo_test::VantrelPath(), {Path(L"in.avi"), Path(L"out.avi")});
    ASSERT_TRUE(program.Started());
    ASSERT_TRUE(tavo_test::WaitUntil([&] {
        std::error_code error;
        const auto size = std::filesystem::file_size(Path(L"out.avi"), error);
        return program.HasEnded() || (!error && size >= 2'000'000);
    }));
    ASSERT_FALSE(program.HasEnded());
    ASSERT_TRUE(tavo_test::PressCtrlC()) << GetLastError();
    const Output run = program.Wait();
    EXPECT_EQ(run.exitCode, 3u) << run.error;
    EXPECT_NE(run.error.find("stopped after "), std::string::npos) << run.error;
    // Frames in - dropped + repeated = frames out.
    unsigned long in = 0;
    unsigned long out = 0;
    unsigned long dropped = 0;
    unsigned long repeated = 0;
    const size_t counts = run.out.find("Frames ");
    ASSERT_NE(counts, std::string::npos) << run.out;
    ASSERT_EQ(
        std::sscanf(run.out.c_str() + counts, "Frames %lu in, %lu out, %lu dropped, %lu repeated",
                    &in, &out, &dropped, &repeated),
        4)
        << run.out;
    EXPECT_EQ(in - dropped + repeated, out);
    EXPECT_NE(run.error.find("stopped after " + std::to_string(out) + " frames"),
              std::string::npos);

    FileStore file;
    ASSERT_EQ(file.OpenForReading(Path(L"out.avi")), IoResult::Ok);
    const tavo_test::CheckedAvi avi = tavo_test::CheckAvi(file);
    EXPECT_EQ(avi.fault, "");
    EXPECT_GT(avi.frames.size(), 100u);
    EXPECT_LT(avi.frames.size(), 2000000u);
    EXPECT_EQ(avi.streamFrames, avi.frames.size());
    EXPECT_EQ(avi.streamFrames, out);
}

TEST_F(VantrelStop, CtrlCEndsAllInputs) {
    const VideoFormat video = {PixelFormat::YVYU, FourCc('Y', 'V', 'Y', 'U'), 64, 48};
    WriteEndlessMovie(Path(L"a.avi"), video);
    WriteMovie(Path(L"b.avi"), video, NoiseFrames(video, 1));
    std::filesystem::create_directory(Path(L"out"));
    ASSERT_TRUE(tavo_test::ShareConsole()) << GetLastError();
    RunningProgram program(tavo_test::VantrelPath(),
                           {Path(L"?.avi"), L"--output-folder", Path(L"out")});
    ASSERT_TRUE(tavo_test::WaitUntil([&] {
        std::error_code error;
        const auto size = std::filesystem::file_size(Path(L"out\\a.avi"), error);
        return program.HasEnded() || (!error && size >= 500'000);
    }));
    ASSERT_FALSE(program.HasEnded());
    ASSERT_TRUE(tavo_test::PressCtrlC()) << GetLastError();
    const Output run = program.Wait();
    EXPECT_EQ(run.exitCode, 3u) << run.error;
    EXPECT_NE(run.out.find("2 files: 0 done, 0 failed, 2 stopped or not begun"), std::string::npos)
        << run.out;
    EXPECT_EQ(tavo_test::ReadMovie(Path(L"out\\a.avi")).avi.fault, "");
    EXPECT_FALSE(std::filesystem::exists(Path(L"out\\b.avi")));
}

}  // namespace
}  // namespace tavo
