// The example play_resized with the registered module, and its part that the documents show.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/sdk/example_test.h"

namespace tavo {
namespace {

using tavo_test::Output;

const tavo_test::UnmanagedWindows unmanaged(L"play_resized.exe");

class PlayResized : public tavo_test::ExampleTest {
  protected:
    Output Run(const std::vector<std::wstring>& arguments) {
        return ExampleTest::Run(L"play_resized.exe", arguments);
    }
};

std::string TextOf(const std::string& path) {
    std::ifstream file(TAVO_ROOT "/" + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(PlayResized, ShowsTheVideoInEachSize) {
    ASSERT_EQ(CallModule("DllRegisterServer"), S_OK);
    const Output run = Run({Path(L"short.avi"), L"80x60", L"320x96"});
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_EQ(run.out.rfind("80x60, ", 0), 0u) << run.out;
    EXPECT_NE(run.out.find("\n320x96, "), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find(", 0.0 frames"), std::string::npos) << "nothing was shown: " << run.out;
}

TEST_F(PlayResized, SaysWhatFailed) {
    CallModule("DllUnregisterServer");
    const Output unregistered = Run({Path(L"short.avi"), L"80x60"});
    EXPECT_EQ(unregistered.exitCode, 1u);
    EXPECT_NE(unregistered.error.find("is it registered?"), std::string::npos);
    ASSERT_EQ(CallModule("DllRegisterServer"), S_OK);
    const Output missing = Run({Path(L"none.avi"), L"80x60"});
    EXPECT_EQ(missing.exitCode, 1u);
    EXPECT_NE(missing.error.find("opening the video"), std::string::npos) << missing.error;
    for (const wchar_t* size : {L"80", L"80x60x40", L"-80x60", L"axb"}) {
        EXPECT_EQ(Run({Path(L"short.avi"), size}).exitCode, 2u) << size;
    }
}

TEST_F(PlayResized, StandsInTheDocumentsAsItIs) {
    const std::string example = TextOf("sdk/cpp/play_resized.cpp");
    const std::string first = "// [In docs/programming.md]\n";
    const size_t from = example.find(first);
    const size_t to = example.find("// [End]\n");
    ASSERT_NE(from, std::string::npos);
    ASSERT_NE(to, std::string::npos);
    const std::string part = example.substr(from + first.size(), to - from - first.size());
    EXPECT_GT(part.size(), 500u);
    EXPECT_NE(TextOf("docs/programming.md").find("```cpp\n" + part + "```\n"), std::string::npos)
        << part;
}

}  // namespace
}  // namespace tavo
