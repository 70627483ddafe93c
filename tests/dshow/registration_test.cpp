// Registration against a filter mapper of the test's own: what it is asked, in which order, and
// what follows from its failures. The class table here belongs to this program.
#include <string>
#include <vector>

#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"

using namespace tavo_test;

namespace {

constexpr GUID kFirst = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x11}};
constexpr GUID kBare = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x12}};
constexpr GUID kSecond = {
    0x5D3F1A00, 0x77C2, 0x4B7E, {0x8F, 0x43, 0x61, 0xC0, 0xAF, 0x2B, 0x9D, 0x13}};

const AMOVIESETUP_MEDIATYPE kTypes[] = {{&MEDIATYPE_Video, &MEDIASUBTYPE_NULL}};
AMOVIESETUP_PIN g_pins[] = {
    {const_cast<LPWSTR>(L"In"), FALSE, FALSE, FALSE, FALSE, &CLSID_NULL, nullptr, 1, kTypes}};
const AMOVIESETUP_FILTER kFirstSetup = {&kFirst, L"first filter", 0x1234, 1, g_pins};
const AMOVIESETUP_FILTER kSecondSetup = {&kSecond, L"second filter", 0x5678, 0, nullptr};

const char* NameOf(REFCLSID clsid) {
    return clsid == kFirst ? "first" : clsid == kSecond ? "second" : "?";
}

bool ClassKeyExists(REFCLSID clsid) {
    WCHAR text[39] = {};
    StringFromGUID2(clsid, text, 39);
    HKEY key = nullptr;
    const std::wstring path = std::wstring(L"CLSID\\") + text;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key)) return false;
    RegCloseKey(key);
    return true;
}

// Notes every call as "+name" or "-name".
class FakeMapper final : public StackObject<IFilterMapper2> {
  public:
    CallLog log;
    std::vector<std::wstring> names;
    std::vector<REGFILTER2> entries;
    bool defaultCategory = true;
    bool classesWereThere = true;

    STDMETHODIMP CreateCategory(REFCLSID, DWORD, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterFilter(const CLSID* category, LPCOLESTR instance,
                                  REFCLSID clsid) override {
        defaultCategory = defaultCategory && !category && !instance;
        classesWereThere = classesWereThere && ClassKeyExists(clsid);
        return log.Enter(std::string("-") + NameOf(clsid)).value_or(S_OK);
    }
    STDMETHODIMP RegisterFilter(REFCLSID clsid, LPCWSTR name, IMoniker** moniker,
                                const CLSID* category, LPCOLESTR instance,
                                const REGFILTER2* entry) override {
        defaultCategory = defaultCategory && !category && !instance && !moniker;
        classesWereThere = classesWereThere && ClassKeyExists(clsid);
        names.emplace_back(name);
        entries.push_back(*entry);
        return log.Enter(std::string("+") + NameOf(clsid)).value_or(S_OK);
    }
    STDMETHODIMP EnumMatchingFilters(IEnumMoniker**, DWORD, WINBOOL, DWORD, WINBOOL, DWORD,
                                     const GUID*, const REGPINMEDIUM*, const CLSID*, WINBOOL,
                                     WINBOOL, DWORD, const GUID*, const REGPINMEDIUM*,
                                     const CLSID*) override {
        return E_NOTIMPL;
    }

  private:
    void* Find(REFIID iid) override {
        const bool known = iid == IID_IUnknown || iid == IID_IFilterMapper2;
        return known ? static_cast<IFilterMapper2*>(this) : nullptr;
    }
};

// Hands the fake mapper to whoever asks for the platform's.
class MapperFactory final : public StackObject<IClassFactory> {
  public:
    explicit MapperFactory(FakeMapper& mapper) : mapper_(mapper) {
        EXPECT_EQ(CoRegisterClassObject(CLSID_FilterMapper2, this, CLSCTX_INPROC_SERVER,
                                        REGCLS_MULTIPLEUSE, &cookie_),
                  S_OK);
    }
    ~MapperFactory() override { CoRevokeClassObject(cookie_); }
    HRESULT result = S_OK;

    STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** object) override {
        *object = nullptr;
        return FAILED(result) ? result : mapper_.QueryInterface(iid, object);
    }
    STDMETHODIMP LockServer(WINBOOL) override { return S_OK; }

  private:
    void* Find(REFIID iid) override {
        const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
        return known ? static_cast<IClassFactory*>(this) : nullptr;
    }
    FakeMapper& mapper_;
    DWORD cookie_ = 0;
};

class MapperCalls : public DshowTest {
  protected:
    MapperCalls() { g_hInst = GetModuleHandleW(nullptr); }
    ~MapperCalls() override {
        factory_.result = S_OK;
        mapper_.log.ClearInjections();
        AMovieDllRegisterServer2(FALSE);
        EXPECT_EQ(mapper_.references, 0);
    }
    FakeMapper mapper_;
    MapperFactory factory_{mapper_};
};

TEST_F(MapperCalls, OneFilter) {
    EXPECT_EQ(AMovieSetupRegisterFilter2(nullptr, &mapper_, TRUE), S_FALSE);
    EXPECT_EQ(mapper_.log.Text(), "");
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFirstSetup, &mapper_, TRUE), S_OK);
    EXPECT_EQ(mapper_.log.Text(), "-first +first");
    EXPECT_TRUE(mapper_.defaultCategory);
    ASSERT_EQ(mapper_.entries.size(), 1u);
    EXPECT_EQ(mapper_.names[0], L"first filter");
    EXPECT_EQ(mapper_.entries[0].dwVersion, 1u);
    EXPECT_EQ(mapper_.entries[0].dwMerit, 0x1234u);
    EXPECT_EQ(mapper_.entries[0].cPins, 1u);
    EXPECT_EQ(mapper_.entries[0].rgPins, g_pins);
    mapper_.log.Clear();
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFirstSetup, &mapper_, FALSE), S_OK);
    EXPECT_EQ(mapper_.log.Text(), "-first");
}

TEST_F(MapperCalls, FailuresOfOneFilter) {
    const HRESULT notFound = HRESULT(0x80070002);
    mapper_.log.Inject("-first", E_ABORT);
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFirstSetup, &mapper_, TRUE), S_OK);  // dropped
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFirstSetup, &mapper_, FALSE), E_ABORT);
    mapper_.log.Inject("-first", notFound);
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFirstSetup, &mapper_, FALSE), NOERROR);
    mapper_.log.Inject("+first", notFound);
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFirstSetup, &mapper_, TRUE), NOERROR);
    mapper_.log.Inject("+first", E_FAIL);
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFirstSetup, &mapper_, TRUE), E_FAIL);
}

TEST_F(MapperCalls, WholeTableInOrder) {
    EXPECT_EQ(AMovieDllRegisterServer2(TRUE), S_OK);
    EXPECT_EQ(mapper_.log.Text(), "-first +first -second +second");
    EXPECT_TRUE(mapper_.classesWereThere);  // the classes come first
    for (REFCLSID clsid : {kFirst, kBare, kSecond}) EXPECT_TRUE(ClassKeyExists(clsid));
    mapper_.log.Clear();
    EXPECT_EQ(AMovieDllRegisterServer2(FALSE), S_OK);
    EXPECT_EQ(mapper_.log.Text(), "-first -second");
    EXPECT_TRUE(mapper_.classesWereThere);  // and go last
    for (REFCLSID clsid : {kFirst, kBare, kSecond}) EXPECT_FALSE(ClassKeyExists(clsid));
}

TEST_F(MapperCalls, FirstFailureEnds) {
    mapper_.log.Inject("+first", E_ABORT);
    EXPECT_EQ(AMovieDllRegisterServer2(TRUE), E_ABORT);
    EXPECT_EQ(mapper_.log.Text(), "-first +first");
    for (REFCLSID clsid : {kFirst, kBare, kSecond}) EXPECT_FALSE(ClassKeyExists(clsid));
    mapper_.log.ClearInjections();
    EXPECT_EQ(AMovieDllRegisterServer2(TRUE), S_OK);
    mapper_.log.Clear();
    mapper_.log.Inject("-first", E_ABORT);
    EXPECT_EQ(AMovieDllRegisterServer2(FALSE), E_ABORT);
    EXPECT_EQ(mapper_.log.Text(), "-first");
    for (REFCLSID clsid : {kFirst, kBare, kSecond}) EXPECT_TRUE(ClassKeyExists(clsid));
}

TEST_F(MapperCalls, WithoutAMapper) {
    factory_.result = E_ACCESSDENIED;
    EXPECT_EQ(AMovieDllRegisterServer2(TRUE), E_ACCESSDENIED);
    EXPECT_FALSE(ClassKeyExists(kBare)) << "what was added is taken out again";
    EXPECT_EQ(AMovieDllRegisterServer2(FALSE), E_ACCESSDENIED);
}

TEST_F(MapperCalls, AFailureLeavesAnEarlierRegistration) {
    ASSERT_EQ(AMovieDllRegisterServer2(TRUE), S_OK);
    factory_.result = E_ACCESSDENIED;
    EXPECT_EQ(AMovieDllRegisterServer2(TRUE), E_ACCESSDENIED);
    EXPECT_EQ(AMovieDllRegisterServer2(FALSE), E_ACCESSDENIED);
    for (REFCLSID clsid : {kFirst, kBare, kSecond}) EXPECT_TRUE(ClassKeyExists(clsid));
}

TEST_F(MapperCalls, EntryPointKeepsTheInstance) {
    const HINSTANCE before = g_hInst;
    const HINSTANCE other = reinterpret_cast<HINSTANCE>(GetModuleHandleW(L"kernel32"));
    EXPECT_TRUE(DllEntryPoint(other, DLL_PROCESS_ATTACH, nullptr));
    EXPECT_EQ(g_hInst, other);
    EXPECT_TRUE(DllEntryPoint(before, DLL_THREAD_ATTACH, nullptr));
    EXPECT_EQ(g_hInst, other);
    EXPECT_TRUE(DllEntryPoint(other, DLL_PROCESS_DETACH, nullptr));
    EXPECT_TRUE(DllEntryPoint(before, DLL_PROCESS_ATTACH, nullptr));
    EXPECT_EQ(g_hInst, before);
}

TEST_F(MapperCalls, TemplateRecord) {
    EXPECT_TRUE(g_Templates[0].IsClassID(kFirst));
    EXPECT_FALSE(g_Templates[0].IsClassID(kSecond));
    HRESULT hr = S_OK;
    CUnknown* object = g_Templates[1].CreateInstance(nullptr, &hr);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(hr, HRESULT(3));
    object->NonDelegatingAddRef();
    object->NonDelegatingRelease();
}

CUnknown* CALLBACK CreateNothing(LPUNKNOWN, HRESULT*) { return nullptr; }

CUnknown* CALLBACK CreatePlain(LPUNKNOWN outer, HRESULT* hr) {
    *hr = HRESULT(3);
    return new CUnknown(NAME("plain"), outer);
}

}  // namespace

CFactoryTemplate g_Templates[] = {
    {L"first class", &kFirst, CreateNothing, nullptr, &kFirstSetup},
    {L"bare class", &kBare, CreatePlain, nullptr, nullptr},
    {L"second class", &kSecond, CreateNothing, nullptr, &kSecondSetup},
};
int g_cTemplates = NUMELMS(g_Templates);
