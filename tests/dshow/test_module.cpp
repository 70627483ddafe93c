// A COM module over the base classes, as small as one can be: a filter, a plain object, and
// creation functions that fail.
#include "streams.h"

#include <new>

#include "tests/dshow/test_module_ids.h"

using namespace tavo_test;

namespace {

class ModuleFilter final : public CTransformFilter {
  public:
    explicit ModuleFilter(LPUNKNOWN outer)
        : CTransformFilter(NAME("module filter"), outer, kModuleFilter) {}
    static CUnknown* CALLBACK Create(LPUNKNOWN outer, HRESULT*) {
        return new (std::nothrow) ModuleFilter(outer);
    }
    HRESULT CheckInputType(const CMediaType*) override { return S_OK; }
    HRESULT CheckTransform(const CMediaType*, const CMediaType*) override { return S_OK; }
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    HRESULT GetMediaType(int, CMediaType*) override { return VFW_S_NO_MORE_ITEMS; }
};

class Plain final : public CUnknown, public IPersist {
  public:
    Plain(LPUNKNOWN outer, REFCLSID clsid) : CUnknown(NAME("plain"), outer), clsid_(clsid) {}
    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override {
        if (riid == IID_IPersist) return GetInterface(static_cast<IPersist*>(this), ppv);
        return CUnknown::NonDelegatingQueryInterface(riid, ppv);
    }
    STDMETHODIMP GetClassID(CLSID* clsid) override {
        *clsid = clsid_;
        return S_OK;
    }
    // A success in the result does not matter.
    static CUnknown* CALLBACK Create(LPUNKNOWN outer, HRESULT* hr) {
        if (*hr != NOERROR) return nullptr;
        *hr = S_FALSE;
        return new (std::nothrow) Plain(outer, kModulePlain);
    }
    static CUnknown* CALLBACK CreateWithFailure(LPUNKNOWN outer, HRESULT* hr) {
        *hr = E_ABORT;
        return new (std::nothrow) Plain(outer, kModuleObjectWithFailure);
    }
    static CUnknown* CALLBACK CreateFirst(LPUNKNOWN outer, HRESULT*) {
        return new (std::nothrow) Plain(outer, kModuleTwice);
    }

  private:
    const CLSID clsid_;
};

CUnknown* CALLBACK CreateNothing(LPUNKNOWN, HRESULT*) { return nullptr; }

CUnknown* CALLBACK FailToCreate(LPUNKNOWN, HRESULT* hr) {
    *hr = E_ACCESSDENIED;
    return nullptr;
}

void CALLBACK Init(BOOL loading, const CLSID* clsid) {
    WCHAR text[64] = {};
    GetEnvironmentVariableW(kInitVariable, text, 60);
    const bool filter = *clsid == kModuleFilter;
    lstrcatW(text, loading ? (filter ? L"F" : L"P") : (filter ? L"f" : L"p"));
    SetEnvironmentVariableW(kInitVariable, text);
}

const AMOVIESETUP_MEDIATYPE kTypes[] = {{&MEDIATYPE_Video, &MEDIASUBTYPE_NULL}};

AMOVIESETUP_PIN g_pins[] = {
    {const_cast<LPWSTR>(L"In"), FALSE, FALSE, FALSE, FALSE, &CLSID_NULL, nullptr, 1, kTypes},
    {const_cast<LPWSTR>(L"Out"), FALSE, TRUE, FALSE, FALSE, &CLSID_NULL, nullptr, 1, kTypes}};

const AMOVIESETUP_FILTER kSetup = {&kModuleFilter, kModuleFilterName, MERIT_DO_NOT_USE, 2, g_pins};

}  // namespace

CFactoryTemplate g_Templates[] = {
    {kModuleFilterName, &kModuleFilter, ModuleFilter::Create, Init, &kSetup},
    {kModulePlainName, &kModulePlain, Plain::Create, Init, nullptr},
    {L"null", &kModuleNull, CreateNothing, nullptr, nullptr},
    {L"null with failure", &kModuleNullWithFailure, FailToCreate, nullptr, nullptr},
    {L"object with failure", &kModuleObjectWithFailure, Plain::CreateWithFailure, nullptr, nullptr},
    {L"first", &kModuleTwice, Plain::CreateFirst, nullptr, nullptr},
    {L"second", &kModuleTwice, CreateNothing, nullptr, nullptr},
};
int g_cTemplates = NUMELMS(g_Templates);

STDAPI DllRegisterServer() { return AMovieDllRegisterServer2(TRUE); }

STDAPI DllUnregisterServer() { return AMovieDllRegisterServer2(FALSE); }

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    return DllEntryPoint(instance, reason, reserved);
}
