// Sound through vantrel.exe: sample by sample, and in time with the frames.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <span>

#include "tests/host/avi/movie_files.h"
#include "tests/host/avi/written_frames.h"
#include "tests/host/cli/run_program.h"

namespace tavo {
namespace {

using tavo_test::Contains;
using tavo_test::Frame;
using tavo_test::Movie;
using tavo_test::NoiseFrames;
using tavo_test::NoiseSound;
using tavo_test::Output;
using tavo_test::ReadMovie;
using tavo_test::RunVantrel;
using tavo_test::Sound;
using tavo_test::WriteSoundMovie;

constexpr SoundFormat kStereo = {2, 48000, 16, false};
constexpr uint32_t kFrames = 50;  // of 25 per second

class VantrelSound : public tavo_test::MovieTest {
  protected:
    // A movie of two seconds with so much sound goes through.
    Movie Pass(PixelFormat format, const Sound& sound, std::vector<std::wstring> options = {}) {
        const VideoFormat video = tavo_test::Video(format, 64, 48);
        frames_ = NoiseFrames(video, frameCount_);
        WriteSoundMovie(Path(L"in.avi"), video, frames_, sound);
        std::vector<std::wstring> arguments = {Path(L"in.avi"), Path(L"out.avi"), L"--overwrite"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        run_ = RunVantrel(arguments);
        EXPECT_EQ(run_.exitCode, 0u) << run_.error;
        const Movie movie = ReadMovie(Path(L"out.avi"));
        EXPECT_EQ(movie.avi.fault, "");
        return movie;
    }

    uint32_t frameCount_ = kFrames;
    std::vector<Frame> frames_;
    Output run_;
};

std::vector<std::byte> Part(const Sound& sound, size_t first, size_t end) {
    const auto at = [&](size_t block) {
        return sound.bytes.begin() + static_cast<ptrdiff_t>(block * sound.format.BlockBytes());
    };
    return {at(first), at(end)};
}

// The platform reads the one, this program the other.
TEST_F(VantrelSound, PcmComesOutAsItIs) {
    for (const auto& [format, sound] :
         {std::pair{PixelFormat::YUY2, kStereo}, std::pair{PixelFormat::YVYU, kStereo},
          std::pair{PixelFormat::RGB24, SoundFormat{1, 11025, 8, false}}}) {
        SCOPED_TRACE(static_cast<int>(format));
        const Sound noise = NoiseSound(sound, 2 * sound.rate);
        const Movie movie = Pass(format, noise);
        EXPECT_EQ(movie.frames, frames_);
        EXPECT_EQ(movie.avi.channels, sound.channels);
        EXPECT_EQ(movie.avi.soundRate, sound.rate);
        EXPECT_EQ(movie.avi.soundBits, sound.bits);
        EXPECT_TRUE(movie.avi.sound == noise.bytes);
        EXPECT_TRUE(Contains(run_.out, "0:02 at 25 fps, sound 0:02")) << run_.out;
        EXPECT_EQ(run_.error.find("warning"), std::string::npos) << run_.error;
    }
}

// This program and the platform read at speeds of their own.
TEST_F(VantrelSound, LiesNearItsFramesWhoeverReadsThem) {
    const Sound noise = NoiseSound({1, 8000, 8, false}, 10 * 8000);
    frameCount_ = 250;
    const Movie movie = Pass(PixelFormat::YVYU, noise, {L"--fps", L"200"});
    EXPECT_TRUE(movie.avi.sound == noise.bytes);
    ASSERT_FALSE(movie.avi.framesBefore.empty());
    // A second, and the frames that can wait for the disk.
    constexpr uint32_t kNear = 200 + 20;
    EXPECT_LE(movie.avi.framesBefore.front(), kNear);
    EXPECT_GE(movie.avi.framesBefore.back(), 2000 - kNear);
}

TEST_F(VantrelSound, IsInStepAtAnotherRate) {
    const Sound noise = NoiseSound(kStereo, 3 * 48000);
    const Movie movie = Pass(PixelFormat::YUY2, noise, {L"--fps", L"10"});
    EXPECT_EQ(movie.avi.rate, 10u);
    EXPECT_NEAR(static_cast<double>(movie.frames.size()), 20.0, 1.0);
    EXPECT_TRUE(movie.avi.sound == noise.bytes);
}

TEST_F(VantrelSound, AsIsTakesItAll) {
    const Sound noise = NoiseSound(kStereo, 48000);
    EXPECT_TRUE(Pass(PixelFormat::YUY2, noise, {L"--as-is"}).avi.sound == noise.bytes);
}

// From 0.4 s, which is frame 10, and for 1 s.
TEST_F(VantrelSound, ASectionHasItsPart) {
    const Sound noise = NoiseSound(kStereo, 2 * 48000);
    for (const PixelFormat format : {PixelFormat::YUY2, PixelFormat::YVYU}) {
        const Movie movie = Pass(format, noise, {L"--start", L"0.4", L"--duration", L"1"});
        EXPECT_EQ(movie.frames, std::vector<Frame>(frames_.begin() + 10, frames_.begin() + 35));
        EXPECT_TRUE(movie.avi.sound == Part(noise, 19200, 67200));
    }
    const Movie rest = Pass(PixelFormat::YUY2, noise, {L"--start", L"0.4"});
    EXPECT_EQ(rest.frames, std::vector<Frame>(frames_.begin() + 10, frames_.end()));
    EXPECT_TRUE(rest.avi.sound == Part(noise, 19200, 96000));
}

TEST_F(VantrelSound, NoSoundLeavesItOut) {
    const Sound noise = NoiseSound(kStereo, 2 * 48000);
    const Movie movie = Pass(PixelFormat::YUY2, noise, {L"--no-sound"});
    EXPECT_EQ(movie.avi.channels, 0u);
    EXPECT_EQ(movie.frames, frames_);
    EXPECT_FALSE(Contains(run_.out, "ound")) << run_.out;
    EXPECT_EQ(run_.error, "");
}

TEST_F(VantrelSound, IsToldInAdvance) {
    const Sound noise = NoiseSound(kStereo, 2 * 48000);
    Pass(PixelFormat::YUY2, noise, {L"--json"});
    EXPECT_TRUE(
        Contains(run_.out, R"("sound":{"format":"PCM","channels":2,"rate":48000,"bits":16})"))
        << run_.out;
    EXPECT_TRUE(Contains(run_.out, R"("soundSeconds":2)")) << run_.out;
    const auto size = std::filesystem::file_size(Path(L"out.avi"));

    const Output plan =
        RunVantrel({Path(L"in.avi"), Path(L"new.avi"), L"--dry-run", L"--json", L"--graph"});
    EXPECT_EQ(plan.exitCode, 0u) << plan.error;
    const size_t at = plan.out.find(R"("estimatedBytes":)");
    ASSERT_NE(at, std::string::npos) << plan.out;
    EXPECT_NEAR(std::stod(plan.out.substr(at + 17)), static_cast<double>(size), 4000.0);
    EXPECT_TRUE(Contains(plan.error, "Sound <- ")) << plan.error;
    EXPECT_TRUE(Contains(plan.error, "audio PCM, 2 channels, 48000 Hz, 16 bits")) << plan.error;
}

// The format of its sound is one that nothing here knows.
TEST_F(VantrelSound, SoundThatNothingDecodesIsLeftOutWithAWord) {
    const VideoFormat video = tavo_test::Video(PixelFormat::YUY2, 64, 48);
    WriteSoundMovie(Path(L"in.avi"), video, NoiseFrames(video, 3), NoiseSound(kStereo, 4800));
    std::fstream file(Path(L"in.avi"), std::ios::in | std::ios::out | std::ios::binary);
    std::string head(65536, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    const size_t sound = head.find("auds");
    const size_t format = head.find("strf", sound);
    ASSERT_NE(format, std::string::npos);
    file.seekp(static_cast<std::streamoff>(format + 8));
    file.write("\x34\x12", 2);
    file.close();
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi")});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_TRUE(Contains(run.error, "warning: nothing on this system decodes the sound in "));
    const Movie movie = ReadMovie(Path(L"out.avi"));
    EXPECT_EQ(movie.avi.fault, "");
    EXPECT_EQ(movie.avi.channels, 0u);
    EXPECT_EQ(movie.frames.size(), 3u);
}

}  // namespace
}  // namespace tavo
