// Plays a video in a window, once in each size that is given, through the registered filter "Mira
// Vantrel".
//
//   play_resized VIDEO WIDTHxHEIGHT [WIDTHxHEIGHT...]
//
// A whole program: of this project it needs the header vantrel_settings.h and nothing else. Link it
// with strmiids, ole32 and user32.

#include <dshow.h>
#include <wrl/client.h>

#include <cstdio>
#include <cwchar>

#include "vantrel_settings.h"

using Microsoft::WRL::ComPtr;

namespace {

// Says which step failed.
bool Fails(HRESULT hr, const char* step) {
    if (SUCCEEDED(hr)) return false;
    std::fprintf(stderr, "play_resized: %s: error 0x%08lx\n", step, static_cast<unsigned long>(hr));
    return true;
}

// Not every compiler's headers tell the identifier of each interface.
template <typename Interface>
HRESULT Query(IUnknown* object, REFIID iid, ComPtr<Interface>& result) {
    return object->QueryInterface(iid, reinterpret_cast<void**>(result.ReleaseAndGetAddressOf()));
}

// [In docs/programming.md]
// Adds the filter to a graph; it scales to the given size.
HRESULT AddResizer(IGraphBuilder* graph, int width, int height, ComPtr<IBaseFilter>& resizer,
                   ComPtr<IVantrelSettings>& settings) {
    HRESULT hr = CoCreateInstance(CLSID_VantrelFilter, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_PPV_ARGS(&resizer));
    if (FAILED(hr)) return hr;
    hr = resizer->QueryInterface(IID_IVantrelSettings,
                                 reinterpret_cast<void**>(settings.GetAddressOf()));
    if (FAILED(hr)) return hr;
    settings->SetOutputSize(width, height);
    settings->SetScaleMethod(VantrelMethodBilinearAuto);
    settings->SetOutputFormat(VantrelFormatRgb24);  // what every renderer shows
    return graph->AddFilter(resizer.Get(), L"Resizer");
}

// Leads the video of a source through the filter, by way of whatever decodes it, to a renderer.
HRESULT ConnectResizer(IGraphBuilder* graph, IPin* source, IBaseFilter* resizer) {
    ComPtr<IPin> input;
    ComPtr<IPin> output;
    HRESULT hr = resizer->FindPin(L"In", &input);
    if (SUCCEEDED(hr)) hr = resizer->FindPin(L"Out", &output);
    if (SUCCEEDED(hr)) hr = graph->Connect(source, input.Get());
    if (SUCCEEDED(hr)) hr = graph->Render(output.Get());
    return hr;
}

// Another size for a graph that exists. It is stopped for that: not every renderer follows while it
// runs.
bool ChangeSize(IMediaControl* control, IVantrelSettings* settings, int width, int height) {
    if (FAILED(control->Stop())) return false;
    settings->SetOutputSize(width, height);
    return settings->ApplySettings() == 1;
}
// [End]

HRESULT FirstOutputPin(IBaseFilter* filter, ComPtr<IPin>& pin) {
    ComPtr<IEnumPins> pins;
    HRESULT hr = filter->EnumPins(&pins);
    while (SUCCEEDED(hr) && (hr = pins->Next(1, &pin, nullptr)) == S_OK) {
        PIN_DIRECTION direction = PINDIR_INPUT;
        hr = pin->QueryDirection(&direction);
        if (SUCCEEDED(hr) && direction == PINDIR_OUTPUT) return S_OK;
    }
    return FAILED(hr) ? hr : VFW_E_NOT_FOUND;
}

// Until the video has ended or its window is closed. The window needs its messages.
HRESULT PlayToTheEnd(IGraphBuilder* graph, IMediaControl* control) {
    ComPtr<IMediaEvent> events;
    HRESULT hr = Query(graph, IID_IMediaEvent, events);
    if (SUCCEEDED(hr)) hr = control->Run();
    while (SUCCEEDED(hr)) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        long code = 0;
        LONG_PTR first = 0;
        LONG_PTR second = 0;
        if (FAILED(events->GetEvent(&code, &first, &second, 20))) continue;  // none in 20 ms
        if (code == EC_ERRORABORT) hr = static_cast<HRESULT>(first);
        events->FreeEventParams(code, first, second);
        if (code == EC_COMPLETE || code == EC_USERABORT) break;
    }
    return hr;
}

// A clock of Wine's may wait for its own thread for ever when it goes: it stays as long as the
// process.
void KeepClock(IGraphBuilder* graph) {
    ComPtr<IMediaFilter> filter;
    ComPtr<IReferenceClock> clock;
    if (SUCCEEDED(Query(graph, IID_IMediaFilter, filter))) filter->GetSyncSource(&clock);
    clock.Detach();
}

// Tells what is shown, and how fast.
void Report(IGraphBuilder* graph, IVantrelSettings* settings) {
    long width = 0;
    long height = 0;
    double fps = 0;
    ComPtr<IBasicVideo> video;
    if (SUCCEEDED(Query(graph, IID_IBasicVideo, video))) {
        video->GetVideoSize(&width, &height);
    }
    settings->GetSystemFps(&fps);
    std::printf("%ldx%ld, %.1f frames per second\n", width, height, fps);
}

struct Size {
    int width = 0;
    int height = 0;
};

bool ParseSize(const wchar_t* text, Size& size) {
    wchar_t rest = 0;
    return std::swscanf(text, L"%dx%d%lc", &size.width, &size.height, &rest) == 2 &&
           size.width >= 0 && size.height >= 0;
}

int Play(const wchar_t* path, const wchar_t* const* sizes, int count) {
    ComPtr<IGraphBuilder> graph;
    ComPtr<IMediaControl> control;
    ComPtr<IMediaPosition> position;
    ComPtr<IBaseFilter> source;
    ComPtr<IBaseFilter> resizer;
    ComPtr<IVantrelSettings> settings;
    ComPtr<IPin> pin;
    Size size;
    ParseSize(sizes[0], size);
    HRESULT hr =
        CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph));
    if (Fails(hr, "making a graph") ||
        Fails(Query(graph.Get(), IID_IMediaControl, control), "controlling it") ||
        Fails(Query(graph.Get(), IID_IMediaPosition, position), "seeking in it") ||
        Fails(AddResizer(graph.Get(), size.width, size.height, resizer, settings),
              "adding the filter (is it registered?)") ||
        Fails(graph->AddSourceFilter(path, L"Source", &source), "opening the video") ||
        Fails(FirstOutputPin(source.Get(), pin), "finding its pin") ||
        Fails(ConnectResizer(graph.Get(), pin.Get(), resizer.Get()), "connecting the filter")) {
        return 1;
    }
    for (int i = 0; i < count; ++i) {
        ParseSize(sizes[i], size);
        if (i > 0 && !ChangeSize(control.Get(), settings.Get(), size.width, size.height)) {
            std::fprintf(stderr, "play_resized: the size %ls is refused\n", sizes[i]);
            return 1;
        }
        if (Fails(position->put_CurrentPosition(0), "going to the start") ||
            Fails(PlayToTheEnd(graph.Get(), control.Get()), "playing")) {
            return 1;
        }
        Report(graph.Get(), settings.Get());
    }
    KeepClock(graph.Get());
    control->Stop();
    return 0;
}

}  // namespace

int wmain(int count, wchar_t** values) {
    bool valid = count >= 3;
    for (int i = 2; i < count; ++i) {
        Size size;
        valid = valid && ParseSize(values[i], size);
    }
    if (!valid) {
        std::fprintf(stderr, "Usage: play_resized VIDEO WIDTHxHEIGHT [WIDTHxHEIGHT...]\n");
        return 2;
    }
    if (Fails(CoInitialize(nullptr), "starting COM")) return 1;
    const int code = Play(values[1], values + 2, count - 2);
    CoUninitialize();
    return code;
}
