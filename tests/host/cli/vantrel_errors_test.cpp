// Messages and exit codes of vantrel.exe when something is wrong, and the files that it leaves
// alone.

#include <gtest/gtest.h>

#include <fstream>

#include "tests/host/avi/movie_files.h"
#include "tests/host/cli/run_program.h"

namespace tavo {
namespace {

using tavo_test::Contains;
using tavo_test::ModulePath;
using tavo_test::NoiseFrames;
using tavo_test::Output;
using tavo_test::ReadMovie;
using tavo_test::RunVantrel;
using tavo_test::WriteMovie;

class VantrelErrors : public tavo_test::MovieTest {
  protected:
    void SetUp() override {
        MovieTest::SetUp();
        WriteSource(PixelFormat::YVYU);
        std::ofstream(Path(L"keep.avi"), std::ios::binary) << "precious";
    }

    void WriteSource(PixelFormat format) {
        const VideoFormat video = {format, InfoOf(format).compression, 32, 16};
        WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 3));
    }

    // Expects one line with `part` in it, the exit code, and an unchanged output file.
    void ExpectFailure(const std::vector<std::wstring>& arguments, DWORD code, const char* part) {
        const Output run = RunVantrel(arguments);
        EXPECT_EQ(run.exitCode, code);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.error.rfind("vantrel: ", 0), 0u) << run.error;
        EXPECT_NE(run.error.find(part), std::string::npos) << run.error << " lacks " << part;
        EXPECT_EQ(run.error.find('\n'), run.error.size() - 1) << run.error;
        ExpectSaved(L"keep.avi");
    }

    void ExpectSaved(const wchar_t* name) {
        std::ifstream keep(Path(name), std::ios::binary);
        std::string content;
        std::getline(keep, content);
        EXPECT_EQ(content, "precious");
    }

    void ExpectFailure(std::vector<std::wstring> more, const char* part) {
        more.insert(more.begin(), {Path(L"in.avi"), Path(L"keep.avi"), L"--overwrite"});
        ExpectFailure(more, 1, part);
    }
};

TEST_F(VantrelErrors, CommandLine) {
    ExpectFailure({}, 2, "missing");
    ExpectFailure({Path(L"in.avi")}, 2, "output file is missing");
    ExpectFailure({Path(L"in.avi"), Path(L"keep.avi"), L"--sise", L"1x1"}, 2, "\"--sise\"");
    ExpectFailure({Path(L"in.avi"), Path(L"keep.avi"), L"--method", L"cubic"}, 2, "\"cubic\"");
    ExpectFailure({Path(L"in.avi"), Path(L"keep.avi"), L"--size", L"big"}, 2, "\"big\"");
    ExpectFailure({Path(L"in.avi"), Path(L"out.mp4")}, 2, "has to end with .avi");
}

TEST_F(VantrelErrors, InputsThatCannotBeRead) {
    ExpectFailure({Path(L"n\u00F6.avi"), Path(L"keep.avi")}, 1, "n\u00F6.avi\" does not exist");
    ExpectFailure({Path(L""), Path(L"keep.avi")}, 1, "is a folder");
    std::ofstream(Path(L"empty.avi")).flush();
    ExpectFailure({Path(L"empty.avi"), Path(L"keep.avi")}, 1, "is empty");
}

void WriteBytes(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

TEST_F(VantrelErrors, InputsWithoutVideo) {
    using namespace std::literals;
    WriteBytes(Path(L"text.mp4"), std::string(5000, 'x'));
    ExpectFailure({Path(L"text.mp4"), Path(L"out.avi")}, 1, "is a text, no media file");
    WriteBytes(Path(L"noise.avi"), "\x01\x02\x03\x04 nothing that anybody knows"sv);
    ExpectFailure({Path(L"noise.avi"), Path(L"out.avi")}, 1, "no media file of a kind");
    WriteBytes(Path(L"sound.wav"), "RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0"sv);
    ExpectFailure({Path(L"sound.wav"), Path(L"out.avi")}, 1, "has no video in it, only sound");
    WriteBytes(Path(L"cut.mp4"),
               "\0\0\0\x10"
               "ftypisom\0\0\2\0\0\1\0\0mdat"sv);
    ExpectFailure({Path(L"cut.mp4"), Path(L"out.avi")}, 1, "cut.mp4\" is cut off");
    const VideoFormat video = {PixelFormat::YUY2, InfoOf(PixelFormat::YUY2).compression, 32, 16};
    WriteMovie(Path(L"none.avi"), video, {});
    ExpectFailure({Path(L"none.avi"), Path(L"out.avi")}, 1, "has a video without frames");
    EXPECT_FALSE(std::filesystem::exists(Path(L"out.avi")));
}

// An unknown codec in a valid file.
TEST_F(VantrelErrors, AMissingDecoderIsNamed) {
    const VideoFormat video = {PixelFormat::YUY2, FourCc('X', 'q', 'Z', '7'), 32, 16};
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, 3));
    ExpectFailure({Path(L"in.avi"), Path(L"out.avi")}, 1, "decodes the XqZ7 video in");
    EXPECT_FALSE(std::filesystem::exists(Path(L"out.avi")));
}

TEST_F(VantrelErrors, OutputsThatCannotBeWritten) {
    ExpectFailure({Path(L"in.avi"), Path(L"none\\out.avi")}, 1, "folder of");
    std::filesystem::create_directory(Path(L"folder.avi"));
    ExpectFailure({Path(L"in.avi"), Path(L"folder.avi")}, 1, "is a folder");
    ExpectFailure({Path(L"in.avi"), Path(L"")}, 1, "is one of the inputs");
    ExpectFailure({Path(L"in.avi"), Path(L"in.avi")}, 1, "same file");
    ExpectFailure({Path(L"in.avi"), Path(L".\\IN.AVI")}, 1, "same file");
    EXPECT_EQ(ReadMovie(Path(L"in.avi")).frames.size(), 3u);

    std::ofstream(Path(L"busy.avi")).flush();
    const HANDLE busy =
        CreateFileW(Path(L"busy.avi").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(busy, INVALID_HANDLE_VALUE);
    ExpectFailure({Path(L"in.avi"), Path(L"busy.avi"), L"--quiet", L"--overwrite"}, 1,
                  "another program");
    CloseHandle(busy);
}

TEST_F(VantrelErrors, FormatsThatAreRefused) {
    WriteSource(PixelFormat::YVU9);
    ExpectFailure({L"--format", L"YUYV"}, "--format YUYV is refused");
    ExpectFailure({L"--format", L"IYUV", L"--type", L"MPEG2"},
                  "--format IYUV with --type MPEG2 is refused");
}

TEST_F(VantrelErrors, Modules) {
    ExpectFailure({L"--module", Path(L"none.ax")}, "none.ax\" cannot be loaded");
    ExpectFailure({L"--module", Path(L"in.avi")}, "in.avi\" cannot be loaded");
    wchar_t system[MAX_PATH] = {};
    GetSystemDirectoryW(system, MAX_PATH);
    const std::wstring folder = std::wstring(system) + L"\\";
    ExpectFailure({L"--module", folder + L"kernel32.dll"}, "has no DllGetClassObject");
    ExpectFailure({L"--module", folder + L"quartz.dll"}, "does not have the filter");
}

TEST_F(VantrelErrors, ModuleByPath) {
    std::filesystem::copy_file(ModulePath(), Path(L"m\u00F6dule.ax"));
    const Output run = RunVantrel(
        {Path(L"in.avi"), Path(L"out.avi"), L"--module", Path(L"m\u00F6dule.ax"), L"--quiet"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_EQ(ReadMovie(Path(L"out.avi")).frames.size(), 3u);
}

HRESULT CallRegistration(const char* name, const std::filesystem::path& path = ModulePath()) {
    const HMODULE module = LoadLibraryW(path.c_str());
    if (module == nullptr) return HRESULT_FROM_WIN32(GetLastError());
    const auto call = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        reinterpret_cast<void*>(GetProcAddress(module, name)));
    const HRESULT hr = call != nullptr ? call() : E_NOTIMPL;
    FreeLibrary(module);
    return hr;
}

TEST_F(VantrelErrors, RegisteredOnlyWhenItIs) {
    ASSERT_EQ(CallRegistration("DllUnregisterServer"), S_OK);
    ExpectFailure({L"--registered"}, "registered filter Mira Vantrel cannot be used");
    ASSERT_EQ(CallRegistration("DllRegisterServer"), S_OK);
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--registered", L"--quiet"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_EQ(ReadMovie(Path(L"out.avi")).frames.size(), 3u);
    ASSERT_EQ(CallRegistration("DllUnregisterServer"), S_OK);
}

TEST_F(VantrelErrors, ARegisteredFileThatIsGoneIsNamed) {
    const std::filesystem::path copy = Path(L"gone.ax");
    std::filesystem::copy_file(ModulePath(), copy);
    ASSERT_EQ(CallRegistration("DllRegisterServer", copy), S_OK);
    std::filesystem::remove(copy);
    ExpectFailure({L"--registered"}, "gone.ax\" is gone");
    ASSERT_EQ(CallRegistration("DllUnregisterServer"), S_OK);
}

TEST_F(VantrelErrors, ExistingOutputIsReplacedOnlyWhenAsked) {
    ExpectFailure({Path(L"in.avi"), Path(L"keep.avi")}, 1, "keep.avi\" is there already");
    const Output run = RunVantrel({Path(L"in.avi"), Path(L"keep.avi"), L"--quiet", L"--overwrite"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_EQ(ReadMovie(Path(L"keep.avi")).avi.fault, "");
}

TEST_F(VantrelErrors, ADryRunWritesNothing) {
    ExpectFailure({Path(L"in.avi"), Path(L"keep.avi"), L"--dry-run"}, 1, "is there already");
    ExpectFailure({L"--dry-run", L"--format", L"YV12"}, "decodes the YVYU video");
    const Output run = RunVantrel(
        {Path(L"in.avi"), Path(L"keep.avi"), L"--overwrite", L"--dry-run", L"--size", L"64x0"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_EQ(run.error, "");
    for (const char* part :
         {"Input      video YVYU, 32 x 16, 16 bits, 29.97 fps", "Output     video YVYU, 64 x 16",
          "Duration   0.1 s", "AVI source -> Frame counter -> Mira Vantrel -> AVI sink",
          "keep.avi\", about 23.2 kB, about 3 frames of 2048 bytes", "nothing was written"}) {
        EXPECT_TRUE(Contains(run.out, part)) << run.out << part;
    }
    EXPECT_EQ(std::filesystem::file_size(Path(L"keep.avi")), 8u);
    // The same run in earnest.
    const Output real = RunVantrel({Path(L"in.avi"), Path(L"real.avi"), L"--size", L"64x0"});
    EXPECT_EQ(real.exitCode, 0u) << real.error;
    const auto bytes = static_cast<double>(std::filesystem::file_size(Path(L"real.avi")));
    EXPECT_NEAR(bytes, 23200, 0.05 * bytes);
}

TEST_F(VantrelErrors, LogsThatCannotBeWritten) {
    std::filesystem::rename(Path(L"keep.avi"), Path(L"keep.csv"));
    ExpectSaved(L"keep.csv");
    Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--log", Path(L"keep.csv")});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_TRUE(Contains(run.error, "keep.csv\" is there already")) << run.error;
    run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--log", Path(L"none\\x.csv")});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_TRUE(Contains(run.error, "folder of")) << run.error;
    ExpectSaved(L"keep.csv");
    EXPECT_FALSE(std::filesystem::exists(Path(L"out.avi")));
}

// Text goes to standard error then.
TEST_F(VantrelErrors, JsonIsTheOnlyOutput) {
    Output run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--json", L"--graph"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_TRUE(Contains(run.error, "Frame counter")) << run.error;
    EXPECT_EQ(run.out.rfind("{\"input\":\"C:\\\\", 0), 0u) << run.out;
    for (const char* part :
         {"vantrel \u00FCbung", "in.avi\",\"output\":\"", "\"sourceSeconds\":0.1001,\"rotation\":0",
          "\"source\":{\"format\":\"YVYU\",\"width\":32,\"height\":16,\"fps\":29.97002997002997}",
          "\"frames\":{\"in\":3,\"out\":3,\"dropped\":0,\"repeated\":0,\"withoutTime\":0}",
          "\"filter\":{\"msPerFrame\":", "\"file\":{\"bytes\":", ",\"exitCode\":0}\n"}) {
        EXPECT_TRUE(Contains(run.out, part)) << run.out << part;
    }
    EXPECT_FALSE(Contains(run.out, "error"));

    run = RunVantrel({Path(L"in.avi"), Path(L"out.avi"), L"--json"});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_TRUE(Contains(run.out, "\"exitCode\":1,\"error\":\"\\\"C:\\\\")) << run.out;
    EXPECT_EQ(run.error.rfind("vantrel: ", 0), 0u) << run.error;
    run = RunVantrel({Path(L"in.avi"), L"--json"});
    EXPECT_EQ(run.out,
              "{\"exitCode\":2,\"error\":\"the name of the output file is missing; try "
              "--help\"}\n");
    run = RunVantrel({Path(L"in.avi"), Path(L"x.avi"), L"--json", L"--dry-run"});
    EXPECT_EQ(run.error, "");
    EXPECT_TRUE(Contains(run.out, "\"Mira Vantrel\",\"AVI sink\"],\"estimatedFrames\":3,"))
        << run.out;
    EXPECT_TRUE(Contains(run.out, "\"dryRun\":true,")) << run.out;
}

TEST_F(VantrelErrors, HelpAndVersion) {
    for (const wchar_t* option : {L"--help", L"-h", L"/?"}) {
        const Output help = RunVantrel({option});
        EXPECT_EQ(help.exitCode, 0u);
        EXPECT_NE(help.out.find("Usage: vantrel"), std::string::npos);
    }
    const Output list = RunVantrel({L"--list"});
    EXPECT_EQ(list.exitCode, 0u);
    EXPECT_NE(list.out.find("bilinear-sse\n"), std::string::npos) << list.out;
    // Every platform has some.
    EXPECT_EQ(list.out.find("  none\n"), std::string::npos) << list.out;
    const Output version = RunVantrel({L"--version"});
    EXPECT_EQ(version.exitCode, 0u);
    EXPECT_EQ(version.out.rfind("vantrel ", 0), 0u);
    EXPECT_EQ(version.error, "");
}

}  // namespace
}  // namespace tavo
