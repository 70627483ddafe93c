// A fixture for the example programs: clips for them, and the module registered or not.

#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/host/avi/movie_files.h"
#include "tests/host/cli/run_program.h"
#include "tests/support/module.h"
#include "tests/support/unmanaged_windows.h"

namespace tavo_test {

class ExampleTest : public MovieTest {
  protected:
    void SetUp() override {
        using namespace tavo;
        MovieTest::SetUp();
        const VideoFormat video{PixelFormat::RGB24, InfoOf(PixelFormat::RGB24).compression, 160,
                                120};
        WriteMovie(Path(L"short.avi"), video, NoiseFrames(video, 10));
        // Five seconds.
        WriteMovie(Path(L"long.avi"), video, NoiseFrames(video, 50), {10, 1});
    }
    void TearDown() override {
        CallModule("DllUnregisterServer");
        MovieTest::TearDown();
    }

    static HRESULT CallModule(const char* name) {
        const Module module(ModulePath().c_str());
        const auto function = module.Entry<HRESULT(WINAPI*)()>(name);
        return function != nullptr ? function() : E_NOTIMPL;
    }
    static std::filesystem::path Example(const wchar_t* program) {
        return ModulePath().parent_path().parent_path() / L"sdk" / program;
    }
    static Output Run(const wchar_t* program, const std::vector<std::wstring>& arguments) {
        return RunningProgram(Example(program), arguments).Wait();
    }
};

}  // namespace tavo_test
