// Filter and pin boilerplate of the test source and sink.
#include "tests/support/test_filter.h"

#include <vfwmsgs.h>

#include <cstring>
#include <cwchar>

#include "tests/support/test_enumerators.h"

namespace tavo_test {
namespace {

// {6E0F5A51-2C07-4C3B-9C0C-5D3A0B7C1E01}: any class identifier will do, it is registered nowhere.
constexpr GUID kTestFilterClass = {
    0x6E0F5A51, 0x2C07, 0x4C3B, {0x9C, 0x0C, 0x5D, 0x3A, 0x0B, 0x7C, 0x1E, 0x01}};

void CopyName(const std::wstring& name, WCHAR (&target)[128]) {
    std::wcsncpy(target, name.c_str(), 127);
    target[127] = 0;
}

}  // namespace

STDMETHODIMP TestFilter::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IPersist || iid == IID_IMediaFilter ||
                       iid == IID_IBaseFilter;
    *object = known ? static_cast<IBaseFilter*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) TestFilter::AddRef() { return static_cast<ULONG>(++references_); }

STDMETHODIMP_(ULONG) TestFilter::Release() {
    const long left = --references_;
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

STDMETHODIMP TestFilter::GetClassID(CLSID* clsid) {
    if (!clsid) return E_POINTER;
    *clsid = kTestFilterClass;
    return S_OK;
}

STDMETHODIMP TestFilter::Stop() {
    if (const auto injected = calls_.Enter("Stop")) return *injected;
    if (state_ != State_Stopped) {
        const HRESULT hr = OnStop();
        if (FAILED(hr)) return hr;
    }
    state_ = State_Stopped;
    return S_OK;
}

HRESULT TestFilter::GoTo(FILTER_STATE state) {
    if (state_ == State_Stopped) {
        const HRESULT hr = OnPauseFromStopped();
        if (FAILED(hr)) return hr;
    }
    state_ = state;
    return S_OK;
}

STDMETHODIMP TestFilter::Pause() {
    if (const auto injected = calls_.Enter("Pause")) return *injected;
    return GoTo(State_Paused);
}

STDMETHODIMP TestFilter::Run(REFERENCE_TIME) {
    if (const auto injected = calls_.Enter("Run")) return *injected;
    return GoTo(State_Running);
}

STDMETHODIMP TestFilter::GetState(DWORD, FILTER_STATE* state) {
    if (!state) return E_POINTER;
    *state = state_;
    return S_OK;
}

STDMETHODIMP TestFilter::SetSyncSource(IReferenceClock* clock) {
    if (const auto injected = calls_.Enter("SetSyncSource")) return *injected;
    std::lock_guard lock(clockMutex_);
    clock_ = ComPtr<IReferenceClock>(clock);
    return S_OK;
}

STDMETHODIMP TestFilter::GetSyncSource(IReferenceClock** clock) {
    if (!clock) return E_POINTER;
    std::lock_guard lock(clockMutex_);
    *clock = ComPtr<IReferenceClock>(clock_).Detach();
    return S_OK;
}

STDMETHODIMP TestFilter::EnumPins(IEnumPins** pins) {
    if (!pins) return E_POINTER;
    *pins = MakePinEnumerator({ComPtr<IPin>(&basePin())});
    return S_OK;
}

STDMETHODIMP TestFilter::FindPin(LPCWSTR id, IPin** pin) {
    if (!pin) return E_POINTER;
    *pin = nullptr;
    LPWSTR own = nullptr;
    if (!id || FAILED(basePin().QueryId(&own))) return VFW_E_NOT_FOUND;
    const bool same = std::wcscmp(own, id) == 0;
    CoTaskMemFree(own);
    if (!same) return VFW_E_NOT_FOUND;
    *pin = ComPtr<IPin>(&basePin()).Detach();
    return S_OK;
}

STDMETHODIMP TestFilter::QueryFilterInfo(FILTER_INFO* info) {
    if (!info) return E_POINTER;
    CopyName(name_, info->achName);
    info->pGraph = ComPtr<IFilterGraph>(graph_).Detach();
    return S_OK;
}

STDMETHODIMP TestFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    if (const auto injected = calls_.Enter("JoinFilterGraph")) return *injected;
    graph_ = graph;
    name_ = name ? name : L"";
    return S_OK;
}

void TestPin::SetConnection(IPin* peer, const AM_MEDIA_TYPE& type) {
    peer_ = ComPtr<IPin>(peer);
    type_ = MediaType(type);
}

STDMETHODIMP TestPin::Disconnect() {
    if (const auto injected = calls_.Enter("Disconnect")) return *injected;
    if (filter_.state() != State_Stopped) return VFW_E_NOT_STOPPED;
    if (!peer_) return S_FALSE;
    OnDisconnected();
    peer_.Reset();
    type_.Reset();
    return S_OK;
}

STDMETHODIMP TestPin::ConnectedTo(IPin** peer) {
    if (!peer) return E_POINTER;
    *peer = ComPtr<IPin>(peer_).Detach();
    return *peer ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP TestPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    if (!type) return E_POINTER;
    MediaType copy(type_);
    *type = *copy;
    *copy.Get() = {};
    return peer_ ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP TestPin::QueryPinInfo(PIN_INFO* info) {
    if (!info) return E_POINTER;
    info->pFilter = ComPtr<IBaseFilter>(&filter_).Detach();
    info->dir = direction_;
    CopyName(name_, info->achName);
    return S_OK;
}

STDMETHODIMP TestPin::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction) return E_POINTER;
    *direction = direction_;
    return S_OK;
}

STDMETHODIMP TestPin::QueryId(LPWSTR* id) {
    if (!id) return E_POINTER;
    const size_t bytes = (name_.size() + 1) * sizeof(WCHAR);
    *id = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
    if (!*id) return E_OUTOFMEMORY;
    std::memcpy(*id, name_.c_str(), bytes);
    return S_OK;
}

STDMETHODIMP TestPin::EnumMediaTypes(IEnumMediaTypes** types) {
    if (const auto injected = calls_.Enter("EnumMediaTypes")) return *injected;
    if (!types) return E_POINTER;
    *types = MakeTypeEnumerator(offered);
    return S_OK;
}

}  // namespace tavo_test
