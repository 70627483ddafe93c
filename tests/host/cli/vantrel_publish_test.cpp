// --publish: other programs find the graph during the run, and not afterwards.

#include <gtest/gtest.h>
#include <objbase.h>

#include "dshow/com_ptr.h"
#include "tests/host/avi/movie_files.h"
#include "tests/host/cli/endless_movie.h"
#include "tests/host/cli/run_program.h"
#include "tests/support/patience.h"

namespace tavo {
namespace {

using tavo_test::RunningProgram;

class VantrelPublish : public tavo_test::MovieTest {
  protected:
    void SetUp() override {
        MovieTest::SetUp();
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    }
    void TearDown() override {
        CoUninitialize();
        MovieTest::TearDown();
    }
};

// Names in the running object table that end so.
std::vector<std::wstring> NamesEndingWith(const std::wstring& end) {
    std::vector<std::wstring> names;
    ComPtr<IRunningObjectTable> table;
    ComPtr<IEnumMoniker> all;
    ComPtr<IBindCtx> context;
    EXPECT_EQ(GetRunningObjectTable(0, table.Put()), S_OK);
    EXPECT_EQ(CreateBindCtx(0, context.Put()), S_OK);
    EXPECT_EQ(table->EnumRunning(all.Put()), S_OK);
    ComPtr<IMoniker> moniker;
    while (all->Next(1, moniker.Put(), nullptr) == S_OK) {
        LPOLESTR name = nullptr;
        if (SUCCEEDED(moniker->GetDisplayName(context.Get(), nullptr, &name))) {
            if (std::wstring_view(name).ends_with(end)) names.push_back(name);
            CoTaskMemFree(name);
        }
    }
    return names;
}

TEST_F(VantrelPublish, DuringTheRun) {
    tavo_test::WriteEndlessMovie(Path(L"in.avi"));
    ASSERT_TRUE(tavo_test::ShareConsole()) << GetLastError();
    RunningProgram program(tavo_test::VantrelPath(),
                           {Path(L"in.avi"), Path(L"out.avi"), L"--publish"});
    ASSERT_TRUE(program.Started());
    wchar_t end[32] = {};
    swprintf(end, 32, L" pid %08x", static_cast<unsigned>(program.Id()));
    std::vector<std::wstring> names;
    ASSERT_TRUE(tavo_test::WaitUntil(
        [&] {
            names = NamesEndingWith(end);
            return program.HasEnded() || !names.empty();
        },
        50));
    ASSERT_FALSE(program.HasEnded());
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(names[0].rfind(L"!FilterGraph ", 0), 0u) << names[0].c_str();
    EXPECT_EQ(names[0].size(), std::wstring_view(L"!FilterGraph 12345678 pid 12345678").size());
    ASSERT_TRUE(tavo_test::WaitUntil([&] { return std::filesystem::exists(Path(L"out.avi")); }));
    ASSERT_TRUE(tavo_test::PressCtrlC()) << GetLastError();
    const tavo_test::Output run = program.Wait();
    EXPECT_EQ(run.exitCode, 3u) << run.error;
    EXPECT_EQ(NamesEndingWith(end).size(), 0u);
}

}  // namespace
}  // namespace tavo
