// A module as COM sees it: exports, class factory rows, locks.
#include <algorithm>
#include <string>
#include <vector>

#include "tests/dshow/fakes.h"
#include "tests/dshow/module_fixture.h"

using namespace tavo_test;

namespace {

TEST_F(ModuleTest, ExportsExactlyFourUndecoratedNames) {
    const auto* base = reinterpret_cast<const BYTE*>(module_.handle());
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD offset =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    ASSERT_NE(offset, 0u);
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + offset);
    const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    std::vector<std::string> found;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        found.emplace_back(reinterpret_cast<const char*>(base + names[i]));
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, std::vector<std::string>({"DllCanUnloadNow", "DllGetClassObject",
                                               "DllRegisterServer", "DllUnregisterServer"}));
}

TEST_F(ModuleTest, GetClassObject) {
    void* object = &object;
    EXPECT_EQ(module_.GetClassObject(kHostClass, IID_IClassFactory, &object),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    // The interface is tested before the class.
    EXPECT_EQ(module_.GetClassObject(kHostClass, IID_IBaseFilter, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(module_.GetClassObject(kModuleFilter, IID_IBaseFilter, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(module_.GetClassObject(kModuleFilter, IID_IClassFactory, nullptr), E_POINTER);
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(module_.GetClassObject(kModuleFilter, IID_IUnknown, unknown.PutVoid()), S_OK);
    EXPECT_EQ(RefCount(unknown.Get()), 1u);
    const ComPtr<IClassFactory> factory = unknown.As<IClassFactory>();
    ASSERT_TRUE(factory);
    EXPECT_EQ(factory.As<IUnknown>().Get(), unknown.Get());
    void* none = &none;
    EXPECT_EQ(factory->QueryInterface(IID_IBaseFilter, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ModuleTest, FactoryAndObjectsKeepTheModule) {
    EXPECT_EQ(module_.CanUnloadNow(), S_OK);
    ComPtr<IClassFactory> factory = Factory(kModulePlain);
    EXPECT_EQ(module_.CanUnloadNow(), S_FALSE);
    ComPtr<IPersist> object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, object.PutVoid()), S_OK);
    factory.Reset();
    EXPECT_EQ(module_.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(RefCount(object.Get()), 1u);
    object.Reset();
    EXPECT_EQ(module_.CanUnloadNow(), S_OK);
}

TEST_F(ModuleTest, Lock) {
    const ComPtr<IClassFactory> factory = Factory(kModulePlain);
    const ComPtr<IClassFactory> other = Factory(kModuleFilter);
    EXPECT_EQ(factory->LockServer(TRUE), NOERROR);
    EXPECT_EQ(other->LockServer(TRUE), NOERROR);
    ComPtr<IClassFactory>(factory).Reset();
    EXPECT_EQ(module_.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), NOERROR);
    EXPECT_EQ(other->LockServer(FALSE), NOERROR);
}

TEST_F(ModuleTest, LockAloneKeepsTheModule) {
    ComPtr<IClassFactory> factory = Factory(kModulePlain);
    EXPECT_EQ(factory->LockServer(TRUE), NOERROR);
    factory.Reset();
    EXPECT_EQ(module_.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(Factory(kModuleFilter)->LockServer(FALSE), NOERROR);  // module-wide
    EXPECT_EQ(module_.CanUnloadNow(), S_OK);
}

TEST_F(ModuleTest, AnUnlockWithoutALockTakesNothingBack) {
    const ComPtr<IClassFactory> factory = Factory(kModulePlain);
    EXPECT_EQ(factory->LockServer(FALSE), NOERROR);
    EXPECT_EQ(factory->LockServer(FALSE), NOERROR);
    EXPECT_EQ(factory->LockServer(TRUE), NOERROR);
    ComPtr<IClassFactory>(factory).Reset();
    EXPECT_EQ(module_.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), NOERROR);
}

TEST_F(ModuleTest, ALockOutlivesUnlocksThatCameBeforeIt) {
    ComPtr<IClassFactory> factory = Factory(kModulePlain);
    EXPECT_EQ(factory->LockServer(FALSE), NOERROR);
    EXPECT_EQ(factory->LockServer(TRUE), NOERROR);
    factory.Reset();
    EXPECT_EQ(module_.CanUnloadNow(), S_FALSE) << "the lock was taken back before it was made";
    EXPECT_EQ(Factory(kModulePlain)->LockServer(FALSE), NOERROR);
    EXPECT_EQ(module_.CanUnloadNow(), S_OK);
}

TEST_F(ModuleTest, CreateInstanceRows) {
    ComPtr<IClassFactory> factory = Factory(kModulePlain);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    void* object = &object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IBaseFilter, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    const struct {
        REFCLSID clsid;
        HRESULT expected;
    } rows[] = {{kModuleNull, E_OUTOFMEMORY},
                {kModuleNullWithFailure, E_ACCESSDENIED},
                {kModuleObjectWithFailure, E_ABORT}};
    for (const auto& row : rows) {
        factory = Factory(row.clsid);
        object = &object;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &object), row.expected);
        EXPECT_EQ(object, nullptr);
    }
    factory.Reset();
    EXPECT_EQ(module_.CanUnloadNow(), S_OK);  // refused and failed objects are gone
    EXPECT_TRUE(module_.Create<IPersist>(kModuleTwice));
}

TEST_F(ModuleTest, CreateAggregated) {
    FakeOuter outer;
    const ComPtr<IClassFactory> factory = Factory(kModulePlain);
    void* object = &object;
    EXPECT_EQ(factory->CreateInstance(&outer, IID_IPersist, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    ComPtr<IUnknown> inner;
    ASSERT_EQ(factory->CreateInstance(&outer, IID_IUnknown, inner.PutVoid()), S_OK);
    EXPECT_EQ(outer.references, 0);
    EXPECT_EQ(RefCount(inner.Get()), 1u);
    ComPtr<IPersist> persist = inner.As<IPersist>();
    ASSERT_TRUE(persist);
    EXPECT_EQ(outer.references, 1);
    EXPECT_EQ(persist.As<IUnknown>().Get(), &outer);
}

TEST_F(ModuleTest, InitRoutinesOnLoadAndUnload) {
    const std::wstring copy = FolderOfThisProgram() + L"dshow_test_module_copy.ax";
    ASSERT_TRUE(CopyFileW(ModuleFile().c_str(), copy.c_str(), FALSE));
    SetEnvironmentVariableW(kInitVariable, nullptr);
    WCHAR text[64] = {};
    {
        const Module loaded(copy.c_str());
        ASSERT_TRUE(loaded.loaded());
        GetEnvironmentVariableW(kInitVariable, text, 64);
        EXPECT_STREQ(text, L"FP");
    }
    GetEnvironmentVariableW(kInitVariable, text, 64);
    EXPECT_STREQ(text, L"FPfp");
    DeleteFileW(copy.c_str());
}

}  // namespace
