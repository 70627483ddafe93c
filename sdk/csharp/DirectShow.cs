// The interfaces of DirectShow that an application meets first, each with its whole table.
//
// A declaration repeats the methods that the interface inherits: .NET does not take over the table of a
// base interface. Results are HRESULTs, negative where something failed. Structures and interfaces that
// are not declared here are an IntPtr.

using System;
using System.Runtime.InteropServices;

public enum PinDirection
{
    Input = 0,
    Output = 1
}

public enum FilterState
{
    Stopped = 0,
    Paused = 1,
    Running = 2
}

[Flags]
public enum SeekingFlags
{
    NoPositioning = 0,
    AbsolutePositioning = 1,
    RelativePositioning = 2,
    IncrementalPositioning = 3,
    SeekToKeyFrame = 4,
    ReturnTime = 8,
    Segment = 16,
    NoFlush = 32
}

[ComImport, Guid("56A86891-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IPin
{
    [PreserveSig] int Connect(IPin receiver, IntPtr type);
    [PreserveSig] int ReceiveConnection(IPin connector, IntPtr type);
    [PreserveSig] int Disconnect();
    [PreserveSig] int ConnectedTo(out IPin pin);
    [PreserveSig] int ConnectionMediaType(IntPtr type);
    [PreserveSig] int QueryPinInfo(IntPtr info);
    [PreserveSig] int QueryDirection(out PinDirection direction);
    [PreserveSig] int QueryId([MarshalAs(UnmanagedType.LPWStr)] out string id);
    [PreserveSig] int QueryAccept(IntPtr type);
    [PreserveSig] int EnumMediaTypes(out IntPtr types);
    [PreserveSig] int QueryInternalConnections(IntPtr pins, ref int count);
    [PreserveSig] int EndOfStream();
    [PreserveSig] int BeginFlush();
    [PreserveSig] int EndFlush();
    [PreserveSig] int NewSegment(long start, long stop, double rate);
}

[ComImport, Guid("56A86892-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IEnumPins
{
    // 0 when as many came as were asked for.
    [PreserveSig] int Next(int count, [Out, MarshalAs(UnmanagedType.LPArray, SizeParamIndex = 0)] IPin[] pins,
        out int fetched);
    [PreserveSig] int Skip(int count);
    [PreserveSig] int Reset();
    [PreserveSig] int Clone(out IEnumPins pins);
}

// A graph has it too: for its clock.
[ComImport, Guid("56A86899-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IMediaFilter
{
    [PreserveSig] int GetClassID(out Guid id);
    [PreserveSig] int Stop();
    [PreserveSig] int Pause();
    [PreserveSig] int Run(long start);
    [PreserveSig] int GetState(int milliseconds, out FilterState state);
    [PreserveSig] int SetSyncSource(IntPtr clock);
    [PreserveSig] int GetSyncSource(out IntPtr clock);
}

[ComImport, Guid("56A86895-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IBaseFilter
{
    [PreserveSig] int GetClassID(out Guid id);
    [PreserveSig] int Stop();
    [PreserveSig] int Pause();
    [PreserveSig] int Run(long start);
    [PreserveSig] int GetState(int milliseconds, out FilterState state);
    [PreserveSig] int SetSyncSource(IntPtr clock);
    [PreserveSig] int GetSyncSource(out IntPtr clock);
    [PreserveSig] int EnumPins(out IEnumPins pins);
    [PreserveSig] int FindPin([MarshalAs(UnmanagedType.LPWStr)] string id, out IPin pin);
    [PreserveSig] int QueryFilterInfo(IntPtr info);
    [PreserveSig] int JoinFilterGraph(IntPtr graph, [MarshalAs(UnmanagedType.LPWStr)] string name);
    [PreserveSig] int QueryVendorInfo([MarshalAs(UnmanagedType.LPWStr)] out string vendor);
}

[ComImport, Guid("56A868A9-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IGraphBuilder
{
    [PreserveSig] int AddFilter(IBaseFilter filter, [MarshalAs(UnmanagedType.LPWStr)] string name);
    [PreserveSig] int RemoveFilter(IBaseFilter filter);
    [PreserveSig] int EnumFilters(out IntPtr filters);
    [PreserveSig] int FindFilterByName([MarshalAs(UnmanagedType.LPWStr)] string name, out IBaseFilter filter);
    [PreserveSig] int ConnectDirect(IPin output, IPin input, IntPtr type);
    [PreserveSig] int Reconnect(IPin pin);
    [PreserveSig] int Disconnect(IPin pin);
    [PreserveSig] int SetDefaultSyncSource();
    [PreserveSig] int Connect(IPin output, IPin input);
    [PreserveSig] int Render(IPin output);
    [PreserveSig] int RenderFile([MarshalAs(UnmanagedType.LPWStr)] string file,
        [MarshalAs(UnmanagedType.LPWStr)] string list);
    [PreserveSig] int AddSourceFilter([MarshalAs(UnmanagedType.LPWStr)] string file,
        [MarshalAs(UnmanagedType.LPWStr)] string name, out IBaseFilter source);
    [PreserveSig] int SetLogFile(IntPtr file);
    [PreserveSig] int Abort();
    [PreserveSig] int ShouldOperationContinue();
}

[ComImport, Guid("56A868B1-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsDual)]
public interface IMediaControl
{
    [PreserveSig] int Run();
    [PreserveSig] int Pause();
    [PreserveSig] int Stop();
    [PreserveSig] int GetState(int milliseconds, out FilterState state);
    [PreserveSig] int RenderFile([MarshalAs(UnmanagedType.BStr)] string file);
    [PreserveSig] int AddSourceFilter([MarshalAs(UnmanagedType.BStr)] string file,
        [MarshalAs(UnmanagedType.IDispatch)] out object filter);
    [PreserveSig] int get_FilterCollection([MarshalAs(UnmanagedType.IDispatch)] out object filters);
    [PreserveSig] int get_RegFilterCollection([MarshalAs(UnmanagedType.IDispatch)] out object filters);
    [PreserveSig] int StopWhenReady();
}

[ComImport, Guid("56A868B6-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsDual)]
public interface IMediaEvent
{
    [PreserveSig] int GetEventHandle(out IntPtr handle);
    [PreserveSig] int GetEvent(out int code, out IntPtr first, out IntPtr second, int milliseconds);
    // E_ABORT when the time is over.
    [PreserveSig] int WaitForCompletion(int milliseconds, out int code);
    [PreserveSig] int CancelDefaultHandling(int code);
    [PreserveSig] int RestoreDefaultHandling(int code);
    [PreserveSig] int FreeEventParams(int code, IntPtr first, IntPtr second);
}

// For programs with a window: its messages tell of events.
[ComImport, Guid("56A868C0-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsDual)]
public interface IMediaEventEx
{
    [PreserveSig] int GetEventHandle(out IntPtr handle);
    [PreserveSig] int GetEvent(out int code, out IntPtr first, out IntPtr second, int milliseconds);
    [PreserveSig] int WaitForCompletion(int milliseconds, out int code);
    [PreserveSig] int CancelDefaultHandling(int code);
    [PreserveSig] int RestoreDefaultHandling(int code);
    [PreserveSig] int FreeEventParams(int code, IntPtr first, IntPtr second);
    [PreserveSig] int SetNotifyWindow(IntPtr window, int message, IntPtr data);
    [PreserveSig] int SetNotifyFlags(int flags);
    [PreserveSig] int GetNotifyFlags(out int flags);
}

// Positions are counted in units of 100 ns, unless another format is set.
[ComImport, Guid("36B73880-C2C8-11CF-8B46-00805F6CEF60"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IMediaSeeking
{
    [PreserveSig] int GetCapabilities(out int capabilities);
    [PreserveSig] int CheckCapabilities(ref int capabilities);
    [PreserveSig] int IsFormatSupported(ref Guid format);
    [PreserveSig] int QueryPreferredFormat(out Guid format);
    [PreserveSig] int GetTimeFormat(out Guid format);
    [PreserveSig] int IsUsingTimeFormat(ref Guid format);
    [PreserveSig] int SetTimeFormat(ref Guid format);
    [PreserveSig] int GetDuration(out long duration);
    [PreserveSig] int GetStopPosition(out long stop);
    [PreserveSig] int GetCurrentPosition(out long current);
    // Without a format (IntPtr.Zero) it is the one that is set.
    [PreserveSig] int ConvertTimeFormat(out long target, IntPtr targetFormat, long source, IntPtr sourceFormat);
    [PreserveSig] int SetPositions(ref long current, SeekingFlags currentFlags, ref long stop,
        SeekingFlags stopFlags);
    [PreserveSig] int GetPositions(out long current, out long stop);
    [PreserveSig] int GetAvailable(out long earliest, out long latest);
    [PreserveSig] int SetRate(double rate);
    [PreserveSig] int GetRate(out double rate);
    [PreserveSig] int GetPreroll(out long preroll);
}
