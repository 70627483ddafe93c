// Writes and reads small AVI files.

#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/avi/avi_writer.h"
#include "tests/host/avi/avi_checker.h"

namespace tavo_test {

using Frame = std::vector<std::byte>;

// Frames of noise, no two alike, the same in every run.
std::vector<Frame> NoiseFrames(const tavo::VideoFormat& video, uint32_t count);

void WriteMovie(const std::filesystem::path& path, const tavo::VideoFormat& video,
                const std::vector<Frame>& frames, tavo::FrameRate rate = {30000, 1001});

// The same, with each frame repeated that often.
void WriteMovie(const std::filesystem::path& path, const tavo::VideoFormat& video,
                const std::vector<Frame>& frames, tavo::FrameRate rate,
                const std::vector<uint32_t>& repeats, tavo::AspectRatio displayAspect = {});

struct Sound {
    tavo::SoundFormat format;
    std::vector<std::byte> bytes;
};

// So many blocks of noise, the same in every run.
Sound NoiseSound(const tavo::SoundFormat& format, size_t blocks);

// A movie of 25 frames per second. Its sound lies behind the frames of its time, and what is longer
// behind the last one.
void WriteSoundMovie(const std::filesystem::path& path, const tavo::VideoFormat& video,
                     const std::vector<Frame>& frames, const Sound& sound);

struct Movie {
    CheckedAvi avi;
    std::vector<Frame> frames;
};

// `avi.fault` tells what is wrong with the file, or that it cannot be opened.
Movie ReadMovie(const std::filesystem::path& path);

// A temporary folder for each test. Its name has a blank and an umlaut.
class MovieTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::filesystem::path Path(const wchar_t* name) const { return folder_ / name; }

  private:
    std::filesystem::path folder_;
};

}  // namespace tavo_test
