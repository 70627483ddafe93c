// A module as the registry and the platform's filter mapper see it: exact keys.
#include <algorithm>
#include <string>
#include <vector>

#include "tests/dshow/module_fixture.h"
#include "tests/support/graph.h"

using namespace tavo_test;

namespace {

// A key under HKEY_CLASSES_ROOT, with what is in it.
class KeyView {
  public:
    explicit KeyView(const std::wstring& path) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
            return;
        exists = true;
        WCHAR name[256];
        for (DWORD i = 0;; ++i) {
            DWORD length = 256;
            if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr)) break;
            keys.emplace_back(name);
        }
        for (DWORD i = 0;; ++i) {
            DWORD length = 256;
            if (RegEnumValueW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr)) break;
            values.emplace_back(name);
        }
        std::sort(keys.begin(), keys.end());
        std::sort(values.begin(), values.end());
        RegCloseKey(key);
    }
    static std::wstring Text(const std::wstring& path, const wchar_t* value) {
        WCHAR text[1024] = {};
        DWORD bytes = sizeof text;
        const LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT, path.c_str(), value, RRF_RT_REG_SZ,
                                            nullptr, text, &bytes);
        return status == ERROR_SUCCESS ? text : L"<none>";
    }

    bool exists = false;
    std::vector<std::wstring> keys;
    std::vector<std::wstring> values;
};

std::wstring Text(REFGUID guid) {
    WCHAR text[39] = {};
    StringFromGUID2(guid, text, 39);
    return text;
}

class Registration : public ModuleTest {
  protected:
    using Names = std::vector<std::wstring>;
    static std::wstring ClassKey(REFCLSID clsid) { return L"CLSID\\" + Text(clsid); }
    static std::wstring InstanceKey() {
        return L"CLSID\\{083863F1-70DE-11D0-BD40-00A0C911CE86}\\Instance\\" + Text(kModuleFilter);
    }
    void TearDown() override { module_.UnregisterServer(); }
};

TEST_F(Registration, WritesExactlyTheseKeys) {
    ASSERT_EQ(module_.UnregisterServer(), S_OK);
    for (int round = 0; round < 2; ++round) {  // registering twice is no error
        ASSERT_EQ(module_.RegisterServer(), S_OK);
        const struct {
            REFCLSID clsid;
            const wchar_t* name;
        } rows[] = {{kModuleFilter, kModuleFilterName}, {kModulePlain, kModulePlainName}};
        for (const auto& row : rows) {
            const std::wstring key = ClassKey(row.clsid);
            const KeyView view(key);
            ASSERT_TRUE(view.exists);
            EXPECT_EQ(view.keys, Names({L"InprocServer32"}));
            EXPECT_EQ(view.values, Names({L""}));
            EXPECT_EQ(KeyView::Text(key, nullptr), row.name);
            const std::wstring server = key + L"\\InprocServer32";
            const KeyView serverView(server);
            EXPECT_EQ(serverView.keys, Names());
            EXPECT_EQ(serverView.values, Names({L"", L"ThreadingModel"}));
            EXPECT_EQ(KeyView::Text(server, nullptr), ModuleFile());
            EXPECT_EQ(KeyView::Text(server, L"ThreadingModel"), L"Both");
        }
        const KeyView instance(InstanceKey());
        ASSERT_TRUE(instance.exists);
        EXPECT_EQ(instance.values, Names({L"CLSID", L"FilterData", L"FriendlyName"}));
        EXPECT_EQ(KeyView::Text(InstanceKey(), L"CLSID"), Text(kModuleFilter));
        EXPECT_EQ(KeyView::Text(InstanceKey(), L"FriendlyName"), kModuleFilterName);
    }
}

TEST_F(Registration, RegisteredClassesCanBeMade) {
    ASSERT_EQ(module_.RegisterServer(), S_OK);
    ComPtr<IBaseFilter> filter = CreateObject<IBaseFilter>(kModuleFilter);
    ASSERT_TRUE(filter);
    EXPECT_TRUE(GetPin(filter.Get(), PINDIR_OUTPUT));
    EXPECT_TRUE(CreateObject<IPersist>(kModulePlain));
    EXPECT_EQ(module_.CanUnloadNow(), S_FALSE);
    filter.Reset();
    CoFreeUnusedLibraries();
}

TEST_F(Registration, MapperKnowsTheFilter) {
    ASSERT_EQ(module_.RegisterServer(), S_OK);
    const auto mapper = CreateObject<IFilterMapper2>(CLSID_FilterMapper2);
    ASSERT_TRUE(mapper);
    ComPtr<IEnumMoniker> monikers;
    const GUID types[] = {MEDIATYPE_Video, MEDIASUBTYPE_RGB24};
    ASSERT_EQ(
        mapper->EnumMatchingFilters(monikers.Put(), 0, FALSE, MERIT_DO_NOT_USE, TRUE, 1, types,
                                    nullptr, nullptr, FALSE, TRUE, 0, nullptr, nullptr, nullptr),
        S_OK);
    bool found = false;
    ComPtr<IMoniker> moniker;
    while (monikers->Next(1, moniker.Put(), nullptr) == S_OK) {
        ComPtr<IPropertyBag> bag;
        if (FAILED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid()))) {
            bag.Detach();
            continue;
        }
        VARIANT name;
        VariantInit(&name);
        if (SUCCEEDED(bag->Read(L"FriendlyName", &name, nullptr)))
            found = found || std::wstring(name.bstrVal) == kModuleFilterName;
        VariantClear(&name);
    }
    moniker.Detach();
    EXPECT_TRUE(found);
}

TEST_F(Registration, UnregisteringLeavesNothing) {
    ASSERT_EQ(module_.RegisterServer(), S_OK);
    // What others have put below the class goes too.
    HKEY extra = nullptr;
    const std::wstring below = ClassKey(kModulePlain) + L"\\Extra\\Deeper";
    ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, below.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                              &extra, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(extra);
    EXPECT_EQ(module_.UnregisterServer(), S_OK);
    for (REFCLSID clsid : {kModuleFilter, kModulePlain, kModuleNull, kModuleTwice})
        EXPECT_FALSE(KeyView(ClassKey(clsid)).exists);
    EXPECT_FALSE(KeyView(InstanceKey()).exists);
    EXPECT_EQ(module_.UnregisterServer(), S_OK);  // what is not there is no error
}

TEST_F(Registration, PathOutsideTheCodePage) {
    const std::wstring folder = FolderOfThisProgram() + L"m\u00F6d\u4E2D\u0416";
    const std::wstring copy = folder + L"\\t\u00EBst module.ax";
    CreateDirectoryW(folder.c_str(), nullptr);
    ASSERT_TRUE(CopyFileW(ModuleFile().c_str(), copy.c_str(), FALSE));
    {
        const Module loaded(copy.c_str());
        ASSERT_TRUE(loaded.loaded());
        EXPECT_EQ(loaded.RegisterServer(), S_OK);
        EXPECT_EQ(KeyView::Text(ClassKey(kModuleFilter) + L"\\InprocServer32", nullptr), copy);
        EXPECT_EQ(loaded.UnregisterServer(), S_OK);
    }
    DeleteFileW(copy.c_str());
    RemoveDirectoryW(folder.c_str());
}

TEST_F(Registration, ThreadsApartmentIsLeftAsItWas) {
    // This thread is free-threaded: the layer's own CoInitialize fails and must not be undone.
    ASSERT_EQ(module_.RegisterServer(), S_OK);
    ASSERT_EQ(module_.UnregisterServer(), S_OK);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
    CoUninitialize();
    APTTYPE type;
    APTTYPEQUALIFIER qualifier;
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
    EXPECT_EQ(type, APTTYPE_MTA);
}

}  // namespace
