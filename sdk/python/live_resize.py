"""Plays a video through the filter "Mira Vantrel" in a size and at a frame rate, prints what the
filter measures, and changes the size while the video plays. Needs Windows and the package comtypes.

    python live_resize.py VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT
"""

import sys
from ctypes import (HRESULT, POINTER, byref, c_double, c_int, c_long, c_longlong, c_ulong, c_void_p,
                    c_wchar_p)

from comtypes import CLSCTX_INPROC_SERVER, COMError, CoCreateInstance, GUID, IUnknown, STDMETHOD
from comtypes.automation import IDispatch

from vantrel import CLSID_VantrelFilter, IVantrelSettings, SUCCESS, VantrelPixelFormat

# As much of DirectShow as is used here. Methods that are not called hold their places in the tables
# only; a program that needs more takes a full set of declarations.


class IPin(IUnknown):
    _iid_ = GUID("{56A86891-0AD4-11CE-B03A-0020AF0BA770}")
    _methods_ = []


class IEnumPins(IUnknown):
    _iid_ = GUID("{56A86892-0AD4-11CE-B03A-0020AF0BA770}")
    _methods_ = [STDMETHOD(HRESULT, "Next", [c_int, POINTER(POINTER(IPin)), c_void_p])]


class IBaseFilter(IUnknown):
    _iid_ = GUID("{56A86895-0AD4-11CE-B03A-0020AF0BA770}")
    _methods_ = [
        STDMETHOD(HRESULT, "GetClassID"),
        STDMETHOD(HRESULT, "Stop"),
        STDMETHOD(HRESULT, "Pause"),
        STDMETHOD(HRESULT, "Run"),
        STDMETHOD(HRESULT, "GetState"),
        STDMETHOD(HRESULT, "SetSyncSource"),
        STDMETHOD(HRESULT, "GetSyncSource"),
        STDMETHOD(HRESULT, "EnumPins", [POINTER(POINTER(IEnumPins))]),
        STDMETHOD(HRESULT, "FindPin", [c_wchar_p, POINTER(POINTER(IPin))]),
    ]


class IGraphBuilder(IUnknown):
    _iid_ = GUID("{56A868A9-0AD4-11CE-B03A-0020AF0BA770}")
    _methods_ = [
        STDMETHOD(HRESULT, "AddFilter", [POINTER(IBaseFilter), c_wchar_p]),
        STDMETHOD(HRESULT, "RemoveFilter"),
        STDMETHOD(HRESULT, "EnumFilters"),
        STDMETHOD(HRESULT, "FindFilterByName"),
        STDMETHOD(HRESULT, "ConnectDirect"),
        STDMETHOD(HRESULT, "Reconnect"),
        STDMETHOD(HRESULT, "Disconnect"),
        STDMETHOD(HRESULT, "SetDefaultSyncSource"),
        STDMETHOD(HRESULT, "Connect", [POINTER(IPin), POINTER(IPin)]),
        STDMETHOD(HRESULT, "Render", [POINTER(IPin)]),
        STDMETHOD(HRESULT, "RenderFile"),
        STDMETHOD(HRESULT, "AddSourceFilter", [c_wchar_p, c_wchar_p, POINTER(POINTER(IBaseFilter))]),
    ]


class IMediaControl(IDispatch):
    _iid_ = GUID("{56A868B1-0AD4-11CE-B03A-0020AF0BA770}")
    _methods_ = [
        STDMETHOD(HRESULT, "Run"),
        STDMETHOD(HRESULT, "Pause"),
        STDMETHOD(HRESULT, "Stop"),
    ]


class IMediaEvent(IDispatch):
    _iid_ = GUID("{56A868B6-0AD4-11CE-B03A-0020AF0BA770}")
    _methods_ = [
        STDMETHOD(HRESULT, "GetEventHandle"),
        STDMETHOD(HRESULT, "GetEvent"),
        # As a number: E_ABORT, when the time is over, is no failure.
        STDMETHOD(c_int, "WaitForCompletion", [c_long, POINTER(c_long)]),
    ]


class IMediaSeeking(IUnknown):
    _iid_ = GUID("{36B73880-C2C8-11CF-8B46-00805F6CEF60}")
    _methods_ = [
        STDMETHOD(HRESULT, "GetCapabilities"),
        STDMETHOD(HRESULT, "CheckCapabilities"),
        STDMETHOD(HRESULT, "IsFormatSupported"),
        STDMETHOD(HRESULT, "QueryPreferredFormat"),
        STDMETHOD(HRESULT, "GetTimeFormat"),
        STDMETHOD(HRESULT, "IsUsingTimeFormat"),
        STDMETHOD(HRESULT, "SetTimeFormat"),
        STDMETHOD(HRESULT, "GetDuration"),
        STDMETHOD(HRESULT, "GetStopPosition"),
        # As numbers, these two: a source in which nobody can seek is no failure.
        STDMETHOD(c_int, "GetCurrentPosition", [POINTER(c_longlong)]),
        STDMETHOD(HRESULT, "ConvertTimeFormat"),
        STDMETHOD(c_int, "SetPositions", [POINTER(c_longlong), c_ulong, c_void_p, c_ulong]),
    ]


AM_SEEKING_NoPositioning = 0
AM_SEEKING_AbsolutePositioning = 1
CLSID_FilterGraph = GUID("{E436EBB3-524F-11CE-9F53-0020AF0BA770}")


def create(clsid, interface):
    return CoCreateInstance(clsid, interface=interface, clsctx=CLSCTX_INPROC_SERVER)


def play_and_report(events, settings):
    """Plays on for two seconds, or to the end of a shorter video."""
    event, width, height = c_long(), c_int(), c_int()
    milliseconds, taken, delivered = c_double(), c_double(), c_double()
    events.WaitForCompletion(2000, byref(event))
    settings.GetOutputSize(byref(width), byref(height))
    settings.GetModuleTime(byref(milliseconds))
    settings.GetSystemFps(byref(taken))
    settings.GetGenerateFps(byref(delivered))  # 0 without a frame rate
    print(f"{width.value}x{height.value}: {milliseconds.value:.2f} ms per frame, "
          f"{taken.value:.1f} frames per second scaled, {delivered.value:.1f} delivered")


def play(video_path, width, height, fps, new_width, new_height):
    graph = create(CLSID_FilterGraph, IGraphBuilder)
    control = graph.QueryInterface(IMediaControl)
    events = graph.QueryInterface(IMediaEvent)
    seeking = graph.QueryInterface(IMediaSeeking)
    resizer = create(CLSID_VantrelFilter, IBaseFilter)
    settings = resizer.QueryInterface(IVantrelSettings)

    settings.SetOutputSize(int(width), int(height))
    settings.SetFrameRate(float(fps))
    settings.SetOutputFormat(VantrelPixelFormat.Rgb24)  # what every renderer shows
    graph.AddFilter(resizer, "Resizer")

    source, pins = POINTER(IBaseFilter)(), POINTER(IEnumPins)()
    video, pin_in, pin_out = POINTER(IPin)(), POINTER(IPin)(), POINTER(IPin)()
    graph.AddSourceFilter(video_path, "Source", byref(source))
    source.EnumPins(byref(pins))
    pins.Next(1, byref(video), None)
    if not video:
        raise RuntimeError("the source has no pin")
    resizer.FindPin("In", byref(pin_in))
    resizer.FindPin("Out", byref(pin_out))
    graph.Connect(video, pin_in)
    graph.Render(pin_out)

    control.Run()
    play_and_report(events, settings)
    settings.SetOutputSize(int(new_width), int(new_height))
    if settings.ApplySettings() != SUCCESS:
        print("The renderer takes no change while it runs: stopping.")
        position = c_longlong()
        seeking.GetCurrentPosition(byref(position))
        control.Stop()  # a stop can begin the video anew
        if settings.ApplySettings() != SUCCESS:
            raise RuntimeError("the new size is refused")
        seeking.SetPositions(byref(position), AM_SEEKING_AbsolutePositioning, None,
                             AM_SEEKING_NoPositioning)
        control.Run()
    play_and_report(events, settings)
    control.Stop()


if __name__ == "__main__":
    if len(sys.argv) != 7:
        sys.exit("Usage: live_resize.py VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT")
    try:
        play(*sys.argv[1:])
    except (COMError, RuntimeError) as fault:
        sys.exit(str(fault))
