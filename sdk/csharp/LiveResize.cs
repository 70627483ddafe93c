// Plays a video through the filter "Mira Vantrel" in a size and at a frame rate, prints what the filter
// measures, and changes the size while the video plays.
//
//   LiveResize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT

using System;
using System.Globalization;
using System.Runtime.InteropServices;

static class LiveResize
{
    static readonly Guid FilterGraphClass = new Guid("E436EBB3-524F-11CE-9F53-0020AF0BA770");

    static object Create(Guid id)
    {
        return Activator.CreateInstance(Type.GetTypeFromCLSID(id, true));
    }

    static void Check(int result, string step)
    {
        if (result < 0) throw new InvalidOperationException(step + ": error 0x" + result.ToString("x8"));
    }

    // Plays on for two seconds, or to the end of a shorter video.
    static void PlayAndReport(IMediaEvent events, IVantrelSettings settings)
    {
        int code, width, height;
        double milliseconds, taken, delivered;
        events.WaitForCompletion(2000, out code);
        settings.GetOutputSize(out width, out height);
        settings.GetModuleTime(out milliseconds);
        settings.GetSystemFps(out taken);
        settings.GetGenerateFps(out delivered); // 0 without a frame rate
        Console.WriteLine(string.Format(CultureInfo.InvariantCulture,
            "{0}x{1}: {2:F2} ms per frame, {3:F1} frames per second scaled, {4:F1} delivered",
            width, height, milliseconds, taken, delivered));
    }

    static void Play(string[] values)
    {
        var graph = (IGraphBuilder)Create(FilterGraphClass);
        var control = (IMediaControl)graph;
        var events = (IMediaEvent)graph;
        var seeking = (IMediaSeeking)graph;
        var resizer = (IBaseFilter)Create(Vantrel.FilterClass);
        var settings = (IVantrelSettings)resizer;

        settings.SetOutputSize(int.Parse(values[1]), int.Parse(values[2]));
        settings.SetFrameRate(double.Parse(values[3], CultureInfo.InvariantCulture));
        settings.SetOutputFormat(VantrelPixelFormat.Rgb24); // what every renderer shows
        Check(graph.AddFilter(resizer, "Resizer"), "adding the filter");

        IBaseFilter source;
        IEnumPins pins;
        IPin input, output;
        var video = new IPin[1];
        int fetched;
        Check(graph.AddSourceFilter(values[0], "Source", out source), "opening the video");
        Check(source.EnumPins(out pins), "pins");
        if (pins.Next(1, video, out fetched) != 0) throw new InvalidOperationException("the source has no pin");
        Check(resizer.FindPin("In", out input), "In");
        Check(resizer.FindPin("Out", out output), "Out");
        Check(graph.Connect(video[0], input), "decoding into the filter");
        Check(graph.Render(output), "showing the result");

        Check(control.Run(), "playing");
        PlayAndReport(events, settings);
        settings.SetOutputSize(int.Parse(values[4]), int.Parse(values[5]));
        if (settings.ApplySettings() != Vantrel.Success)
        {
            Console.WriteLine("The renderer takes no change while it runs: stopping.");
            long position, end = 0;
            seeking.GetCurrentPosition(out position);
            control.Stop(); // a stop can begin the video anew
            if (settings.ApplySettings() != Vantrel.Success)
                throw new InvalidOperationException("the new size is refused");
            seeking.SetPositions(ref position, SeekingFlags.AbsolutePositioning, ref end, SeekingFlags.NoPositioning);
            Check(control.Run(), "playing on");
        }
        PlayAndReport(events, settings);
        control.Stop();
        // Before the program ends, not some time after: renderers and decoders hold devices.
        Marshal.FinalReleaseComObject(settings);
        Marshal.FinalReleaseComObject(graph);
    }

    // Without it Wine finds no renderer.
    [STAThread]
    static int Main(string[] values)
    {
        if (values.Length != 6)
        {
            Console.Error.WriteLine("Usage: LiveResize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT");
            return 2;
        }
        try
        {
            Play(values);
            return 0;
        }
        catch (Exception fault)
        {
            Console.Error.WriteLine(fault.Message);
            return 1;
        }
    }
}
