// Writes and reads movies for tests.

#include "tests/host/avi/movie_files.h"

#include <windows.h>

#include <algorithm>
#include <random>

#include "host/avi/file_store.h"

namespace tavo_test {

std::vector<Frame> NoiseFrames(const tavo::VideoFormat& video, uint32_t count) {
    std::mt19937 random(video.compression + static_cast<uint32_t>(video.width));
    std::vector<Frame> frames;
    for (uint32_t n = 0; n < count; ++n) {
        Frame frame(*tavo::FrameSize(video));
        for (std::byte& value : frame) value = static_cast<std::byte>(random());
        frames.push_back(std::move(frame));
    }
    return frames;
}

void WriteMovie(const std::filesystem::path& path, const tavo::VideoFormat& video,
                const std::vector<Frame>& frames, tavo::FrameRate rate) {
    WriteMovie(path, video, frames, rate, std::vector<uint32_t>(frames.size()));
}

void WriteMovie(const std::filesystem::path& path, const tavo::VideoFormat& video,
                const std::vector<Frame>& frames, tavo::FrameRate rate,
                const std::vector<uint32_t>& repeats, tavo::AspectRatio displayAspect) {
    tavo::FileStore file;
    ASSERT_EQ(file.Create(path), tavo::IoResult::Ok);
    tavo::AviWriter writer(file, video, rate);
    writer.SetDisplayAspect(displayAspect);
    ASSERT_EQ(writer.Begin(), tavo::IoResult::Ok);
    for (size_t n = 0; n < frames.size(); ++n) {
        ASSERT_EQ(writer.WriteFrame(frames[n]), tavo::IoResult::Ok);
        ASSERT_EQ(writer.ReserveRepeats(repeats[n]), tavo::IoResult::Ok);
    }
    writer.SetRepeats(repeats);
    ASSERT_EQ(writer.Finish(), tavo::IoResult::Ok);
}

Sound NoiseSound(const tavo::SoundFormat& format, size_t blocks) {
    std::mt19937 random(format.rate);
    Sound sound = {format, std::vector<std::byte>(blocks * format.BlockBytes())};
    for (std::byte& value : sound.bytes) value = static_cast<std::byte>(random());
    return sound;
}

void WriteSoundMovie(const std::filesystem::path& path, const tavo::VideoFormat& video,
                     const std::vector<Frame>& frames, const Sound& sound) {
    tavo::FileStore file;
    ASSERT_EQ(file.Create(path), tavo::IoResult::Ok);
    tavo::AviWriter writer(file, video, {25, 1});
    writer.SetSound(sound.format);
    ASSERT_EQ(writer.Begin(), tavo::IoResult::Ok);
    std::span<const std::byte> rest = sound.bytes;
    for (size_t n = 0; n < frames.size(); ++n) {
        ASSERT_EQ(writer.WriteFrame(frames[n]), tavo::IoResult::Ok);
        const size_t wanted = sound.format.rate / 25 * sound.format.BlockBytes();
        const size_t size = n + 1 < frames.size() ? std::min(wanted, rest.size()) : rest.size();
        ASSERT_EQ(writer.WriteSound(rest.first(size)), tavo::IoResult::Ok);
        rest = rest.subspan(size);
    }
    ASSERT_EQ(writer.Finish(), tavo::IoResult::Ok);
}

Movie ReadMovie(const std::filesystem::path& path) {
    Movie movie;
    tavo::FileStore file;
    if (file.OpenForReading(path) != tavo::IoResult::Ok) {
        movie.avi.fault = "the file cannot be opened";
        return movie;
    }
    movie.avi = CheckAvi(file);
    for (const uint64_t offset : movie.avi.frames) {
        Frame frame(movie.avi.imageSize);
        if (file.ReadAt(offset, frame) != tavo::IoResult::Ok) movie.avi.fault = "unreadable";
        movie.frames.push_back(std::move(frame));
    }
    return movie;
}

void MovieTest::SetUp() {
    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    // Other test programs have tests of the same name.
    folder_ = std::filesystem::temp_directory_path() /
              (L"vantrel \u00FCbung " + std::to_wstring(GetCurrentProcessId()) + L" " +
               std::wstring(name.begin(), name.end()));
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
}

void MovieTest::TearDown() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

}  // namespace tavo_test
