/*
 * Plays a video through the filter "Mira Vantrel" in a size and at a frame rate, prints what the
 * filter measures, and changes the size while the video plays. The C form of live_resize.cpp.
 *
 *   live_resize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT
 */

#define COBJMACROS
#include <dshow.h>
#include <stdio.h>
#include <stdlib.h>

#include "vantrel_settings.h"

static void Check(HRESULT hr, const char* step) {
    if (SUCCEEDED(hr)) return;
    fprintf(stderr, "%s: error 0x%08lx\n", step, (unsigned long)hr);
    exit(1);
}

/* Plays on for two seconds, or to the end of a shorter video. */
static void PlayAndReport(IMediaEvent* events, IVantrelSettings* settings) {
    long event = 0;
    int width = 0, height = 0;
    double milliseconds = 0, taken = 0, delivered = 0;
    IMediaEvent_WaitForCompletion(events, 2000, &event);
    IVantrelSettings_GetOutputSize(settings, &width, &height);
    IVantrelSettings_GetModuleTime(settings, &milliseconds);
    IVantrelSettings_GetSystemFps(settings, &taken);
    IVantrelSettings_GetGenerateFps(settings, &delivered); /* 0 without a frame rate */
    printf("%dx%d: %.2f ms per frame, %.1f frames per second scaled, %.1f delivered\n", width,
           height, milliseconds, taken, delivered);
}

static void Connect(IGraphBuilder* graph, IBaseFilter* source, IBaseFilter* resizer) {
    IEnumPins* pins = NULL;
    IPin *video = NULL, *input = NULL, *output = NULL;
    Check(IBaseFilter_EnumPins(source, &pins), "pins");
    Check(IEnumPins_Next(pins, 1, &video, NULL) == S_OK ? S_OK : VFW_E_NOT_FOUND,
          "the source's pin");
    Check(IBaseFilter_FindPin(resizer, L"In", &input), "In");
    Check(IBaseFilter_FindPin(resizer, L"Out", &output), "Out");
    Check(IGraphBuilder_Connect(graph, video, input), "decoding into the filter");
    Check(IGraphBuilder_Render(graph, output), "showing the result");
    IPin_Release(output);
    IPin_Release(input);
    IPin_Release(video);
    IEnumPins_Release(pins);
}

/* Wine 8 may wait for ever when a clock goes: it stays as long as the process. Windows needs no
   such thing. */
static void KeepClock(IGraphBuilder* graph) {
    IMediaFilter* filter = NULL;
    IReferenceClock* clock = NULL;
    if (FAILED(IGraphBuilder_QueryInterface(graph, &IID_IMediaFilter, (void**)&filter))) return;
    IMediaFilter_GetSyncSource(filter, &clock);
    IMediaFilter_Release(filter);
}

static void Play(wchar_t** values) {
    IGraphBuilder* graph = NULL;
    IMediaControl* control = NULL;
    IMediaEvent* events = NULL;
    IMediaSeeking* seeking = NULL;
    IBaseFilter *source = NULL, *resizer = NULL;
    IVantrelSettings* settings = NULL;
    Check(CoCreateInstance(&CLSID_FilterGraph, NULL, CLSCTX_INPROC, &IID_IGraphBuilder,
                           (void**)&graph),
          "graph");
    Check(IGraphBuilder_QueryInterface(graph, &IID_IMediaControl, (void**)&control), "control");
    Check(IGraphBuilder_QueryInterface(graph, &IID_IMediaEvent, (void**)&events), "events");
    Check(IGraphBuilder_QueryInterface(graph, &IID_IMediaSeeking, (void**)&seeking), "seeking");
    Check(CoCreateInstance(&CLSID_VantrelFilter, NULL, CLSCTX_INPROC, &IID_IBaseFilter,
                           (void**)&resizer),
          "the filter (is it registered?)");
    Check(IBaseFilter_QueryInterface(resizer, &IID_IVantrelSettings, (void**)&settings),
          "its settings");

    IVantrelSettings_SetOutputSize(settings, _wtoi(values[2]), _wtoi(values[3]));
    IVantrelSettings_SetFrameRate(settings, _wtof(values[4]));
    IVantrelSettings_SetOutputFormat(settings, VantrelFormatRgb24); /* what every renderer shows */
    Check(IGraphBuilder_AddFilter(graph, resizer, L"Resizer"), "adding the filter");
    Check(IGraphBuilder_AddSourceFilter(graph, values[1], L"Source", &source), "opening the video");
    Connect(graph, source, resizer);

    Check(IMediaControl_Run(control), "playing");
    PlayAndReport(events, settings);
    IVantrelSettings_SetOutputSize(settings, _wtoi(values[5]), _wtoi(values[6]));
    if (IVantrelSettings_ApplySettings(settings) != 1) {
        LONGLONG position = 0;
        printf("The renderer takes no change while it runs: stopping.\n");
        IMediaSeeking_GetCurrentPosition(seeking, &position);
        IMediaControl_Stop(control); /* a stop can begin the video anew */
        if (IVantrelSettings_ApplySettings(settings) != 1) {
            Check(VFW_E_INVALIDMEDIATYPE, "the new size");
        }
        IMediaSeeking_SetPositions(seeking, &position, AM_SEEKING_AbsolutePositioning, NULL,
                                   AM_SEEKING_NoPositioning);
        Check(IMediaControl_Run(control), "playing on");
    }
    PlayAndReport(events, settings);
    KeepClock(graph);
    IMediaControl_Stop(control);

    IVantrelSettings_Release(settings);
    IBaseFilter_Release(resizer);
    IBaseFilter_Release(source);
    IMediaSeeking_Release(seeking);
    IMediaEvent_Release(events);
    IMediaControl_Release(control);
    IGraphBuilder_Release(graph);
}

int wmain(int count, wchar_t** values) {
    if (count != 7) {
        fprintf(stderr, "Usage: live_resize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT\n");
        return 2;
    }
    Check(CoInitialize(NULL), "COM");
    Play(values);
    CoUninitialize();
    return 0;
}
