// A host that loads the module, uses it and unloads it, thousands of times over: nothing may stay
// behind in its process.
#include <gtest/gtest.h>
#include <windows.h>

#include <psapi.h>
#include <strmif.h>

#include "settings/vantrel_settings.h"
#include "tests/filter/support/filter_rig.h"
#include "tests/support/module.h"

using namespace tavo_test;

namespace {

// What a process has a limited number of, seen from what it is given next.
struct NextOnes {
    DWORD tlsIndex;
    ULONG_PTR handle;
    SIZE_T memory;

    static NextOnes Now() {
        const DWORD index = TlsAlloc();
        TlsFree(index);
        const HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        CloseHandle(handle);
        PROCESS_MEMORY_COUNTERS counters = {};
        GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
        return {index, reinterpret_cast<ULONG_PTR>(handle), counters.PagefileUsage};
    }
};

void LoadUseAndUnload() {
    const Module module(ModulePath().c_str());
    ASSERT_TRUE(module.loaded());
    {
        const auto filter = module.Create<IBaseFilter>(CLSID_VantrelFilter);
        ASSERT_TRUE(filter);
        ComPtr<IEnumPins> pins;
        ASSERT_EQ(filter->EnumPins(pins.Put()), S_OK);
        ASSERT_EQ(pins->Skip(2), S_OK);
        ASSERT_TRUE(module.Create<IUnknown>(CLSID_ResamplePropertyPage));
    }
    ASSERT_EQ(module.CanUnloadNow(), S_OK);
}

// A heap grows in steps of a megabyte: over more cycles a step spreads, and a leak does not.
TEST(ModuleCycles, NothingStaysBehindInTheHost) {
    constexpr int kCycles = 300;
    constexpr long long kBytesACycle = 512;
    // Wine 8's loses a dozen handles each time that it is loaded and unloaded.
    const Module multimedia(L"winmm.dll");
    ASSERT_TRUE(multimedia.loaded());
    for (int i = 0; i < 50; ++i) ASSERT_NO_FATAL_FAILURE(LoadUseAndUnload());
    const NextOnes before = NextOnes::Now();
    NextOnes after;
    long long grown = 0;
    int cycles = 0;
    do {
        for (int i = 0; i < kCycles; ++i) ASSERT_NO_FATAL_FAILURE(LoadUseAndUnload());
        cycles += kCycles;
        after = NextOnes::Now();
        grown = static_cast<long long>(after.memory) - static_cast<long long>(before.memory);
    } while (grown >= cycles * kBytesACycle && cycles < 10 * kCycles);
    EXPECT_EQ(after.tlsIndex, before.tlsIndex) << "a process has 1,088";
    EXPECT_EQ(after.handle, before.handle);
    EXPECT_LT(grown, cycles * kBytesACycle);
    std::printf("  %d cycles: %lld bytes more\n", cycles, grown);
}

}  // namespace
