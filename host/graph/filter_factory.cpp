// Loads the module and keeps its class factory.

#include "host/graph/filter_factory.h"

#include "host/graph/error_text.h"
#include "host/graph/quoted.h"
#include "host/system/system_library.h"
#include "settings/vantrel_settings.h"

namespace tavo {
namespace {

using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();

template <typename Function>
Function Export(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// These would be looked for beside the module. The others that it needs are always the system's.
void LoadWhatTheModuleNeeds() {
    for (const wchar_t* name : {L"comctl32.dll", L"winmm.dll"}) LoadSystemLibrary(name);
}

// The filter's module in the registry; empty if there is none.
std::wstring RegisteredFile() {
    wchar_t id[40] = {};
    if (StringFromGUID2(CLSID_VantrelFilter, id, 40) == 0) return {};
    const std::wstring key = std::wstring(L"CLSID\\") + id + L"\\InprocServer32";
    std::vector<wchar_t> path(32768);
    auto length = static_cast<DWORD>(path.size() * sizeof(wchar_t));
    const LSTATUS found = RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ,
                                       nullptr, path.data(), &length);
    return found == ERROR_SUCCESS ? path.data() : L"";
}

}  // namespace

std::filesystem::path ProgramFolder() {
    std::vector<wchar_t> path(MAX_PATH);
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            return std::filesystem::path(std::wstring(path.data(), length)).parent_path();
        }
        path.resize(path.size() * 2);
    }
}

FilterFactory::~FilterFactory() {
    for (const DWORD cookie : pageCookies_) CoRevokeClassObject(cookie);
    factory_.Reset();
    if (module_ == nullptr) return;
    const auto canUnload = Export<CanUnloadNow>(module_, "DllCanUnloadNow");
    if (canUnload != nullptr && canUnload() == S_OK) FreeLibrary(module_);
}

std::wstring FilterFactory::UseModule(const std::filesystem::path& path) {
    LoadWhatTheModuleNeeds();
    const std::wstring name = L"the filter module " + Quoted(path.wstring());
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(path, error);
    module_ =
        LoadLibraryExW(error ? path.c_str() : full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module_ == nullptr) {
        const DWORD code = GetLastError();
        constexpr const wchar_t* kBits = sizeof(void*) == 4 ? L"32-bit" : L"64-bit";
        if (code == ERROR_BAD_EXE_FORMAT) {
            return name + L" cannot be loaded: it is no module for " + kBits + L" programs";
        }
        return name + L" cannot be loaded: " + SystemErrorText(code);
    }
    const auto getClass = Export<GetClassObject>(module_, "DllGetClassObject");
    if (getClass == nullptr) return name + L" is not a COM server: it has no DllGetClassObject";
    const HRESULT hr = getClass(CLSID_VantrelFilter, IID_IClassFactory, factory_.PutVoid());
    if (FAILED(hr)) return name + L" does not have the filter Mira Vantrel: " + ErrorText(hr);
    return {};
}

std::wstring FilterFactory::UseRegistered() {
    LoadWhatTheModuleNeeds();
    const HRESULT hr = CoGetClassObject(CLSID_VantrelFilter, CLSCTX_INPROC_SERVER, nullptr,
                                        IID_IClassFactory, factory_.PutVoid());
    if (SUCCEEDED(hr)) return {};
    const std::wstring file = RegisteredFile();
    std::error_code ignored;
    if (!file.empty() && !std::filesystem::exists(file, ignored)) {
        return L"the registered filter Mira Vantrel cannot be used: its file \"" + file +
               L"\" is gone";
    }
    return L"the registered filter Mira Vantrel cannot be used: " +
           (file.empty() ? L"" : Quoted(file) + L": ") + ErrorText(hr);
}

HRESULT FilterFactory::RegisterPages() {
    if (module_ == nullptr) return S_OK;
    const auto getClass = Export<GetClassObject>(module_, "DllGetClassObject");
    for (const CLSID& clsid : {CLSID_ResamplePropertyPage, CLSID_TimeRegulatorPropertyPage}) {
        ComPtr<IClassFactory> page;
        DWORD cookie = 0;
        HRESULT hr = getClass(clsid, IID_IClassFactory, page.PutVoid());
        if (SUCCEEDED(hr)) {
            hr = CoRegisterClassObject(clsid, page.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                       &cookie);
        }
        if (FAILED(hr)) return hr;
        pageCookies_.push_back(cookie);
    }
    return S_OK;
}

HRESULT FilterFactory::Create(ComPtr<IBaseFilter>& filter) const {
    return factory_->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid());
}

}  // namespace tavo
