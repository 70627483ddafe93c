#include "tests/host/cli/endless_movie.h"

#include <algorithm>

#include "host/avi/file_store.h"
#include "tests/host/avi/movie_files.h"

namespace tavo_test {

void WriteEndlessMovie(const std::filesystem::path& path) {
    using namespace tavo;
    const VideoFormat video = {PixelFormat::YVYU, FourCc('Y', 'V', 'Y', 'U'), 64, 48};
    WriteMovie(path, video, NoiseFrames(video, 1), {25, 1});
    const Movie movie = ReadMovie(path);
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

}  // namespace tavo_test
