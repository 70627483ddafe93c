// The examples live_resize, in C++ and in C, and unregistered: with the module registered, beside a
// manifest, and by its path.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>

#include "tests/sdk/example_test.h"

namespace tavo {
namespace {

using tavo_test::Contains;
using tavo_test::Module;
using tavo_test::ModulePath;
using tavo_test::Output;
using tavo_test::RunningProgram;
using tavo_test::UnmanagedWindows;

const UnmanagedWindows unmanagedC(L"live_resize_c.exe");
const UnmanagedWindows unmanagedCpp(L"live_resize.exe");

constexpr const wchar_t* kPrograms[] = {L"live_resize.exe", L"live_resize_c.exe"};

struct Line {
    int width = 0;
    int height = 0;
    double milliseconds = -1;
    double taken = -1;
    double delivered = -1;
};

Line ReadLine(const std::string& text) {
    Line line;
    std::sscanf(text.c_str(),
                "%dx%d: %lf ms per frame, %lf frames per second scaled, %lf delivered", &line.width,
                &line.height, &line.milliseconds, &line.taken, &line.delivered);
    return line;
}

constexpr char kStops[] = "The renderer takes no change while it runs: stopping.\n";

class LiveResize : public tavo_test::ExampleTest {
  protected:
    void TearDown() override {
        SetEnvironmentVariableW(L"STILL_RENDERER_LOG", nullptr);
        renderer_.UnregisterServer();
        ExampleTest::TearDown();
    }
    // With a renderer that takes no change while it runs, and logs the segments that it gets.
    std::unique_ptr<RunningProgram> StartWithStillRenderer(
        const wchar_t* program, const std::vector<std::wstring>& arguments,
        const std::filesystem::path& log) {
        EXPECT_EQ(renderer_.RegisterServer(), S_OK);
        SetEnvironmentVariableW(L"STILL_RENDERER_LOG", log.c_str());
        auto running = std::make_unique<RunningProgram>(Example(program), arguments);
        SetEnvironmentVariableW(L"STILL_RENDERER_LOG", nullptr);
        return running;
    }
    // It played from the start, and after the stop, which was two seconds later, from there.
    void ExpectToGoOn(Output run, const std::filesystem::path& log) {
        std::erase(run.out, '\r');
        const size_t stops = run.out.find(kStops);
        ASSERT_NE(stops, std::string::npos) << run.out;
        run.out.erase(stops, sizeof kStops - 1);
        ExpectBothSizes(run, true);
        std::ifstream file(log);
        const std::vector<LONGLONG> starts(std::istream_iterator<LONGLONG>(file), {});
        ASSERT_GE(starts.size(), 2u);
        EXPECT_EQ(starts.front(), 0);
        EXPECT_GT(starts.back(), 10'000'000) << "it began anew";
    }
    // Two lines, which tell of both sizes.
    void ExpectBothSizes(const Output& run, bool regulated) {
        ASSERT_EQ(run.exitCode, 0u) << run.error;
        const size_t end = run.out.find('\n');
        ASSERT_NE(end, std::string::npos) << run.out;
        const Line first = ReadLine(run.out);
        const Line second = ReadLine(run.out.substr(end + 1));
        EXPECT_EQ(first.width, 128) << run.out;
        EXPECT_EQ(first.height, 96) << run.out;
        EXPECT_EQ(second.width, 80) << run.out;
        EXPECT_EQ(second.height, 60) << run.out;
        for (const Line& line : {first, second}) {
            EXPECT_GE(line.milliseconds, 0) << run.out;
            EXPECT_GT(line.taken, 0) << run.out;
            EXPECT_EQ(line.delivered > 0, regulated) << run.out;
        }
    }

  private:
    const Module renderer_{L"still_renderer.ax"};
};

TEST_F(LiveResize, ChangesTheSizeWhileItPlays) {
    ASSERT_EQ(CallModule("DllRegisterServer"), S_OK);
    const std::vector<std::wstring> arguments = {
        Path(L"long.avi"), L"128", L"96", L"25", L"80", L"60"};
    RunningProgram cpp(Example(kPrograms[0]), arguments);
    RunningProgram c(Example(kPrograms[1]), arguments);
    const auto stoppedCpp = StartWithStillRenderer(kPrograms[0], arguments, Path(L"cpp.txt"));
    const auto stoppedC = StartWithStillRenderer(kPrograms[1], arguments, Path(L"c.txt"));
    ExpectBothSizes(cpp.Wait(), true);
    ExpectBothSizes(c.Wait(), true);
    ExpectToGoOn(stoppedCpp->Wait(), Path(L"cpp.txt"));
    ExpectToGoOn(stoppedC->Wait(), Path(L"c.txt"));
}

TEST_F(LiveResize, SaysWhatFailed) {
    CallModule("DllUnregisterServer");
    for (const wchar_t* program : kPrograms) {
        SCOPED_TRACE(testing::Message() << program);
        const Output run = Run(program, {Path(L"long.avi"), L"128", L"96", L"0", L"80", L"60"});
        EXPECT_EQ(run.exitCode, 1u);
        EXPECT_TRUE(Contains(run.error, "is it registered?")) << run.error;
        EXPECT_EQ(Run(program, {Path(L"long.avi")}).exitCode, 2u);
    }
}

// The program is the same, with the module and a manifest in its folder.
TEST_F(LiveResize, FindsTheModuleByAManifest) {
    CallModule("DllUnregisterServer");
    const std::filesystem::path folder = Path(L"manifest");
    std::filesystem::create_directory(folder);
    std::filesystem::copy(Example(L"live_resize.exe"), folder);
    std::filesystem::copy(ModulePath(), folder);
    std::filesystem::copy(TAVO_ROOT "/sdk/manifest/live_resize.exe.manifest", folder);
    ExpectBothSizes(RunningProgram(folder / L"live_resize.exe",
                                   {Path(L"long.avi"), L"128", L"96", L"0", L"80", L"60"})
                        .Wait(),
                    false);
}

TEST_F(LiveResize, IsRefusedAFileThatIsNoModule) {
    const Output run = Run(L"unregistered.exe", {Path(L"long.avi")});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_TRUE(Contains(run.error, "is it of this program's bitness?")) << run.error;
}

TEST_F(LiveResize, LoadsTheModuleByItsPath) {
    CallModule("DllUnregisterServer");
    const Output run = Run(L"unregistered.exe", {ModulePath()});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_TRUE(Contains(run.out, "In a graph, set to 640x360.")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Unloading.")) << run.out;
}

}  // namespace
}  // namespace tavo
