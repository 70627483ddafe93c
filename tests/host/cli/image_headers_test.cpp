// What the files of the program and the module tell the system in their headers, what they need of
// it, that their symbols lie beside them, and that another build gives the same files.

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "tests/host/cli/run_program.h"

namespace tavo {
namespace {

// A program or library as it lies on the disk.
class ImageFile {
  public:
    explicit ImageFile(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(stream), {});
        if (bytes_.size() < sizeof(IMAGE_DOS_HEADER)) return;
        const auto place = static_cast<size_t>(At<IMAGE_DOS_HEADER>(0)->e_lfanew);
        if (place + sizeof(IMAGE_NT_HEADERS) > bytes_.size()) return;
        headers_ = At<IMAGE_NT_HEADERS>(place);
    }

    bool IsWhole() const { return headers_ != nullptr; }
    const IMAGE_FILE_HEADER& Header() const { return headers_->FileHeader; }
    const IMAGE_OPTIONAL_HEADER& Optional() const { return headers_->OptionalHeader; }

    std::vector<IMAGE_SECTION_HEADER> Sections() const {
        const IMAGE_SECTION_HEADER* first = IMAGE_FIRST_SECTION(headers_);
        return {first, first + Header().NumberOfSections};
    }
    std::vector<std::string> ImportedLibraries() const {
        std::vector<std::string> names;
        for (const auto* import = Imports(); import->Name != 0; ++import) {
            names.push_back(LibraryName(*import));
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    std::vector<std::string> FunctionsFrom(const std::string& library) const {
        std::vector<std::string> names;
        for (const auto* import = Imports(); import->Name != 0; ++import) {
            if (LibraryName(*import) != library) continue;
            const auto* thunk = InMemory<IMAGE_THUNK_DATA>(import->OriginalFirstThunk);
            for (; thunk->u1.AddressOfData != 0; ++thunk) {
                if (IMAGE_SNAP_BY_ORDINAL(thunk->u1.Ordinal)) {
                    names.push_back("#" + std::to_string(IMAGE_ORDINAL(thunk->u1.Ordinal)));
                    continue;
                }
                const auto address = static_cast<DWORD>(thunk->u1.AddressOfData);
                names.emplace_back(InMemory<char>(address + offsetof(IMAGE_IMPORT_BY_NAME, Name)));
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    bool Holds(const std::string& text) const {
        return std::search(bytes_.begin(), bytes_.end(), text.begin(), text.end()) != bytes_.end();
    }

  private:
    const IMAGE_IMPORT_DESCRIPTOR* Imports() const {
        const auto& table = Optional().DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        return InMemory<IMAGE_IMPORT_DESCRIPTOR>(table.VirtualAddress);
    }
    std::string LibraryName(const IMAGE_IMPORT_DESCRIPTOR& import) const {
        std::string name = InMemory<char>(import.Name);
        std::transform(name.begin(), name.end(), name.begin(), ::tolower);
        return name;
    }
    template <typename T>
    const T* At(size_t place) const {
        return reinterpret_cast<const T*>(bytes_.data() + place);
    }
    // What will be at this address once the file is loaded.
    template <typename T>
    const T* InMemory(DWORD address) const {
        for (const IMAGE_SECTION_HEADER& section : Sections()) {
            const DWORD offset = address - section.VirtualAddress;
            if (offset < section.SizeOfRawData) return At<T>(section.PointerToRawData + offset);
        }
        ADD_FAILURE() << "no section of the file has the address " << address;
        std::abort();
    }

    std::vector<char> bytes_;
    const IMAGE_NT_HEADERS* headers_ = nullptr;
};

struct Shipped {
    std::filesystem::path (*path)();
    std::vector<std::string> libraries;
};

// For messages of tests.
void PrintTo(const Shipped& file, std::ostream* out) { *out << file.path().filename().string(); }

class ImageHeaders : public testing::TestWithParam<Shipped> {
  protected:
    void SetUp() override { ASSERT_TRUE(file_.IsWhole()); }

    const ImageFile file_{GetParam().path()};
};

TEST_P(ImageHeaders, AllThatTheSystemOffersAgainstOverrunsIsOn) {
    constexpr bool k32Bit = sizeof(void*) == 4;
    constexpr WORD kHighEntropy = 0x0020;
    const WORD flags = file_.Optional().DllCharacteristics;
    EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    // 32-bit: no exception handler of ours is ever on the stack, so none that stands there is
    // called. 64-bit: the place in the address space is random in all of its bits.
    EXPECT_TRUE(flags & (k32Bit ? IMAGE_DLLCHARACTERISTICS_NO_SEH : kHighEntropy));
    // Without these it could not be loaded anywhere else.
    EXPECT_FALSE(file_.Header().Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
    EXPECT_GT(file_.Optional().DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size, 0u);
}

// Every other library of the system's would be looked for beside the program first.
TEST_P(ImageHeaders, TheLibrariesThatItNeeds) {
    EXPECT_EQ(file_.ImportedLibraries(), GetParam().libraries);
}

TEST_P(ImageHeaders, NoLibraryIsLoadedLater) {
    EXPECT_EQ(file_.Optional().DataDirectory[IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT].Size, 0u);
}

// All of these are in Windows 7. One that is not would keep the module from being loaded there.
TEST(ModuleImports, TheFunctionsOfKernel32) {
    std::vector<std::string> names = {"AcquireSRWLockExclusive",
                                      "CloseHandle",
                                      "CreateEventW",
                                      "CreateThread",
                                      "DeleteCriticalSection",
                                      "EnterCriticalSection",
                                      "GetCurrentProcess",
                                      "GetCurrentProcessId",
                                      "GetCurrentThread",
                                      "GetCurrentThreadId",
                                      "GetLastError",
                                      "GetModuleFileNameW",
                                      "GetProcessAffinityMask",
                                      "GetSystemInfo",
                                      "GetSystemTimeAsFileTime",
                                      "GetThreadPriority",
                                      "InitializeCriticalSection",
                                      "IsDBCSLeadByteEx",
                                      "IsProcessorFeaturePresent",
                                      "LeaveCriticalSection",
                                      "MultiByteToWideChar",
                                      "QueryPerformanceCounter",
                                      "QueryPerformanceFrequency",
                                      "ReleaseSRWLockExclusive",
                                      "ReleaseSemaphore",
                                      "ResetEvent",
                                      "SetEvent",
                                      "SetProcessAffinityMask",
                                      "SetThreadPriority",
                                      "Sleep",
                                      "TerminateProcess",
                                      "TlsGetValue",
                                      "VirtualProtect",
                                      "VirtualQuery",
                                      "WaitForSingleObject",
                                      "WideCharToMultiByte",
                                      "lstrcmpiW",
                                      "lstrcpynW"};
    if (sizeof(void*) == 4)
        names.insert(names.end(), {"FreeLibrary", "GetModuleHandleA", "GetModuleHandleW",
                                   "GetProcAddress", "LoadLibraryA"});
    std::sort(names.begin(), names.end());
    const ImageFile module(tavo_test::ModulePath());
    ASSERT_TRUE(module.IsWhole());
    EXPECT_EQ(module.FunctionsFrom("kernel32.dll"), names);
}

TEST_P(ImageHeaders, TheSymbolsLieBesideIt) {
    EXPECT_EQ(file_.Header().NumberOfSymbols, 0u);
    std::filesystem::path path = GetParam().path();
    path += L".debug";
    const ImageFile symbols(path);
    ASSERT_TRUE(symbols.IsWhole());
    EXPECT_GT(symbols.Header().NumberOfSymbols, 1000u);
    // Debuggers find it by its name, and match addresses by its sections.
    EXPECT_TRUE(file_.Holds(path.filename().string()));
    EXPECT_EQ(symbols.Optional().AddressOfEntryPoint, file_.Optional().AddressOfEntryPoint);
    EXPECT_EQ(symbols.Sections().at(0).VirtualAddress, file_.Sections().at(0).VirtualAddress);
    EXPECT_EQ(symbols.Sections().at(0).Misc.VirtualSize, file_.Sections().at(0).Misc.VirtualSize);
}

TEST_P(ImageHeaders, NothingTellsWhenItWasBuilt) {
    std::filesystem::path path = GetParam().path();
    path += L".debug";
    const ImageFile symbols(path);
    ASSERT_TRUE(symbols.IsWhole());
    EXPECT_EQ(file_.Header().TimeDateStamp, 0u);
    EXPECT_EQ(symbols.Header().TimeDateStamp, 0u);
}

TEST_P(ImageHeaders, NothingTellsWhereItWasBuilt) {
    std::filesystem::path path = GetParam().path();
    path += L".debug";
    const ImageFile symbols(path);
    ASSERT_TRUE(symbols.IsWhole());
    for (const char* folder : {TAVO_SOURCE_FOLDER, TAVO_BINARY_FOLDER}) {
        EXPECT_FALSE(file_.Holds(folder));
        EXPECT_FALSE(symbols.Holds(folder));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Shipped, ImageHeaders,
    testing::Values(Shipped{&tavo_test::VantrelPath,
                            {"advapi32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
                             "oleaut32.dll", "user32.dll"}},
                    Shipped{&tavo_test::ModulePath,
                            {"advapi32.dll", "comctl32.dll", "gdi32.dll", "kernel32.dll",
                             "msvcrt.dll", "ole32.dll", "user32.dll", "winmm.dll"}}));

}  // namespace
}  // namespace tavo
