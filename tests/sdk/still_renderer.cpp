// A renderer module that takes another type only while it is stopped. It shows nothing, keeps time,
// and writes a line with the start of each segment into the file STILL_RENDERER_LOG. Graphs prefer
// it to others; in programs without that variable it cannot be made.

#include "streams.h"

#include <cstdio>
#include <new>

namespace {

// {477DC284-0EA1-4957-AA0C-B7089807E531}
constexpr GUID kStillRenderer = {
    0x477DC284, 0x0EA1, 0x4957, {0xAA, 0x0C, 0xB7, 0x08, 0x98, 0x07, 0xE5, 0x31}};
constexpr wchar_t kName[] = L"Still renderer";

bool LogPath(wchar_t (&path)[MAX_PATH]) {
    const DWORD length = GetEnvironmentVariableW(L"STILL_RENDERER_LOG", path, MAX_PATH);
    return length > 0 && length < MAX_PATH;
}

void LogSegment(REFERENCE_TIME start) {
    wchar_t path[MAX_PATH];
    if (!LogPath(path)) return;
    const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    char line[32];
    const int length = std::snprintf(line, sizeof line, "%lld\n", start);
    DWORD written = 0;
    WriteFile(file, line, static_cast<DWORD>(length), &written, nullptr);
    CloseHandle(file);
}

class StillPin final : public CBaseInputPin {
  public:
    StillPin(CBaseFilter* filter, CCritSec* lock, HRESULT* hr)
        : CBaseInputPin(NAME("still pin"), filter, lock, hr, L"In"),
          released_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
        if (!released_) *hr = E_OUTOFMEMORY;
    }
    ~StillPin() override {
        if (released_) CloseHandle(released_);
    }

    HRESULT CheckMediaType(const CMediaType* type) override {
        const bool shown =
            *type->Type() == MEDIATYPE_Video && *type->Subtype() == MEDIASUBTYPE_RGB24;
        return shown && IsStopped() ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override {
        LogSegment(start);
        return CBaseInputPin::NewSegment(start, stop, rate);
    }
    STDMETHODIMP Receive(IMediaSample* sample) override {
        const HRESULT hr = CBaseInputPin::Receive(sample);
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        if (hr != S_OK || FAILED(sample->GetTime(&start, &stop))) return hr;
        while (!IsDue(start)) {
            if (WaitForSingleObject(released_, 5) == WAIT_OBJECT_0) return S_FALSE;
        }
        return S_OK;
    }
    STDMETHODIMP EndOfStream() override {
        m_pFilter->NotifyEvent(EC_COMPLETE, S_OK, 0);
        return S_OK;
    }
    STDMETHODIMP BeginFlush() override {
        SetEvent(released_);
        return CBaseInputPin::BeginFlush();
    }
    STDMETHODIMP EndFlush() override {
        ResetEvent(released_);
        return CBaseInputPin::EndFlush();
    }
    HRESULT Active() override {
        ResetEvent(released_);
        return CBaseInputPin::Active();
    }
    HRESULT Inactive() override {
        SetEvent(released_);
        return CBaseInputPin::Inactive();
    }

  private:
    bool IsDue(REFERENCE_TIME start) {
        FILTER_STATE state = State_Stopped;
        CRefTime now;
        return m_pFilter->GetState(0, &state) == S_OK && state == State_Running &&
               SUCCEEDED(m_pFilter->StreamTime(now)) && now.m_time >= start;
    }

    const HANDLE released_;
};

class StillRenderer final : public CBaseFilter {
  public:
    StillRenderer(LPUNKNOWN outer, HRESULT* hr)
        : CBaseFilter(NAME("still renderer"), outer, &lock_, kStillRenderer),
          pin_(this, &lock_, hr) {}
    ~StillRenderer() override {
        if (position_) position_->Release();
    }
    static CUnknown* CALLBACK Create(LPUNKNOWN outer, HRESULT* hr) {
        wchar_t path[MAX_PATH];
        if (!LogPath(path)) *hr = E_FAIL;
        return SUCCEEDED(*hr) ? new (std::nothrow) StillRenderer(outer, hr) : nullptr;
    }

    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override {
        if (iid != IID_IMediaSeeking && iid != IID_IMediaPosition) {
            return CBaseFilter::NonDelegatingQueryInterface(iid, object);
        }
        *object = nullptr;
        const HRESULT hr =
            position_ ? S_OK : CreatePosPassThru(GetOwner(), TRUE, &pin_, &position_);
        return SUCCEEDED(hr) ? position_->QueryInterface(iid, object) : hr;
    }
    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &pin_ : nullptr; }

  private:
    CCritSec lock_;
    StillPin pin_;
    IUnknown* position_ = nullptr;
};

const AMOVIESETUP_MEDIATYPE kTypes[] = {{&MEDIATYPE_Video, &MEDIASUBTYPE_RGB24}};
const AMOVIESETUP_PIN kPins[] = {
    {const_cast<LPWSTR>(L"In"), TRUE, FALSE, FALSE, FALSE, &CLSID_NULL, nullptr, 1, kTypes}};
const AMOVIESETUP_FILTER kSetup = {&kStillRenderer, kName, MERIT_PREFERRED + 0x100000, 1, kPins};

}  // namespace

CFactoryTemplate g_Templates[] = {
    {kName, &kStillRenderer, StillRenderer::Create, nullptr, &kSetup}};
int g_cTemplates = NUMELMS(g_Templates);

STDAPI DllRegisterServer() { return AMovieDllRegisterServer2(TRUE); }

STDAPI DllUnregisterServer() { return AMovieDllRegisterServer2(FALSE); }

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    return DllEntryPoint(instance, reason, reserved);
}
