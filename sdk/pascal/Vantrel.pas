{ The settings and statistics interface of the filter "Mira Vantrel" for Delphi and Free Pascal.

  Results are plain numbers, and 1 is success: the methods are not "safecall". }

unit Vantrel;

{$ifdef FPC}{$mode delphi}{$endif}

interface

const
  CLSID_VantrelFilter: TGUID = '{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}';
  CLSID_ResamplePropertyPage: TGUID = '{7C9F63C6-786B-4752-908E-460A061FA9D7}';
  CLSID_TimeRegulatorPropertyPage: TGUID = '{D7A3BD9A-E8A3-49E9-8261-CD2A7AC78403}';

  { VantrelScaleMethod }
  VantrelMethodAuto = 0;
  VantrelMethodNearestAuto = 1;
  VantrelMethodBilinearAuto = 2;
  VantrelMethodNearest = 5;
  VantrelMethodNearestMmx = 6;
  VantrelMethodNearestSse = 7;
  VantrelMethodBilinear = 10;
  VantrelMethodBilinearMmx = 11;
  VantrelMethodBilinearSse = 12;

  { VantrelPixelFormat }
  VantrelFormatAuto = 0;
  VantrelFormatYv12 = 1;
  VantrelFormatIyuv = 2;
  VantrelFormatYvu9 = 3;
  VantrelFormatYuy2 = 4;
  VantrelFormatYuyv = 5;
  VantrelFormatYvyu = 6;
  VantrelFormatUyvy = 7;
  VantrelFormatRgb24 = 8;
  VantrelFormatRgb555 = 9;
  VantrelFormatRgb565 = 10;

  { VantrelVideoType }
  VantrelTypeAuto = 0;
  VantrelTypeMpeg1 = 1;
  VantrelTypeMpeg2 = 2;

  VantrelSuccess = 1;

type
  IVantrelSettings = interface(IUnknown)
    ['{4E0DB2C5-3852-4FC9-ACFE-75F88F38549A}']
    function SetOutputSize(width, height: LongInt): LongInt; stdcall;
    function GetOutputSize(out width, height: LongInt): LongInt; stdcall;
    function SetScaleMethod(method: LongInt): LongInt; stdcall;
    function GetScaleMethod(out method: LongInt): LongInt; stdcall;
    function SetOutputFormat(format: LongInt): LongInt; stdcall;
    function GetOutputFormat(out format: LongInt): LongInt; stdcall;
    function SetVideoType(videoType: LongInt): LongInt; stdcall;
    function GetVideoType(out videoType: LongInt): LongInt; stdcall;
    function GetModuleTime(out milliseconds: Double): LongInt; stdcall;
    function GetSystemFps(out fps: Double): LongInt; stdcall;
    function ApplySettings: LongInt; stdcall;
    function GetGenerateFps(out fps: Double): LongInt; stdcall;
    function SetFrameRate(fps: Double): LongInt; stdcall;
    function GetFrameRate(out fps: Double): LongInt; stdcall;
  end;

implementation

end.
