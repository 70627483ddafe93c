"""The settings and statistics interface of the filter "Mira Vantrel", for Python with comtypes.

Results are plain numbers, and 1 is success: the methods are declared with STDMETHOD and c_int, so
that comtypes does not check them.
"""

from ctypes import POINTER, c_double, c_int
from enum import IntEnum

from comtypes import GUID, IUnknown, STDMETHOD

CLSID_VantrelFilter = GUID("{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}")
CLSID_ResamplePropertyPage = GUID("{7C9F63C6-786B-4752-908E-460A061FA9D7}")
CLSID_TimeRegulatorPropertyPage = GUID("{D7A3BD9A-E8A3-49E9-8261-CD2A7AC78403}")

SUCCESS = 1


class VantrelScaleMethod(IntEnum):
    Auto = 0
    NearestAuto = 1
    BilinearAuto = 2
    Nearest = 5
    NearestMmx = 6
    NearestSse = 7
    Bilinear = 10
    BilinearMmx = 11
    BilinearSse = 12


class VantrelPixelFormat(IntEnum):
    Auto = 0
    Yv12 = 1
    Iyuv = 2
    Yvu9 = 3
    Yuy2 = 4
    Yuyv = 5
    Yvyu = 6
    Uyvy = 7
    Rgb24 = 8
    Rgb555 = 9
    Rgb565 = 10


class VantrelVideoType(IntEnum):
    Auto = 0
    Mpeg1 = 1
    Mpeg2 = 2


class IVantrelSettings(IUnknown):
    _iid_ = GUID("{4E0DB2C5-3852-4FC9-ACFE-75F88F38549A}")
    _methods_ = [
        STDMETHOD(c_int, "SetOutputSize", [c_int, c_int]),
        STDMETHOD(c_int, "GetOutputSize", [POINTER(c_int), POINTER(c_int)]),
        STDMETHOD(c_int, "SetScaleMethod", [c_int]),
        STDMETHOD(c_int, "GetScaleMethod", [POINTER(c_int)]),
        STDMETHOD(c_int, "SetOutputFormat", [c_int]),
        STDMETHOD(c_int, "GetOutputFormat", [POINTER(c_int)]),
        STDMETHOD(c_int, "SetVideoType", [c_int]),
        STDMETHOD(c_int, "GetVideoType", [POINTER(c_int)]),
        STDMETHOD(c_int, "GetModuleTime", [POINTER(c_double)]),
        STDMETHOD(c_int, "GetSystemFps", [POINTER(c_double)]),
        STDMETHOD(c_int, "ApplySettings", []),
        STDMETHOD(c_int, "GetGenerateFps", [POINTER(c_double)]),
        STDMETHOD(c_int, "SetFrameRate", [c_double]),
        STDMETHOD(c_int, "GetFrameRate", [POINTER(c_double)]),
    ]
