// Walks over the import table of a loaded module.
#include "tests/filter/support/module_imports.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tavo_test {

ULONG_PTR* FindImport(HMODULE module, const char* library, const char* function) {
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* from =
        reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; from->Name; ++from) {
        if (lstrcmpiA(reinterpret_cast<const char*>(base + from->Name), library) != 0) continue;
        const auto* name = reinterpret_cast<const ULONG_PTR*>(base + from->OriginalFirstThunk);
        auto* address = reinterpret_cast<ULONG_PTR*>(base + from->FirstThunk);
        for (; *name; ++name, ++address) {
            if (IMAGE_SNAP_BY_ORDINAL(*name)) continue;
            const auto* import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + *name);
            if (std::strcmp(import->Name, function) == 0) return address;
        }
    }
    return nullptr;
}

ImportPatch::ImportPatch(HMODULE module, const char* library, const char* function,
                         ULONG_PTR target)
    : place_(FindImport(module, library, function)) {
    EXPECT_NE(place_, nullptr) << function << " of " << library;
    if (!place_) return;
    former_ = *place_;
    Exchange(target);
}

ImportPatch::~ImportPatch() {
    if (place_) Exchange(former_);
}

void ImportPatch::Exchange(ULONG_PTR target) {
    DWORD before = 0;
    ASSERT_TRUE(VirtualProtect(place_, sizeof *place_, PAGE_READWRITE, &before));
    *place_ = target;
    VirtualProtect(place_, sizeof *place_, before, &before);
}

}  // namespace tavo_test
