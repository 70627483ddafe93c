// Stopping early leaves a complete file.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "host/avi/file_store.h"
#include "tests/host/avi/movie_files.h"
#include "tests/host/cli/endless_movie.h"
#include "tests/host/cli/run_program.h"
#include "tests/support/patience.h"

namespace tavo {
namespace {

using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::RunningProgram;
using tavo_test::WriteMovie;

class VantrelStop : public tavo_test::MovieTest {};

TEST_F(VantrelStop, CtrlCLeavesACompleteFile) {
    tavo_test::WriteEndlessMovie(Path(L"in.avi"));
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

// A minute of video, with sound from the platform.
TEST_F(VantrelStop, CtrlCLeavesItsSoundInStep) {
    const VideoFormat video = {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 160, 120};
    const std::vector<tavo_test::Frame> frames(1500, tavo_test::Frame(160 * 120 * 2));
    const tavo_test::Sound sound = tavo_test::NoiseSound({1, 8000, 16, false}, 60 * 8000);
    tavo_test::WriteSoundMovie(Path(L"in.avi"), video, frames, sound);
    ASSERT_TRUE(tavo_test::ShareConsole()) << GetLastError();
    RunningProgram program(tavo_test::VantrelPath(),
                           {Path(L"in.avi"), Path(L"out.avi"), L"--size", L"640x480"});
    ASSERT_TRUE(tavo_test::WaitUntil([&] {
        std::error_code error;
        const auto size = std::filesystem::file_size(Path(L"out.avi"), error);
        return program.HasEnded() || (!error && size >= 20'000'000);
    }));
    ASSERT_FALSE(program.HasEnded());
    ASSERT_TRUE(tavo_test::PressCtrlC()) << GetLastError();
    const Output run = program.Wait();
    EXPECT_EQ(run.exitCode, 3u) << run.error;
    FileStore file;
    ASSERT_EQ(file.OpenForReading(Path(L"out.avi")), IoResult::Ok);
    const tavo_test::CheckedAvi avi = tavo_test::CheckAvi(file);
    EXPECT_EQ(avi.fault, "");
    EXPECT_GT(avi.frames.size(), 20u);
    EXPECT_LT(avi.frames.size(), 1500u);
    ASSERT_LE(avi.sound.size(), sound.bytes.size());
    EXPECT_TRUE(std::equal(avi.sound.begin(), avi.sound.end(), sound.bytes.begin()));
    // GStreamer keeps some seconds ready.
    const double seconds = static_cast<double>(avi.frames.size()) / 25;
    EXPECT_NEAR(static_cast<double>(avi.sound.size()) / 16000, seconds, 5.0);
}

TEST_F(VantrelStop, CtrlCEndsAllInputs) {
    const VideoFormat video = {PixelFormat::YVYU, FourCc('Y', 'V', 'Y', 'U'), 64, 48};
    tavo_test::WriteEndlessMovie(Path(L"a.avi"));
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
