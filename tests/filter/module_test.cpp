// The module as a COM server: its exports, its classes, aggregation, and when it may be unloaded.
#include <algorithm>
#include <string>
#include <vector>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/module_imports.h"
#include "tests/support/graph.h"
#include "tests/support/handles.h"

using namespace tavo_test;

namespace {

class ModuleTest : public FilterTest {};

// Views the loaded module as the file that it was.
template <typename T>
const T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<const T*>(reinterpret_cast<const BYTE*>(module) + offset);
}

const IMAGE_DATA_DIRECTORY& Directory(HMODULE module, int index) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
    return headers->OptionalHeader.DataDirectory[index];
}

TEST_F(ModuleTest, ExportsTheFourFunctionsUndecoratedAndNothingElse) {
    const HMODULE module = TheModule().handle();
    const auto* exports = At<IMAGE_EXPORT_DIRECTORY>(
        module, Directory(module, IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    EXPECT_EQ(exports->NumberOfFunctions, 4u);
    std::vector<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        names.emplace_back(At<char>(module, At<DWORD>(module, exports->AddressOfNames)[i]));
    EXPECT_EQ(names, (std::vector<std::string>{"DllCanUnloadNow", "DllGetClassObject",
                                               "DllRegisterServer", "DllUnregisterServer"}));
    EXPECT_STREQ(At<char>(module, exports->Name), "TavoResample.ax");
}

TEST_F(ModuleTest, NeedsNoRunTimeLibraryBesideIt) {
    const HMODULE module = TheModule().handle();
    const auto* import = At<IMAGE_IMPORT_DESCRIPTOR>(
        module, Directory(module, IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    int count = 0;
    for (; import->Name; ++import, ++count) {
        std::string name(At<char>(module, import->Name));
        std::transform(name.begin(), name.end(), name.begin(), ::tolower);
        for (const char* library : {"libgcc", "libstdc++", "libwinpthread", "msvcp", "vcruntime"})
            EXPECT_EQ(name.find(library), std::string::npos) << name;
    }
    EXPECT_GT(count, 1);
}

TEST_F(ModuleTest, DescribesItselfInAVersionResource) {
    const HRSRC resource =
        FindResourceW(TheModule().handle(), MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
    ASSERT_NE(resource, nullptr);
    const DWORD size = SizeofResource(TheModule().handle(), resource);
    const auto* data =
        static_cast<const char*>(LockResource(LoadResource(TheModule().handle(), resource)));
    const std::string bytes(data, size);
    const wchar_t name[] = L"TavoResample";
    EXPECT_NE(bytes.find(std::string(reinterpret_cast<const char*>(name), sizeof name)),
              std::string::npos);
}

TEST_F(ModuleTest, HasTheClassesOfItsTable) {
    for (const auto& [clsid, exists] :
         std::initializer_list<std::pair<CLSID, bool>>{{CLSID_VantrelFilter, true},
                                                       {CLSID_ResamplePropertyPage, true},
                                                       {CLSID_TimeRegulatorPropertyPage, true},
                                                       {IID_IVantrelSettings, false},
                                                       {CLSID_NULL, false}}) {
        for (const IID& iid : {IID_IClassFactory, IID_IUnknown}) {
            void* factory = &factory;
            EXPECT_EQ(TheModule().GetClassObject(clsid, iid, &factory),
                      exists ? S_OK : CLASS_E_CLASSNOTAVAILABLE);
            EXPECT_EQ(factory != nullptr, exists);
            if (factory) static_cast<IUnknown*>(factory)->Release();
        }
    }
}

TEST_F(ModuleTest, GetClassObjectRefusesOtherInterfacesAndNull) {
    void* object = &object;
    EXPECT_EQ(TheModule().GetClassObject(CLSID_VantrelFilter, IID_IBaseFilter, &object),
              E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(TheModule().GetClassObject(CLSID_VantrelFilter, IID_IClassFactory, nullptr),
              E_POINTER);
}

ComPtr<IClassFactory> Factory() {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(TheModule().GetClassObject(CLSID_VantrelFilter, IID_IClassFactory, factory.PutVoid()),
              S_OK);
    return factory;
}

TEST_F(ModuleTest, ObjectsFactoriesAndLocksHoldTheModule) {
    EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
    {
        const ComPtr<IClassFactory> factory = Factory();
        EXPECT_EQ(TheModule().CanUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
    {
        const ComPtr<IBaseFilter> filter = CreateFilter();
        EXPECT_EQ(TheModule().CanUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
    EXPECT_EQ(Factory()->LockServer(TRUE), S_OK);
    EXPECT_EQ(Factory()->LockServer(TRUE), S_OK);
    EXPECT_EQ(TheModule().CanUnloadNow(), S_FALSE);
    EXPECT_EQ(Factory()->LockServer(FALSE), S_OK);
    EXPECT_EQ(TheModule().CanUnloadNow(), S_FALSE);
    EXPECT_EQ(Factory()->LockServer(FALSE), S_OK);
    EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
}

TEST_F(ModuleTest, CreateInstanceLeavesNothingBehindWhenItRefuses) {
    const ComPtr<IClassFactory> factory = Factory();
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IBaseFilter, nullptr), E_POINTER);
    void* object = &object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPin, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    const ComPtr<IBaseFilter> outer = CreateFilter();
    object = &object;
    EXPECT_EQ(factory->CreateInstance(outer.Get(), IID_IBaseFilter, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(RefCount(outer.Get()), 1u);
}

// An object of another kind that holds a filter inside it.
class Outer final : public IUnknown {
  public:
    std::atomic<long> references = 1;
    ComPtr<IUnknown> inner;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (iid != IID_IUnknown) return inner->QueryInterface(iid, object);
        *object = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
};

TEST_F(ModuleTest, AnAggregatedFilterHasTheIdentityOfItsOuterObject) {
    Outer outer;
    ASSERT_EQ(Factory()->CreateInstance(&outer, IID_IUnknown, outer.inner.PutVoid()), S_OK);
    EXPECT_EQ(outer.references, 1) << "an inner object does not count its outer one";
    {
        const auto filter = outer.inner.As<IBaseFilter>();
        ASSERT_TRUE(filter);
        EXPECT_EQ(outer.references, 2);
        for (const IID& iid : {IID_IVantrelSettings, IID_ISpecifyPropertyPages, IID_IBaseFilter,
                               IID_IMediaFilter, IID_IPersist}) {
            ComPtr<IUnknown> object;
            ASSERT_EQ(outer.QueryInterface(iid, object.PutVoid()), S_OK);
            EXPECT_EQ(object.As<IUnknown>().Get(), &outer);
            EXPECT_EQ(object.As<IBaseFilter>().Get(), filter.Get());
        }
        const long before = outer.references;
        const ComPtr<IPin> pin = GetPin(filter.Get(), PINDIR_INPUT);
        EXPECT_EQ(outer.references, before + 1) << "a pin holds the whole object";
        PIN_INFO info = {};
        EXPECT_EQ(pin->QueryPinInfo(&info), S_OK);
        EXPECT_EQ(info.pFilter, filter.Get());
        if (info.pFilter) info.pFilter->Release();
    }
    EXPECT_EQ(outer.references, 1);
    outer.inner.Reset();
    EXPECT_EQ(TheModule().CanUnloadNow(), S_OK);
}

TEST_F(ModuleTest, AnAggregatedFilterStreams) {
    Outer outer;
    ASSERT_EQ(Factory()->CreateInstance(&outer, IID_IUnknown, outer.inner.PutVoid()), S_OK);
    {
        FilterRig rig;
        rig.Use(outer.inner.As<IBaseFilter>());
        ASSERT_EQ(rig.Connect(MakeVideoType({.width = 64, .height = 48})), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(rig.Deliver(SampleSpec{}), S_OK);
        EXPECT_EQ(rig.samples().size(), 1u);
    }
    EXPECT_EQ(outer.references, 1);
}

// What compilers' run times take at every load: a host that loads the module often runs out of it.
TEST_F(ModuleTest, TakesNothingThatItCannotGiveBack) {
    const HMODULE module = TheModule().handle();
    for (const char* function :
         {"TlsAlloc", "FlsAlloc", "AddVectoredExceptionHandler", "HeapCreate", "DuplicateHandle"}) {
        EXPECT_EQ(FindImport(module, "kernel32.dll", function), nullptr) << function;
    }
    EXPECT_NE(FindImport(module, "kernel32.dll", "CreateEventW"), nullptr) << "those it can";
}

// A copy of the module, so that the last FreeLibrary is really the last.
TEST_F(ModuleTest, LoadingAndUnloadingLeavesNoHandleBehind) {
    wchar_t folder[MAX_PATH] = {};
    wchar_t copy[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    ASSERT_NE(GetTempFileNameW(folder, L"vtr", 0, copy), 0u);
    ASSERT_TRUE(CopyFileW(ModulePath().c_str(), copy, FALSE));
    int before = 0;
    for (int round = 0; round < 60; ++round) {
        {
            const Module module(copy);
            ASSERT_TRUE(module.loaded());
            ASSERT_NE(module.handle(), TheModule().handle());
            {
                const auto filter = module.Create<IBaseFilter>(CLSID_VantrelFilter);
                ASSERT_TRUE(filter);
                const ComPtr<IPin> pin = GetPin(filter.Get(), PINDIR_INPUT);
                EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
            }
            EXPECT_EQ(module.CanUnloadNow(), S_OK);
        }
        EXPECT_EQ(GetModuleHandleW(copy), nullptr);
        if (round == 9) before = HandlesInUse();
    }
    EXPECT_EQ(HandlesInUse(), before);
    EXPECT_TRUE(DeleteFileW(copy));
}

}  // namespace
