// The settings and statistics interface of the filter "Mira Vantrel" for .NET.
//
// Every method is marked PreserveSig: results are plain numbers, and 1 is success. A runtime that takes
// them for an HRESULT would see S_FALSE in it, and would take the last argument for a result.

using System;
using System.Runtime.InteropServices;

public static class Vantrel
{
    public static readonly Guid FilterClass = new Guid("80650FA1-6CCB-4807-B027-46AA6BE5BFC9");
    public static readonly Guid ResamplePropertyPageClass = new Guid("7C9F63C6-786B-4752-908E-460A061FA9D7");
    public static readonly Guid TimeRegulatorPropertyPageClass = new Guid("D7A3BD9A-E8A3-49E9-8261-CD2A7AC78403");

    // What Set... returns in every case, and ApplySettings when all is well.
    public const int Success = 1;
}

public enum VantrelScaleMethod
{
    Auto = 0,
    NearestAuto = 1,
    BilinearAuto = 2,
    Nearest = 5,
    NearestMmx = 6,
    NearestSse = 7,
    Bilinear = 10,
    BilinearMmx = 11,
    BilinearSse = 12
}

public enum VantrelPixelFormat
{
    Auto = 0,
    Yv12 = 1,
    Iyuv = 2,
    Yvu9 = 3,
    Yuy2 = 4,
    Yuyv = 5,
    Yvyu = 6,
    Uyvy = 7,
    Rgb24 = 8,
    Rgb555 = 9,
    Rgb565 = 10
}

public enum VantrelVideoType
{
    Auto = 0,
    Mpeg1 = 1,
    Mpeg2 = 2
}

[ComImport, Guid("4E0DB2C5-3852-4FC9-ACFE-75F88F38549A"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IVantrelSettings
{
    [PreserveSig] int SetOutputSize(int width, int height);
    [PreserveSig] int GetOutputSize(out int width, out int height);
    [PreserveSig] int SetScaleMethod(VantrelScaleMethod method);
    [PreserveSig] int GetScaleMethod(out VantrelScaleMethod method);
    [PreserveSig] int SetOutputFormat(VantrelPixelFormat format);
    [PreserveSig] int GetOutputFormat(out VantrelPixelFormat format);
    [PreserveSig] int SetVideoType(VantrelVideoType type);
    [PreserveSig] int GetVideoType(out VantrelVideoType type);
    [PreserveSig] int GetModuleTime(out double milliseconds);
    [PreserveSig] int GetSystemFps(out double fps);
    [PreserveSig] int ApplySettings();
    [PreserveSig] int GetGenerateFps(out double fps);
    [PreserveSig] int SetFrameRate(double fps);
    [PreserveSig] int GetFrameRate(out double fps);
}
