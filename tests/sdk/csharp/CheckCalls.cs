// Calls each method of the declared interface, on an object whose table was made from the C header.

using System;
using System.Runtime.InteropServices;

static class CheckCalls
{
    [DllImport("settings_mock")] static extern IntPtr MakeSettings();

    static int faults;

    static void Equal<T>(string what, T found, T wanted)
    {
        if (Equals(found, wanted)) return;
        Console.WriteLine("{0}: {1} and not {2}", what, found, wanted);
        ++faults;
    }

    static int Main()
    {
        var settings = (IVantrelSettings)Marshal.GetObjectForIUnknown(MakeSettings());
        int width, height;
        double number;
        VantrelScaleMethod method;
        VantrelPixelFormat format;
        VantrelVideoType type;
        Equal("SetOutputSize", settings.SetOutputSize(639, 359), Vantrel.Success);
        Equal("SetScaleMethod", settings.SetScaleMethod(VantrelScaleMethod.BilinearMmx), Vantrel.Success);
        Equal("SetOutputFormat", settings.SetOutputFormat(VantrelPixelFormat.Uyvy), Vantrel.Success);
        Equal("SetVideoType", settings.SetVideoType(VantrelVideoType.Mpeg1), Vantrel.Success);
        Equal("SetFrameRate", settings.SetFrameRate(23.5), Vantrel.Success);
        Equal("GetOutputSize", settings.GetOutputSize(out width, out height), Vantrel.Success);
        Equal("width", width, 640);
        Equal("height", height, 360);
        Equal("GetScaleMethod", settings.GetScaleMethod(out method), Vantrel.Success);
        Equal("method", method, VantrelScaleMethod.BilinearSse);
        Equal("GetOutputFormat", settings.GetOutputFormat(out format), Vantrel.Success);
        Equal("format", format, VantrelPixelFormat.Rgb24);
        Equal("GetVideoType", settings.GetVideoType(out type), Vantrel.Success);
        Equal("type", type, VantrelVideoType.Mpeg2);
        Equal("GetFrameRate", settings.GetFrameRate(out number), Vantrel.Success);
        Equal("rate", number, 24.5);
        Equal("GetModuleTime", settings.GetModuleTime(out number), Vantrel.Success);
        Equal("milliseconds", number, 1.25);
        Equal("GetSystemFps", settings.GetSystemFps(out number), Vantrel.Success);
        Equal("fps", number, 2.5);
        Equal("GetGenerateFps", settings.GetGenerateFps(out number), Vantrel.Success);
        Equal("generated", number, 3.75);
        Equal("ApplySettings", settings.ApplySettings(), unchecked((int)0x80070057));
        return faults == 0 ? 0 : 1;
    }
}
