// AMovieDllRegisterServer2: the classes of the module in the registry and in the filter mapper.

#include "dshow/module_registration.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>

#include "dshow/com_ptr.h"
#include "dshow/module.h"

using tavo::ComPtr;

namespace {

constexpr WCHAR kClassRoot[] = L"CLSID\\";
constexpr size_t kGuidCapacity = 39;  // characters of {...} and the final zero
constexpr size_t kClassKeyCapacity = std::size(kClassRoot) - 1 + kGuidCapacity;
// No path of a module is longer.
constexpr DWORD kLongestPath = 32768;

HRESULT ModulePath(std::unique_ptr<WCHAR[]>& path) {
    for (DWORD capacity = 256; capacity <= kLongestPath; capacity *= 2) {
        path.reset(new (std::nothrow) WCHAR[capacity]);
        if (!path) return E_OUTOFMEMORY;
        const DWORD length = GetModuleFileNameW(g_hInst, path.get(), capacity);
        if (length == 0) {
            const DWORD error = GetLastError();
            return HRESULT_FROM_WIN32(error);
        }
        if (length < capacity) return NOERROR;
    }
    return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
}

// "CLSID\{...}"
struct ClassKey {
    WCHAR text[kClassKeyCapacity];

    explicit ClassKey(REFCLSID clsid) {
        std::copy(std::begin(kClassRoot), std::end(kClassRoot), text);
        StringFromGUID2(clsid, text + std::size(kClassRoot) - 1, kGuidCapacity);
    }
};

// An open registry key.
class Key {
  public:
    Key() = default;
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (m_key) RegCloseKey(m_key);
    }

    HRESULT Create(HKEY parent, const WCHAR* name) {
        DWORD disposition = 0;
        const LSTATUS status = RegCreateKeyExW(parent, name, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                               KEY_WRITE, nullptr, &m_key, &disposition);
        m_isNew = status == ERROR_SUCCESS && disposition == REG_CREATED_NEW_KEY;
        return HRESULT_FROM_WIN32(status);
    }
    bool IsNew() const { return m_isNew; }
    // A null name is the default value.
    HRESULT SetText(const WCHAR* name, const WCHAR* text) {
        const auto bytes = static_cast<DWORD>((std::wcslen(text) + 1) * sizeof(WCHAR));
        const LSTATUS status =
            RegSetValueExW(m_key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), bytes);
        return HRESULT_FROM_WIN32(status);
    }
    HKEY Get() const { return m_key; }

  private:
    HKEY m_key = nullptr;
    bool m_isNew = false;
};

void RemoveClass(const CFactoryTemplate& entry) {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, ClassKey(*entry.m_ClsID).text);
}

// `isNew` tells whether the class was not there before.
HRESULT AddClass(const CFactoryTemplate& entry, const WCHAR* path, bool& isNew) {
    Key key;
    HRESULT hr = key.Create(HKEY_CLASSES_ROOT, ClassKey(*entry.m_ClsID).text);
    isNew = key.IsNew();
    if (FAILED(hr)) return hr;
    hr = key.SetText(nullptr, entry.m_Name);
    if (FAILED(hr)) return hr;

    Key server;
    hr = server.Create(key.Get(), L"InprocServer32");
    if (FAILED(hr)) return hr;
    hr = server.SetText(nullptr, path);
    if (FAILED(hr)) return hr;
    return server.SetText(L"ThreadingModel", L"Both");
}

// The classes that this registration has added, taken out again unless it is completed. What an
// earlier one has left is not touched.
class AddedClasses {
  public:
    AddedClasses() = default;
    AddedClasses(const AddedClasses&) = delete;
    AddedClasses& operator=(const AddedClasses&) = delete;
    ~AddedClasses() {
        for (int i = 0; i < g_cTemplates && i < kMostClasses; ++i) {
            if (m_isNew[i]) RemoveClass(g_Templates[i]);
        }
    }

    HRESULT Add(const WCHAR* path) {
        if (g_cTemplates > kMostClasses) return E_UNEXPECTED;
        for (int i = 0; i < g_cTemplates; ++i) {
            const HRESULT hr = AddClass(g_Templates[i], path, m_isNew[i]);
            if (FAILED(hr)) return hr;
        }
        return NOERROR;
    }
    void Keep() { std::fill(std::begin(m_isNew), std::end(m_isNew), false); }

  private:
    static constexpr int kMostClasses = 64;
    bool m_isNew[kMostClasses] = {};
};

// A key that is missing, or that may not be deleted, is no reason to stop.
void RemoveClasses() {
    for (int i = 0; i < g_cTemplates; ++i) RemoveClass(g_Templates[i]);
}

HRESULT UpdateMapper(BOOL add) {
    ComPtr<IFilterMapper2> mapper;
    HRESULT hr = CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IFilterMapper2, mapper.PutVoid());
    if (FAILED(hr)) return hr;
    for (int i = 0; i < g_cTemplates; ++i) {
        const AMOVIESETUP_FILTER* setup = g_Templates[i].m_pAMovieSetup_Filter;
        if (!setup) continue;
        hr = AMovieSetupRegisterFilter2(setup, mapper.Get(), add);
        if (FAILED(hr)) return hr;
    }
    return NOERROR;
}

}  // namespace

STDAPI AMovieDllRegisterServer2(BOOL bRegister) {
    std::unique_ptr<WCHAR[]> path;
    HRESULT hr = ModulePath(path);
    if (FAILED(hr)) return hr;
    AddedClasses added;
    if (bRegister) {
        hr = added.Add(path.get());
        if (FAILED(hr)) return hr;
    }

    // A thread that has chosen another apartment already is as good, but is not ours to leave.
    const bool entered = SUCCEEDED(CoInitialize(nullptr));
    hr = UpdateMapper(bRegister);
    CoFreeUnusedLibraries();
    if (entered) CoUninitialize();
    if (FAILED(hr)) return hr;

    added.Keep();
    // The filters go out of the mapper before their classes go.
    if (!bRegister) RemoveClasses();
    return NOERROR;
}
