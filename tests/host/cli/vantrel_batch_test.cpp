// Several inputs: which files are meant, what becomes of them, and what is refused.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tests/host/avi/movie_files.h"
#include "tests/host/avi/written_frames.h"
#include "tests/host/cli/run_program.h"

namespace tavo {
namespace {

using tavo_test::Contains;
using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::ReadMovie;
using tavo_test::RunVantrel;
using tavo_test::Video;
using tavo_test::WriteMovie;

class VantrelBatch : public tavo_test::MovieTest {
  protected:
    void SetUp() override {
        MovieTest::SetUp();
        std::filesystem::create_directory(Path(L"out"));
        const VideoFormat video = Video(PixelFormat::YVYU, 32, 16);
        uint32_t frames = 2;
        for (const wchar_t* name : {L"b.avi", L"A.AVI", L"c.avix", L"\u00FC.avi"}) {
            WriteMovie(Path(name), video, NoiseFrames(video, frames++));
        }
    }

    std::wstring Out() const { return Path(L"out").wstring() + L"\\"; }
    size_t FramesOf(const wchar_t* name) const {
        return ReadMovie(Path((L"out\\" + std::wstring(name)).c_str())).frames.size();
    }
    size_t OutputCount() const {
        using Iterator = std::filesystem::directory_iterator;
        return static_cast<size_t>(std::distance(Iterator(Path(L"out")), Iterator()));
    }
};

TEST_F(VantrelBatch, OneThatFailsDoesNotStopTheOthers) {
    std::ofstream(Path(L"a2.avi")) << "no video";
    std::filesystem::create_directory(Path(L"folder.avi"));
    SetFileAttributesW(Path(L"\u00FC.avi").c_str(), FILE_ATTRIBUTE_HIDDEN);
    const Output run = RunVantrel({Path(L"*.avi"), Out()});
    EXPECT_EQ(run.exitCode, 1u) << run.error;
    EXPECT_TRUE(Contains(run.error, "a2.avi\" is a text")) << run.error;
    EXPECT_TRUE(Contains(run.out, "\n3 files: 2 done, 1 failed\n")) << run.out;
    // In the order of their names.
    EXPECT_LT(run.out.find("A.AVI -> "), run.out.find("a2.avi -> ")) << run.out;
    EXPECT_LT(run.out.find("a2.avi -> "), run.out.find("b.avi -> "));
    EXPECT_EQ(FramesOf(L"A.avi"), 3u);
    EXPECT_EQ(FramesOf(L"b.avi"), 2u);
    EXPECT_EQ(OutputCount(), 2u);
}

TEST_F(VantrelBatch, ALineOfJsonForEach) {
    const Output run = RunVantrel({Path(L"b.avi"), Path(L"\u00DC.A*"), Path(L"gone.mp4"),
                                   L"--output-folder", Path(L"out"), L"--json"});
    EXPECT_EQ(run.exitCode, 1u) << run.error;
    EXPECT_EQ(std::ranges::count(run.out, '\n'), 3);
    EXPECT_TRUE(Contains(run.out, "\"in\":2,")) << run.out;
    EXPECT_TRUE(Contains(run.out, "\"in\":5,")) << run.out;
    EXPECT_TRUE(Contains(run.out, "gone.mp4\\\" does not exist\"}\n")) << run.out;
    EXPECT_TRUE(Contains(run.error, "3 files: 2 done, 1 failed")) << run.error;
    EXPECT_EQ(OutputCount(), 2u);
}

TEST_F(VantrelBatch, RefusedBeforeAnythingIsWritten) {
    std::filesystem::copy_file(Path(L"c.avix"), Path(L"B.mp4"));
    std::filesystem::copy_file(Path(L"c.avix"), Path(L"out\\x.avi"));
    const struct {
        std::vector<std::wstring> arguments;
        const char* part;
    } rows[] = {
        {{Path(L"A.AVI"), Path(L"b.*"), Out()}, "would both become"},
        {{Path(L"A.AVI"), Path(L"out\\x.avi"), Out()}, "is one of the inputs"},
        {{Path(L"A.AVI"), Path(L"*.mkv"), Out()}, "there is no file"},
        {{Path(L"*.avi"), Path(L"x.avi")}, "does not exist; wildcards want --output-folder"},
        {{Path(L"A.AVI"), Path(L"none\\")}, "does not exist"},
    };
    for (const auto& row : rows) {
        const Output run = RunVantrel(row.arguments);
        EXPECT_EQ(run.exitCode, 1u);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(Contains(run.error, row.part)) << run.error;
        EXPECT_EQ(OutputCount(), 1u);
    }
}

}  // namespace
}  // namespace tavo
