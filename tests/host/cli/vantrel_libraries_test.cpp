// Libraries that somebody has put beside vantrel.exe, as in a folder of downloads: under the names
// of the system's, they must not be taken for them. One of these tests needs a display.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/host/cli/program_windows.h"

namespace tavo {
namespace {

using tavo_test::ModulePath;
using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::RunningProgram;
using tavo_test::VantrelPath;
using tavo_test::WriteMovie;

// What program and module need, without those that Windows never takes from anywhere else.
const std::vector<std::wstring> kNames = {L"comctl32", L"d3d9", L"quartz", L"winmm"};

constexpr wchar_t kProgram[] = L"vantrel-planted.exe";

// Wine takes its own library for any of these names, unless it is told otherwise for the program.
class LikeWindows {
  public:
    LikeWindows() {
        for (const std::wstring& name : kNames) {
            for (const std::wstring& value : {name, L"*" + name}) {
                constexpr wchar_t kOrder[] = L"native,builtin";
                EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, (key_ + L"\\DllOverrides").c_str(),
                                          value.c_str(), REG_SZ, kOrder, sizeof kOrder),
                          ERROR_SUCCESS);
            }
        }
    }
    ~LikeWindows() { RegDeleteTreeW(HKEY_CURRENT_USER, key_.c_str()); }
    LikeWindows(const LikeWindows&) = delete;
    LikeWindows& operator=(const LikeWindows&) = delete;

  private:
    const std::wstring key_ = std::wstring(L"Software\\Wine\\AppDefaults\\") + kProgram;
};

class VantrelLibraries : public tavo_test::PlayTest {
  protected:
    void SetUp() override {
        PlayTest::SetUp();
        for (const std::wstring& name : kNames) {
            std::filesystem::copy_file(BesideThisProgram(L"planted_library.dll"), Library(name));
        }
        std::filesystem::copy_file(ModulePath(), Path(L"TavoResample.ax"));
        const VideoFormat video = {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 32, 16};
        WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 3));
    }

    static std::filesystem::path BesideThisProgram(const wchar_t* name) {
        wchar_t own[MAX_PATH] = L"";
        GetModuleFileNameW(nullptr, own, MAX_PATH);
        return std::filesystem::path(own).parent_path() / name;
    }
    std::filesystem::path Library(const std::wstring& name) const {
        return Path((name + L".dll").c_str());
    }
    bool WasLoaded(const std::wstring& name) const {
        return std::filesystem::exists(Path((name + L".dll.loaded").c_str()));
    }
    void ExpectNoneWasLoaded() const {
        for (const std::wstring& name : kNames) {
            EXPECT_FALSE(WasLoaded(name)) << std::string(name.begin(), name.end());
        }
    }

    Output RunBesideThem(const std::filesystem::path& program,
                         const std::vector<std::wstring>& arguments) {
        std::filesystem::copy_file(program, Path(kProgram),
                                   std::filesystem::copy_options::overwrite_existing);
        return RunningProgram(Path(kProgram), arguments).Wait();
    }

  private:
    const LikeWindows likeWindows_;
};

// What the program has to avoid.
TEST_F(VantrelLibraries, OthersTakeThoseBesideThem) {
    EXPECT_EQ(RunBesideThem(BesideThisProgram(L"load_libraries.exe"), kNames).exitCode, 0u);
    for (const std::wstring& name : kNames) {
        EXPECT_TRUE(WasLoaded(name)) << std::string(name.begin(), name.end());
    }
}

TEST_F(VantrelLibraries, AFileIsScaledWithTheSystemsOwn) {
    const Output run =
        RunBesideThem(VantrelPath(), {Path(L"in.avi"), Path(L"out.avi"), L"--size", L"64x32"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_TRUE(std::filesystem::exists(Path(L"out.avi")));
    ExpectNoneWasLoaded();
}

TEST_F(VantrelLibraries, AnErrorIsSaidWithTheSystemsOwn) {
    std::filesystem::resize_file(Path(L"in.avi"), 100);
    const Output run = RunBesideThem(VantrelPath(), {Path(L"in.avi"), Path(L"out.avi")});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_EQ(run.error.rfind("vantrel: ", 0), 0u) << run.error;
    ExpectNoneWasLoaded();
}

// Renderers for packed 4:2:2 ask for Direct3D.
TEST_F(VantrelLibraries, AFileIsPlayedWithTheSystemsOwn) {
    ExpectGoodEnd(RunBesideThem(VantrelPath(), {L"--play", Path(L"in.avi")}));
    ExpectNoneWasLoaded();
}

}  // namespace
}  // namespace tavo
