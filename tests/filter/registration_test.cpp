// What DllRegisterServer writes, as the registry and the filter mapper show it.
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "tests/filter/support/filter_rig.h"
#include "tests/support/media_types.h"

using namespace tavo_test;

namespace {

const std::wstring kFilterKey = L"CLSID\\{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}";
const std::wstring kInstanceKey =
    L"CLSID\\{083863F1-70DE-11D0-BD40-00A0C911CE86}\\Instance\\"
    L"{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}";
const std::wstring kPageKeys[] = {L"CLSID\\{7C9F63C6-786B-4752-908E-460A061FA9D7}",
                                  L"CLSID\\{D7A3BD9A-E8A3-49E9-8261-CD2A7AC78403}"};

std::optional<std::vector<BYTE>> ReadValue(const std::wstring& key, const wchar_t* name,
                                           DWORD flags) {
    DWORD size = 0;
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, flags, nullptr, nullptr, &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    std::vector<BYTE> bytes(size);
    RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, flags, nullptr, bytes.data(), &size);
    bytes.resize(size);
    return bytes;
}

std::optional<std::wstring> ReadText(const std::wstring& key, const wchar_t* name) {
    const auto bytes = ReadValue(key, name, RRF_RT_REG_SZ);
    if (!bytes) return std::nullopt;
    return std::wstring(reinterpret_cast<const wchar_t*>(bytes->data()));
}

bool KeyExists(const std::wstring& key) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
        return false;
    RegCloseKey(opened);
    return true;
}

std::vector<std::wstring> SubKeys(const std::wstring& key) {
    std::vector<std::wstring> names;
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
        return names;
    wchar_t name[256];
    for (DWORD i = 0, size = 256;
         RegEnumKeyExW(opened, i, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++i, size = 256)
        names.emplace_back(name);
    RegCloseKey(opened);
    return names;
}

class RegistrationTest : public FilterTest {
  protected:
    RegistrationTest() { checksTaskMemory_ = false; }

    void TearDown() override {
        EXPECT_EQ(TheModule().UnregisterServer(), S_OK);
        FilterTest::TearDown();
    }

    // Whether the mapper finds the filter for video in and out, from a merit on.
    static bool MapperFinds(DWORD merit) {
        const auto mapper = CreateObject<IFilterMapper2>(CLSID_FilterMapper2);
        EXPECT_TRUE(mapper);
        const GUID types[] = {MEDIATYPE_Video, FourCC("YV12")};
        ComPtr<IEnumMoniker> found;
        EXPECT_EQ(mapper->EnumMatchingFilters(found.Put(), 0, FALSE, merit, TRUE, 1, types, nullptr,
                                              nullptr, FALSE, TRUE, 1, types, nullptr, nullptr),
                  S_OK);
        ComPtr<IMoniker> moniker;
        bool finds = false;
        while (found->Next(1, moniker.Put(), nullptr) == S_OK)
            finds = finds || NameOf(moniker.Get()) == L"Mira Vantrel";
        moniker.Detach();
        return finds;
    }

    static std::wstring NameOf(IMoniker* moniker) {
        ComPtr<IPropertyBag> bag;
        if (FAILED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid())))
            return {};
        VARIANT value = {};
        VariantInit(&value);
        if (FAILED(bag->Read(L"FriendlyName", &value, nullptr))) return {};
        const std::wstring name(value.bstrVal);
        VariantClear(&value);
        return name;
    }
};

TEST_F(RegistrationTest, WritesTheKeysOfTheFilterClass) {
    ASSERT_EQ(TheModule().RegisterServer(), S_OK);
    EXPECT_EQ(ReadText(kFilterKey, nullptr), L"Mira Vantrel");
    const std::wstring server = kFilterKey + L"\\InprocServer32";
    const auto path = ReadText(server, nullptr);
    ASSERT_TRUE(path);
    EXPECT_EQ(_wcsicmp(path->c_str(), ModulePath().c_str()), 0);
    EXPECT_EQ(ReadText(server, L"ThreadingModel"), L"Both");
    EXPECT_EQ(SubKeys(kFilterKey), std::vector<std::wstring>{L"InprocServer32"});
}

TEST_F(RegistrationTest, PropertyPagesAreClassesButNoFilters) {
    ASSERT_EQ(TheModule().RegisterServer(), S_OK);
    const wchar_t* names[] = {L"Corvane Vantrel Property Page",
                              L"Corvane Time Regulator Property Page"};
    for (int i = 0; i < 2; ++i) {
        const std::wstring expected = names[i];
        EXPECT_TRUE(KeyExists(kPageKeys[i]));
        EXPECT_EQ(ReadText(kPageKeys[i], nullptr), expected);
        EXPECT_EQ(ReadText(kPageKeys[i] + L"\\InprocServer32", L"ThreadingModel"), L"Both");
        const std::wstring instances = kInstanceKey.substr(0, kInstanceKey.find_last_of(L'\\') + 1);
        EXPECT_FALSE(KeyExists(instances + kPageKeys[i].substr(6)));
    }
}

TEST_F(RegistrationTest, TheFilterIsAnInstanceOfTheDefaultCategory) {
    ASSERT_EQ(TheModule().RegisterServer(), S_OK);
    EXPECT_EQ(ReadText(kInstanceKey, L"FriendlyName"), L"Mira Vantrel");
    const auto clsid = ReadText(kInstanceKey, L"CLSID");
    ASSERT_TRUE(clsid);
    EXPECT_EQ(_wcsicmp(clsid->c_str(), kFilterKey.c_str() + 6), 0);
}

// Version 2 of the mapper's format: a header, then per pin a header, its types, and at the end the
// GUIDs that the types point to.
struct PinData {
    DWORD signature;
    DWORD flags;
    DWORD instances;
    DWORD types;
    DWORD mediums;
    DWORD category;
};
struct TypeData {
    DWORD signature;
    DWORD reserved;
    DWORD majorAt;
    DWORD minorAt;
};

template <typename T>
T Take(const std::vector<BYTE>& bytes, size_t& at) {
    T value = {};
    if (at + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + at, sizeof value);
    at += sizeof value;
    return value;
}

TEST_F(RegistrationTest, FilterDataHoldsMeritPinsAndMediaTypes) {
    ASSERT_EQ(TheModule().RegisterServer(), S_OK);
    const auto data = ReadValue(kInstanceKey, L"FilterData", RRF_RT_REG_BINARY);
    ASSERT_TRUE(data);
    size_t at = 0;
    EXPECT_EQ(Take<DWORD>(*data, at), 2u);
    EXPECT_EQ(Take<DWORD>(*data, at), 0x200000u);
    EXPECT_EQ(Take<DWORD>(*data, at), 2u);
    Take<DWORD>(*data, at);
    for (const bool isOutput : {false, true}) {
        const auto pin = Take<PinData>(*data, at);
        EXPECT_EQ(pin.flags & (REG_PINFLAG_B_OUTPUT | REG_PINFLAG_B_RENDERER | REG_PINFLAG_B_MANY |
                               REG_PINFLAG_B_ZERO),
                  isOutput ? DWORD{REG_PINFLAG_B_OUTPUT} : 0u);
        EXPECT_EQ(pin.types, 1u);
        EXPECT_EQ(pin.mediums, 0u);
        const auto type = Take<TypeData>(*data, at);
        size_t majorAt = type.majorAt;
        size_t minorAt = type.minorAt;
        EXPECT_EQ(Take<GUID>(*data, majorAt), MEDIATYPE_Video);
        EXPECT_EQ(Take<GUID>(*data, minorAt), MEDIASUBTYPE_NULL);
        EXPECT_LE(majorAt, data->size());
        EXPECT_LE(minorAt, data->size());
    }
}

TEST_F(RegistrationTest, TheMapperFindsTheFilterOnlyWhenUnwantedMeritsAreAskedFor) {
    EXPECT_FALSE(MapperFinds(MERIT_DO_NOT_USE));
    ASSERT_EQ(TheModule().RegisterServer(), S_OK);
    EXPECT_TRUE(MapperFinds(MERIT_DO_NOT_USE));
    EXPECT_FALSE(MapperFinds(MERIT_DO_NOT_USE + 1));
    EXPECT_FALSE(MapperFinds(MERIT_UNLIKELY));
}

TEST_F(RegistrationTest, RegisteringTwiceAndUnregisteringTwiceSucceed) {
    EXPECT_EQ(TheModule().RegisterServer(), S_OK);
    EXPECT_EQ(TheModule().RegisterServer(), S_OK);
    EXPECT_TRUE(KeyExists(kFilterKey));
    EXPECT_TRUE(KeyExists(kInstanceKey));
    EXPECT_EQ(TheModule().UnregisterServer(), S_OK);
    EXPECT_FALSE(KeyExists(kFilterKey));
    EXPECT_FALSE(KeyExists(kInstanceKey));
    for (const std::wstring& key : kPageKeys) EXPECT_FALSE(KeyExists(key));
    EXPECT_EQ(TheModule().UnregisterServer(), S_OK);
    EXPECT_FALSE(MapperFinds(MERIT_DO_NOT_USE));
}

TEST_F(RegistrationTest, ARegisteredFilterIsCreatedByItsClass) {
    EXPECT_FALSE(CreateObject<IBaseFilter>(CLSID_VantrelFilter));
    ASSERT_EQ(TheModule().RegisterServer(), S_OK);
    const auto filter = CreateObject<IBaseFilter>(CLSID_VantrelFilter);
    ASSERT_TRUE(filter);
    EXPECT_TRUE(filter.As<IVantrelSettings>(IID_IVantrelSettings));
}

}  // namespace
