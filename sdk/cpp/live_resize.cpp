// Plays a video through the filter "Mira Vantrel" in a size and at a frame rate, prints what the
// filter measures, and changes the size while the video plays.
//
//   live_resize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT

#include <dshow.h>
#include <wrl/client.h>

#include <cstdio>
#include <cstdlib>

#include "vantrel_settings.h"

using Microsoft::WRL::ComPtr;

static void Check(HRESULT hr, const char* step) {
    if (SUCCEEDED(hr)) return;
    std::fprintf(stderr, "%s: error 0x%08lx\n", step, static_cast<unsigned long>(hr));
    std::exit(1);
}

// Plays on for two seconds, or to the end of a shorter video.
static void PlayAndReport(IMediaEvent* events, IVantrelSettings* settings) {
    long event = 0;
    events->WaitForCompletion(2000, &event);
    int width = 0, height = 0;
    double milliseconds = 0, taken = 0, delivered = 0;
    settings->GetOutputSize(&width, &height);
    settings->GetModuleTime(&milliseconds);
    settings->GetSystemFps(&taken);
    settings->GetGenerateFps(&delivered);  // 0 without a frame rate
    std::printf("%dx%d: %.2f ms per frame, %.1f frames per second scaled, %.1f delivered\n", width,
                height, milliseconds, taken, delivered);
}

// Wine 8 may wait for ever when a clock goes: it stays as long as the process. Windows needs no
// such thing.
static void KeepClock(IGraphBuilder* graph) {
    ComPtr<IMediaFilter> filter;
    IReferenceClock* clock = nullptr;
    if (SUCCEEDED(graph->QueryInterface(IID_IMediaFilter, &filter))) filter->GetSyncSource(&clock);
}

static void Play(wchar_t** values) {
    ComPtr<IGraphBuilder> graph;
    ComPtr<IBaseFilter> source, resizer;
    ComPtr<IVantrelSettings> settings;
    ComPtr<IMediaControl> control;
    ComPtr<IMediaEvent> events;
    ComPtr<IMediaSeeking> seeking;
    ComPtr<IEnumPins> pins;
    ComPtr<IPin> video, input, output;
    Check(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC, IID_PPV_ARGS(&graph)),
          "graph");
    Check(graph->QueryInterface(IID_IMediaControl, &control), "control");
    Check(graph->QueryInterface(IID_IMediaEvent, &events), "events");
    Check(graph->QueryInterface(IID_IMediaSeeking, &seeking), "seeking");
    Check(CoCreateInstance(CLSID_VantrelFilter, nullptr, CLSCTX_INPROC, IID_PPV_ARGS(&resizer)),
          "the filter (is it registered?)");
    Check(resizer.As(&settings), "its settings");

    settings->SetOutputSize(_wtoi(values[2]), _wtoi(values[3]));
    settings->SetFrameRate(_wtof(values[4]));
    settings->SetOutputFormat(VantrelFormatRgb24);  // what every renderer shows
    Check(graph->AddFilter(resizer.Get(), L"Resizer"), "adding the filter");
    Check(graph->AddSourceFilter(values[1], L"Source", &source), "opening the video");
    Check(source->EnumPins(&pins), "pins");
    Check(pins->Next(1, &video, nullptr) == S_OK ? S_OK : VFW_E_NOT_FOUND, "the source's pin");
    Check(resizer->FindPin(L"In", &input), "In");
    Check(resizer->FindPin(L"Out", &output), "Out");
    Check(graph->Connect(video.Get(), input.Get()), "decoding into the filter");
    Check(graph->Render(output.Get()), "showing the result");

    Check(control->Run(), "playing");
    PlayAndReport(events.Get(), settings.Get());
    settings->SetOutputSize(_wtoi(values[5]), _wtoi(values[6]));
    if (settings->ApplySettings() != 1) {
        std::printf("The renderer takes no change while it runs: stopping.\n");
        LONGLONG position = 0;
        seeking->GetCurrentPosition(&position);
        control->Stop();  // a stop can begin the video anew
        if (settings->ApplySettings() != 1) Check(VFW_E_INVALIDMEDIATYPE, "the new size");
        seeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr,
                              AM_SEEKING_NoPositioning);
        Check(control->Run(), "playing on");
    }
    PlayAndReport(events.Get(), settings.Get());
    KeepClock(graph.Get());
    control->Stop();
}

int wmain(int count, wchar_t** values) {
    if (count != 7) {
        std::fprintf(stderr, "Usage: live_resize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT\n");
        return 2;
    }
    Check(CoInitialize(nullptr), "COM");
    Play(values);
    CoUninitialize();
    return 0;
}
