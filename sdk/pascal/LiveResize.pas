{ Plays a video through the filter "Mira Vantrel" in a size and at a frame rate, prints what the filter
  measures, and changes the size while the video plays. For Delphi and Free Pascal.

    LiveResize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT }

program LiveResize;

{$ifdef FPC}{$mode delphi}{$endif}
{$apptype console}

uses
  ActiveX, SysUtils, Vantrel;

{ As much of DirectShow as is used here. Methods that are not called hold their places in the tables
  only; a program that needs more takes a full set of declarations. }
type
  IPin = interface(IUnknown)
    ['{56A86891-0AD4-11CE-B03A-0020AF0BA770}']
  end;

  IEnumPins = interface(IUnknown)
    ['{56A86892-0AD4-11CE-B03A-0020AF0BA770}']
    function Next(count: LongWord; out pin: IPin; fetched: Pointer): HResult; stdcall;
  end;

  IMediaFilter = interface(IUnknown)
    ['{56A86899-0AD4-11CE-B03A-0020AF0BA770}']
    function GetClassID(out id: TGUID): HResult; stdcall;
    function Stop: HResult; stdcall;
    function Pause: HResult; stdcall;
    function Run(start: Int64): HResult; stdcall;
    function GetState(milliseconds: LongWord; out state: LongInt): HResult; stdcall;
    function SetSyncSource(clock: Pointer): HResult; stdcall;
    function GetSyncSource(out clock: Pointer): HResult; stdcall;
  end;

  IBaseFilter = interface(IMediaFilter)
    ['{56A86895-0AD4-11CE-B03A-0020AF0BA770}']
    function EnumPins(out pins: IEnumPins): HResult; stdcall;
    function FindPin(id: PWideChar; out pin: IPin): HResult; stdcall;
  end;

  IGraphBuilder = interface(IUnknown)
    ['{56A868A9-0AD4-11CE-B03A-0020AF0BA770}']
    function AddFilter(const filter: IBaseFilter; name: PWideChar): HResult; stdcall;
    function RemoveFilter(const filter: IBaseFilter): HResult; stdcall;
    function EnumFilters(out filters: Pointer): HResult; stdcall;
    function FindFilterByName(name: PWideChar; out filter: IBaseFilter): HResult; stdcall;
    function ConnectDirect(const output, input: IPin; mediaType: Pointer): HResult; stdcall;
    function Reconnect(const pin: IPin): HResult; stdcall;
    function Disconnect(const pin: IPin): HResult; stdcall;
    function SetDefaultSyncSource: HResult; stdcall;
    function Connect(const output, input: IPin): HResult; stdcall;
    function Render(const output: IPin): HResult; stdcall;
    function RenderFile(fileName, list: PWideChar): HResult; stdcall;
    function AddSourceFilter(fileName, name: PWideChar; out source: IBaseFilter): HResult; stdcall;
  end;

  IMediaControl = interface(IDispatch)
    ['{56A868B1-0AD4-11CE-B03A-0020AF0BA770}']
    function Run: HResult; stdcall;
    function Pause: HResult; stdcall;
    function Stop: HResult; stdcall;
  end;

  IMediaEvent = interface(IDispatch)
    ['{56A868B6-0AD4-11CE-B03A-0020AF0BA770}']
    function GetEventHandle(out handle: Pointer): HResult; stdcall;
    function GetEvent(out code: LongInt; out first, second: Pointer; milliseconds: LongInt): HResult; stdcall;
    function WaitForCompletion(milliseconds: LongInt; out code: LongInt): HResult; stdcall;
  end;

  IMediaSeeking = interface(IUnknown)
    ['{36B73880-C2C8-11CF-8B46-00805F6CEF60}']
    function GetCapabilities(out capabilities: LongWord): HResult; stdcall;
    function CheckCapabilities(var capabilities: LongWord): HResult; stdcall;
    function IsFormatSupported(format: PGUID): HResult; stdcall;
    function QueryPreferredFormat(out format: TGUID): HResult; stdcall;
    function GetTimeFormat(out format: TGUID): HResult; stdcall;
    function IsUsingTimeFormat(format: PGUID): HResult; stdcall;
    function SetTimeFormat(format: PGUID): HResult; stdcall;
    function GetDuration(out duration: Int64): HResult; stdcall;
    function GetStopPosition(out stop: Int64): HResult; stdcall;
    function GetCurrentPosition(out current: Int64): HResult; stdcall;
    function ConvertTimeFormat(out target: Int64; targetFormat: PGUID; source: Int64; sourceFormat: PGUID): HResult;
      stdcall;
    function SetPositions(var current: Int64; currentFlags: LongWord; stop: Pointer; stopFlags: LongWord): HResult;
      stdcall;
  end;

const
  CLSID_FilterGraph: TGUID = '{E436EBB3-524F-11CE-9F53-0020AF0BA770}';
  AM_SEEKING_NoPositioning = 0;
  AM_SEEKING_AbsolutePositioning = 1;

procedure Check(result: HResult; const step: string);
begin
  if result < 0 then
    raise Exception.Create(step + ': error 0x' + IntToHex(LongWord(result), 8));
end;

{ Plays on for two seconds, or to the end of a shorter video. }
procedure PlayAndReport(const events: IMediaEvent; const settings: IVantrelSettings);
var
  code, width, height: LongInt;
  milliseconds, taken, delivered: Double;
begin
  events.WaitForCompletion(2000, code);
  settings.GetOutputSize(width, height);
  settings.GetModuleTime(milliseconds);
  settings.GetSystemFps(taken);
  settings.GetGenerateFps(delivered); { 0 without a frame rate }
  Writeln(width, 'x', height, ': ', milliseconds:0:2, ' ms per frame, ', taken:0:1,
    ' frames per second scaled, ', delivered:0:1, ' delivered');
end;

procedure Play;
var
  graph: IGraphBuilder;
  control: IMediaControl;
  events: IMediaEvent;
  seeking: IMediaSeeking;
  source, resizer: IBaseFilter;
  settings: IVantrelSettings;
  pins: IEnumPins;
  video, input, output: IPin;
  clock: Pointer;
  position: Int64;
  fps: Double;
  fault: Integer;
begin
  Check(CoCreateInstance(CLSID_FilterGraph, nil, CLSCTX_INPROC_SERVER, IGraphBuilder, graph), 'graph');
  Check(CoCreateInstance(CLSID_VantrelFilter, nil, CLSCTX_INPROC_SERVER, IBaseFilter, resizer),
    'the filter (is it registered?)');
  control := graph as IMediaControl;
  events := graph as IMediaEvent;
  seeking := graph as IMediaSeeking;
  settings := resizer as IVantrelSettings;

  Val(ParamStr(4), fps, fault); { with a point in every locale }
  settings.SetOutputSize(StrToInt(ParamStr(2)), StrToInt(ParamStr(3)));
  settings.SetFrameRate(fps);
  settings.SetOutputFormat(VantrelFormatRgb24); { what every renderer shows }
  Check(graph.AddFilter(resizer, 'Resizer'), 'adding the filter');
  Check(graph.AddSourceFilter(PWideChar(WideString(ParamStr(1))), 'Source', source), 'opening the video');
  Check(source.EnumPins(pins), 'pins');
  if pins.Next(1, video, nil) <> S_OK then
    raise Exception.Create('the source has no pin');
  Check(resizer.FindPin('In', input), 'In');
  Check(resizer.FindPin('Out', output), 'Out');
  Check(graph.Connect(video, input), 'decoding into the filter');
  Check(graph.Render(output), 'showing the result');

  Check(control.Run, 'playing');
  PlayAndReport(events, settings);
  settings.SetOutputSize(StrToInt(ParamStr(5)), StrToInt(ParamStr(6)));
  if settings.ApplySettings <> VantrelSuccess then
  begin
    Writeln('The renderer takes no change while it runs: stopping.');
    position := 0;
    seeking.GetCurrentPosition(position);
    control.Stop; { a stop can begin the video anew }
    if settings.ApplySettings <> VantrelSuccess then
      raise Exception.Create('the new size is refused');
    seeking.SetPositions(position, AM_SEEKING_AbsolutePositioning, nil, AM_SEEKING_NoPositioning);
    Check(control.Run, 'playing on');
  end;
  PlayAndReport(events, settings);
  { Wine 8 may wait for ever when a clock goes: it stays as long as the process. Windows needs no such
    thing. }
  (graph as IMediaFilter).GetSyncSource(clock);
  control.Stop;
end;

begin
  if ParamCount <> 6 then
  begin
    Writeln('Usage: LiveResize VIDEO WIDTH HEIGHT FPS NEW_WIDTH NEW_HEIGHT');
    Halt(2);
  end;
  Check(CoInitialize(nil), 'COM');
  try
    Play;
  except
    on fault: Exception do
    begin
      Writeln(fault.Message);
      ExitCode := 1;
    end;
  end;
  CoUninitialize;
end.
