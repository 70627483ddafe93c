// The version number is the same wherever it is told.

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/host/cli/run_program.h"

namespace tavo {
namespace {

const std::string kVersion = TAVO_VERSION;

// A text of the version resource, and the number beside it.
struct FileVersion {
    std::string text;
    std::string number;
};

FileVersion VersionOf(const std::filesystem::path& path, const std::wstring& name) {
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    std::vector<char> data(size);
    void* value = nullptr;
    UINT length = 0;
    FileVersion version;
    if (size == 0 || !GetFileVersionInfoW(path.c_str(), 0, size, data.data())) return version;
    if (VerQueryValueW(data.data(), (L"\\StringFileInfo\\040904B0\\" + name).c_str(), &value,
                       &length)) {
        const std::wstring text = static_cast<const wchar_t*>(value);
        version.text.assign(text.begin(), text.end());
    }
    if (VerQueryValueW(data.data(), L"\\", &value, &length)) {
        const auto* info = static_cast<const VS_FIXEDFILEINFO*>(value);
        EXPECT_EQ(info->dwFileVersionMS, info->dwProductVersionMS);
        EXPECT_EQ(info->dwFileVersionLS, info->dwProductVersionLS);
        EXPECT_EQ(LOWORD(info->dwFileVersionLS), 0);
        version.number = std::to_string(HIWORD(info->dwFileVersionMS)) + "." +
                         std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
                         std::to_string(HIWORD(info->dwFileVersionLS));
    }
    return version;
}

TEST(Version, IsInTheResourcesOfBothFiles) {
    for (const auto& path : {tavo_test::VantrelPath(), tavo_test::ModulePath()}) {
        for (const wchar_t* name : {L"FileVersion", L"ProductVersion"}) {
            const FileVersion version = VersionOf(path, name);
            EXPECT_EQ(version.text, kVersion) << path;
            EXPECT_EQ(version.number, kVersion) << path;
        }
        EXPECT_EQ(VersionOf(path, L"OriginalFilename").text, path.filename().string());
        EXPECT_EQ(VersionOf(path, L"ProductName").text, "TavoResample");
    }
}

TEST(Version, IsToldByTheProgram) {
    const tavo_test::Output run = tavo_test::RunVantrel({L"--version"});
    EXPECT_EQ(run.exitCode, 0u);
    EXPECT_EQ(run.out.substr(0, run.out.find_first_of("\r\n")), "vantrel " + kVersion);
}

TEST(Version, IsTheNewestOfTheChangelog) {
    std::ifstream changelog(std::filesystem::path(TAVO_SOURCE_FOLDER) / "CHANGELOG.md");
    ASSERT_TRUE(changelog.is_open());
    std::string line;
    while (std::getline(changelog, line) && line.rfind("## ", 0) != 0) continue;
    EXPECT_EQ(line.substr(0, line.find(" (")), "## " + kVersion);
}

}  // namespace
}  // namespace tavo
