// A host that loads the module, uses it and unloads it, thousands of times over: nothing may stay
// behind in its process.
#include <gtest/gtest.h>
#include <windows.h>

#include <psapi.h>
#include <strmif.h>

#include <algorithm>
#include <set>
#include <string>

#include "filter/vantrel_settings.h"
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

TEST(ModuleCycles, NothingStaysBehindInTheHost) {
    // More than a process has thread-local storage for.
    constexpr int kCycles = 1200;
    // Wine 8's loses a dozen handles each time that it is loaded and unloaded.
    const Module multimedia(L"winmm.dll");
    ASSERT_TRUE(multimedia.loaded());
    for (int i = 0; i < kCycles / 10; ++i) ASSERT_NO_FATAL_FAILURE(LoadUseAndUnload());
    const NextOnes before = NextOnes::Now();
    for (int i = 0; i < kCycles; ++i) ASSERT_NO_FATAL_FAILURE(LoadUseAndUnload()) << "cycle " << i;
    const NextOnes after = NextOnes::Now();
    EXPECT_EQ(after.tlsIndex, before.tlsIndex);
    EXPECT_EQ(after.handle, before.handle);
    const auto grown = static_cast<long long>(after.memory) - static_cast<long long>(before.memory);
    EXPECT_LT(grown, kCycles * 128LL);
    std::printf("  %d cycles: %lld bytes more\n", kCycles, grown);
}

// All functions that the loaded module takes from other modules.
std::set<std::string> ImportsOf(HMODULE module) {
    const auto* const base = reinterpret_cast<const BYTE*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::set<std::string> names;
    for (auto* entry =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         entry->Name != 0; ++entry) {
        for (auto* thunk =
                 reinterpret_cast<const IMAGE_THUNK_DATA*>(base + entry->OriginalFirstThunk);
             thunk->u1.AddressOfData != 0; ++thunk) {
            if (IMAGE_SNAP_BY_ORDINAL(thunk->u1.Ordinal)) continue;
            names.insert(reinterpret_cast<const char*>(
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + thunk->u1.AddressOfData)
                    ->Name));
        }
    }
    return names;
}

TEST(ModuleCycles, NothingIsImportedThatOutlivesTheModule) {
    const Module module(ModulePath().c_str());
    ASSERT_TRUE(module.loaded());
    const std::set<std::string> imports = ImportsOf(module.handle());
    EXPECT_EQ(imports.count("CreateEventW"), 1u) << "the list of imports cannot be read";
    for (const char* name : {"TlsAlloc", "FlsAlloc", "AddVectoredExceptionHandler",
                             "AddVectoredContinueHandler", "SetUnhandledExceptionFilter"}) {
        EXPECT_EQ(imports.count(name), 0u) << name;
    }
}

}  // namespace
