// The filter object: construction, interfaces, pins, settings.

#include "filter/vantrel_filter.h"

#include <new>

#include "cpu/double_precision.h"
#include "regulator/frame_duration.h"
#include "resample/kernel_table.h"

namespace {

constexpr int kSettingsSuccess = 1;

}  // namespace

CUnknown* CALLBACK CVantrelFilter::CreateInstance(LPUNKNOWN outer, HRESULT* result) {
    auto* const filter = new (std::nothrow) CVantrelFilter(outer, result);
    if (!filter && result) *result = E_OUTOFMEMORY;
    return filter;
}

CVantrelFilter::CVantrelFilter(LPUNKNOWN outer, HRESULT* result)
    : CTransformFilter(NAME("Mira Vantrel"), outer, CLSID_VantrelFilter),
      stopEvent_(CreateEvent(nullptr, TRUE, FALSE, nullptr)) {
    if (!stopEvent_ && result) *result = E_OUTOFMEMORY;
    // Deliberate: the processor is identified and the table filled at every construction. For a
    // moment that raises the priority of this thread and may move the process between processors.
    tavo::FillKernelTable();
}

CVantrelFilter::~CVantrelFilter() {
    LowerTimerPeriod();
    if (stopEvent_) CloseHandle(stopEvent_);
}

STDMETHODIMP CVantrelFilter::NonDelegatingQueryInterface(REFIID riid, void** object) {
    CheckPointer(object, E_POINTER);
    if (IsEqualIID(riid, IID_IVantrelSettings)) {
        return GetInterface(static_cast<IVantrelSettings*>(this), object);
    }
    if (IsEqualIID(riid, IID_ISpecifyPropertyPages)) {
        return GetInterface(static_cast<ISpecifyPropertyPages*>(this), object);
    }
    return CTransformFilter::NonDelegatingQueryInterface(riid, object);
}

STDMETHODIMP CVantrelFilter::GetPages(CAUUID* pages) {
    CheckPointer(pages, E_POINTER);
    pages->cElems = 2;
    pages->pElems = static_cast<GUID*>(CoTaskMemAlloc(2 * sizeof(GUID)));
    if (!pages->pElems) return E_OUTOFMEMORY;
    pages->pElems[0] = CLSID_ResamplePropertyPage;
    pages->pElems[1] = CLSID_TimeRegulatorPropertyPage;
    return S_OK;
}

// Refused for want of memory, the filter has not joined: a graph that does not know it does not
// tell it when it goes.
STDMETHODIMP CVantrelFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    CAutoLock filterLock(&m_csFilter);
    IFilterGraph* const former = GetFilterGraph();
    const HRESULT joined = CTransformFilter::JoinFilterGraph(graph, name);
    if (FAILED(joined)) CTransformFilter::JoinFilterGraph(former, nullptr);
    return joined;
}

// Pins are asked for by any thread and made once, both or neither.
CBasePin* CVantrelFilter::GetPin(int index) {
    CAutoLock lock(&settingsLock_);
    if (!m_pInput) {
        HRESULT result = S_OK;
        auto* const input = new (std::nothrow) CVantrelInputPin(this, this, &result);
        auto* const output = new (std::nothrow) CVantrelOutputPin(this, this, &result);
        if (!input || !output || FAILED(result)) {
            delete output;
            delete input;
            return nullptr;
        }
        m_pOutput = output;
        m_pInput = input;
    }
    if (index == 0) return m_pInput;
    if (index == 1) return m_pOutput;
    return nullptr;
}

HRESULT CVantrelFilter::CopyInputType(CMediaType* type) {
    CAutoLock lock(&settingsLock_);
    return type->Set(inputType_);
}

HRESULT CVantrelFilter::CopyOutputType(CMediaType* type) {
    CAutoLock lock(&settingsLock_);
    return type->Set(outputType_);
}

HRESULT CVantrelFilter::CheckBesideOutputType(const CMediaType& input) {
    CAutoLock lock(&settingsLock_);
    return CheckTransform(&input, &outputType_);
}

HRESULT CVantrelFilter::CheckBesideInputType(const CMediaType& output) {
    CAutoLock lock(&settingsLock_);
    return CheckTransform(&inputType_, &output);
}

int STDMETHODCALLTYPE CVantrelFilter::SetOutputSize(int width, int height) {
    outputSize_.store({width, height});
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetOutputSize(int* width, int* height) {
    const OutputSize size = outputSize_.load();
    *width = size.width;
    *height = size.height;
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::SetScaleMethod(int method) {
    scaleMethod_ = method;
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetScaleMethod(int* method) {
    *method = scaleMethod_;
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::SetOutputFormat(int format) {
    outputFormat_ = format;
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetOutputFormat(int* format) {
    *format = outputFormat_;
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::SetVideoType(int type) {
    videoType_ = type;
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetVideoType(int* type) {
    *type = videoType_;
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::SetFrameRate(double fps) {
    const tavo::DoublePrecisionScope scope;  // for the moves of doubles here
    const REFERENCE_TIME duration = tavo::FrameDuration(fps);
    frameRate_.store(duration > 0 ? fps : 0.0);
    frameDuration_.store(duration);
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetFrameRate(double* fps) {
    frameRate_.LoadTo(fps);
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetModuleTime(double* milliseconds) {
    statistics_.GetMeanWork(milliseconds);
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetSystemFps(double* fps) {
    statistics_.GetProcessedPerSecond(fps);
    return kSettingsSuccess;
}

int STDMETHODCALLTYPE CVantrelFilter::GetGenerateFps(double* fps) {
    if (IsRegulatorOn()) {
        statistics_.GetGeneratedPerSecond(fps);
    } else {
        *fps = 0.0;
    }
    return kSettingsSuccess;
}
