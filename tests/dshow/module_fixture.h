// The test module, loaded from beside this program.
#pragma once

#include <string>

#include "tests/dshow/probes.h"
#include "tests/dshow/test_module_ids.h"
#include "tests/support/module.h"

namespace tavo_test {

inline std::wstring FolderOfThisProgram() {
    WCHAR path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring whole = path;
    return whole.substr(0, whole.find_last_of(L'\\') + 1);
}

inline std::wstring ModuleFile() { return FolderOfThisProgram() + L"dshow_test_module.ax"; }

class ModuleTest : public DshowTest {
  protected:
    ~ModuleTest() override { EXPECT_EQ(module_.CanUnloadNow(), S_OK); }
    void SetUp() override { ASSERT_TRUE(module_.loaded()); }
    ComPtr<IClassFactory> Factory(REFCLSID clsid) {
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(module_.GetClassObject(clsid, IID_IClassFactory, factory.PutVoid()), S_OK);
        return factory;
    }

    Module module_{ModuleFile().c_str()};
};

}  // namespace tavo_test
