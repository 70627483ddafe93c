// As much of DirectShow as LiveResize.cs uses. Methods that it does not call hold their places in the
// tables only; a program that needs more takes a full set of declarations.

using System;
using System.Runtime.InteropServices;

[ComImport, Guid("56A86891-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IPin
{
}

[ComImport, Guid("56A86892-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IEnumPins
{
    [PreserveSig] int Next(int count, out IPin pin, IntPtr fetched);
}

[ComImport, Guid("56A86895-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IBaseFilter
{
    void GetClassID(out Guid id);
    void Stop();
    void Pause();
    void Run(long start);
    void GetState(int milliseconds, out int state);
    void SetSyncSource(IntPtr clock);
    void GetSyncSource(out IntPtr clock);
    void EnumPins(out IEnumPins pins);
    void FindPin([MarshalAs(UnmanagedType.LPWStr)] string id, out IPin pin);
}

[ComImport, Guid("56A868A9-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]
public interface IGraphBuilder
{
    void AddFilter(IBaseFilter filter, [MarshalAs(UnmanagedType.LPWStr)] string name);
    void RemoveFilter(IBaseFilter filter);
    void EnumFilters(out IntPtr filters);
    void FindFilterByName([MarshalAs(UnmanagedType.LPWStr)] string name, out IBaseFilter filter);
    void ConnectDirect(IPin output, IPin input, IntPtr type);
    void Reconnect(IPin pin);
    void Disconnect(IPin pin);
    void SetDefaultSyncSource();
    void Connect(IPin output, IPin input);
    void Render(IPin output);
    void RenderFile([MarshalAs(UnmanagedType.LPWStr)] string file, [MarshalAs(UnmanagedType.LPWStr)] string list);
    void AddSourceFilter([MarshalAs(UnmanagedType.LPWStr)] string file,
        [MarshalAs(UnmanagedType.LPWStr)] string name, out IBaseFilter source);
}

[ComImport, Guid("56A868B1-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsDual)]
public interface IMediaControl
{
    void Run();
    void Pause();
    void Stop();
}

[ComImport, Guid("56A868B6-0AD4-11CE-B03A-0020AF0BA770"), InterfaceType(ComInterfaceType.InterfaceIsDual)]
public interface IMediaEvent
{
    void GetEventHandle(out IntPtr handle);
    void GetEvent(out int code, out IntPtr first, out IntPtr second, int milliseconds);
    // Gives E_ABORT when the time is over.
    [PreserveSig] int WaitForCompletion(int milliseconds, out int code);
}
