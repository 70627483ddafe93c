/*
 * The settings and statistics interface of the filter "Mira Vantrel", its class identifiers and its
 * setting codes, for C and C++. This header stands alone: an application takes it along and needs
 * nothing else of this project, and no library for the identifiers.
 *
 * How to reach the interface: create the filter with CoCreateInstance(CLSID_VantrelFilter, ...), or
 * take any instance in a graph, and ask it for IID_IVantrelSettings. Pointers are counted as COM
 * prescribes. All methods may be called from any thread at any time, also while frames flow: none
 * of the getters and setters takes a lock or waits, only ApplySettings does.
 *
 * In C, and in C++ with CINTERFACE, the interface is a struct with a table of functions. With
 * COBJMACROS there is a macro for each: IVantrelSettings_SetOutputSize(settings, 640, 360).
 */

#ifndef VANTREL_SETTINGS_H
#define VANTREL_SETTINGS_H

#ifdef __cplusplus
#define VANTREL_CONST static constexpr
#define VANTREL_INT : int
#else
#define VANTREL_CONST static const
#define VANTREL_INT
#endif

/* The codes stand for themselves; all else needs Windows. */
#ifdef _WIN32

#include <unknwn.h>

/* {80650FA1-6CCB-4807-B027-46AA6BE5BFC9}: the filter. */
VANTREL_CONST CLSID CLSID_VantrelFilter = {
    0x80650fa1, 0x6ccb, 0x4807, {0xb0, 0x27, 0x46, 0xaa, 0x6b, 0xe5, 0xbf, 0xc9}};

/* {7C9F63C6-786B-4752-908E-460A061FA9D7}: the property page for size, method, format and type. */
VANTREL_CONST CLSID CLSID_ResamplePropertyPage = {
    0x7c9f63c6, 0x786b, 0x4752, {0x90, 0x8e, 0x46, 0x0a, 0x06, 0x1f, 0xa9, 0xd7}};

/* {D7A3BD9A-E8A3-49E9-8261-CD2A7AC78403}: the property page for the frame rate. */
VANTREL_CONST CLSID CLSID_TimeRegulatorPropertyPage = {
    0xd7a3bd9a, 0xe8a3, 0x49e9, {0x82, 0x61, 0xcd, 0x2a, 0x7a, 0xc7, 0x84, 0x03}};

/* {4E0DB2C5-3852-4FC9-ACFE-75F88F38549A} */
VANTREL_CONST IID IID_IVantrelSettings = {
    0x4e0db2c5, 0x3852, 0x4fc9, {0xac, 0xfe, 0x75, 0xf8, 0x8f, 0x38, 0x54, 0x9a}};

#endif /* _WIN32 */

/* How frames are scaled. "Auto" methods pick the instruction set of the processor; the others name
   the instruction set whose result is wanted. Codes that are not listed act like Auto. */
enum VantrelScaleMethod VANTREL_INT {
    VantrelMethodAuto = 0,
    VantrelMethodNearestAuto = 1,
    VantrelMethodBilinearAuto = 2,
    VantrelMethodNearest = 5,
    VantrelMethodNearestMmx = 6,
    VantrelMethodNearestSse = 7,
    VantrelMethodBilinear = 10,
    VantrelMethodBilinearMmx = 11,
    VantrelMethodBilinearSse = 12
};

/* Which pixel format the filter accepts. Auto accepts the ten that have a code, and as the
   eleventh I420, whose pictures are those of IYUV.
   Codes that are not listed lift the restriction altogether. */
enum VantrelPixelFormat VANTREL_INT {
    VantrelFormatAuto = 0,
    VantrelFormatYv12 = 1,
    VantrelFormatIyuv = 2,
    VantrelFormatYvu9 = 3,
    VantrelFormatYuy2 = 4,
    VantrelFormatYuyv = 5,
    VantrelFormatYvyu = 6,
    VantrelFormatUyvy = 7,
    VantrelFormatRgb24 = 8,
    VantrelFormatRgb555 = 9,
    VantrelFormatRgb565 = 10
};

/* Which format block the filter accepts: Auto either (RGB only in a VIDEOINFOHEADER), Mpeg1 only
   FORMAT_VideoInfo, Mpeg2 only FORMAT_VideoInfo2. Codes that are not listed lift the
   restriction. */
enum VantrelVideoType VANTREL_INT {
    VantrelTypeAuto = 0,
    VantrelTypeMpeg1 = 1,
    VantrelTypeMpeg2 = 2
};

#undef VANTREL_CONST
#undef VANTREL_INT

#ifdef _WIN32

#if defined(__cplusplus) && !defined(CINTERFACE)

#ifdef _MSC_VER
struct __declspec(uuid("4e0db2c5-3852-4fc9-acfe-75f88f38549a")) IVantrelSettings;
#endif

/* Results are plain 32-bit integers and not HRESULTs: 1 is success. Every method but ApplySettings
   returns 1 in every case. No argument is tested: out-pointers must not be null. */
struct IVantrelSettings : public IUnknown {
    /* Size of the output in pixels. 0 takes the width or height of the source: connecting the input
       puts that in its place, for good. Takes effect when the output type is settled next: on
       connecting, or through ApplySettings. What is read is the size that was set or settled last;
       after ApplySettings it may be one pixel wider, since packed 4:2:2 has even widths. A filter
       downstream may settle another one with a buffer. */
    virtual int STDMETHODCALLTYPE SetOutputSize(int width, int height) = 0;
    virtual int STDMETHODCALLTYPE GetOutputSize(int* width, int* height) = 0;

    /* A VantrelScaleMethod; takes effect with the next frame. */
    virtual int STDMETHODCALLTYPE SetScaleMethod(int method) = 0;
    virtual int STDMETHODCALLTYPE GetScaleMethod(int* method) = 0;

    /* A VantrelPixelFormat; takes effect when types are tested next. */
    virtual int STDMETHODCALLTYPE SetOutputFormat(int format) = 0;
    virtual int STDMETHODCALLTYPE GetOutputFormat(int* format) = 0;

    /* A VantrelVideoType; takes effect when types are tested next. */
    virtual int STDMETHODCALLTYPE SetVideoType(int type) = 0;
    virtual int STDMETHODCALLTYPE GetVideoType(int* type) = 0;

    /* Mean time that the filter worked on one frame, in milliseconds; 0.0 before the first
       frame. */
    virtual int STDMETHODCALLTYPE GetModuleTime(double* milliseconds) = 0;

    /* Frames per second since streaming began; 0.0 before the first frame. */
    virtual int STDMETHODCALLTYPE GetSystemFps(double* fps) = 0;

    /* Tests the input type against the settings and renegotiates the output. Returns 1 on success;
       E_INVALIDARG when the input does not fit the settings (nothing is changed then); 0 when the
       graph or the filter downstream refuses the new output type (nothing is changed then), or
       memory runs out. Compare with 1.

       A stopped filter's output is connected anew by the graph before the method returns. It may
       wait for a lock of the filter, which a stop holds: call it from the thread of the user
       interface, never from a streaming thread.

       While the filter is paused or running, 1 says that the filter downstream accepts the type
       (QueryAccept). The method does not wait for frames; the next frame that is delivered is the
       first of the new size. Its sample carries the type, or, where the buffers are too small for
       it, the filter downstream is connected anew with larger ones while it runs
       (ReceiveConnection). Of several types applied before that frame the last one counts. A frame
       rate goes on with its slots, and the statistics begin anew.

       That may still fail: the filter downstream refuses the sample or the connection, or memory
       runs out. Then frames of the old size go on, none is lost, and GetOutputSize gives their
       size again, unless another one was set meanwhile. */
    virtual int STDMETHODCALLTYPE ApplySettings() = 0;

    /* Frames per second delivered by the time regulator since streaming began; 0.0 while it is
       off. */
    virtual int STDMETHODCALLTYPE GetGenerateFps(double* fps) = 0;

    /* Fixed frame rate of the output in frames per second, in steps of a hundredth. 0.0, negative
       values, and values that no frame duration can express turn the time regulator off. Takes
       effect with the next frame that is delivered. */
    virtual int STDMETHODCALLTYPE SetFrameRate(double fps) = 0;
    virtual int STDMETHODCALLTYPE GetFrameRate(double* fps) = 0;

  protected:
    /* Released through IUnknown, never deleted. */
    ~IVantrelSettings() = default;
};

/* For __uuidof(IVantrelSettings), which IID_PPV_ARGS uses. */
#ifdef __CRT_UUID_DECL
__CRT_UUID_DECL(IVantrelSettings, 0x4e0db2c5, 0x3852, 0x4fc9, 0xac, 0xfe, 0x75, 0xf8, 0x8f, 0x38,
                0x54, 0x9a)
#endif

#else /* C */

typedef struct IVantrelSettings IVantrelSettings;

/* The methods are described above, with the C++ form of the interface. */
typedef struct IVantrelSettingsVtbl {
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(IVantrelSettings* This, REFIID iid, void** object);
    ULONG(STDMETHODCALLTYPE* AddRef)(IVantrelSettings* This);
    ULONG(STDMETHODCALLTYPE* Release)(IVantrelSettings* This);
    int(STDMETHODCALLTYPE* SetOutputSize)(IVantrelSettings* This, int width, int height);
    int(STDMETHODCALLTYPE* GetOutputSize)(IVantrelSettings* This, int* width, int* height);
    int(STDMETHODCALLTYPE* SetScaleMethod)(IVantrelSettings* This, int method);
    int(STDMETHODCALLTYPE* GetScaleMethod)(IVantrelSettings* This, int* method);
    int(STDMETHODCALLTYPE* SetOutputFormat)(IVantrelSettings* This, int format);
    int(STDMETHODCALLTYPE* GetOutputFormat)(IVantrelSettings* This, int* format);
    int(STDMETHODCALLTYPE* SetVideoType)(IVantrelSettings* This, int type);
    int(STDMETHODCALLTYPE* GetVideoType)(IVantrelSettings* This, int* type);
    int(STDMETHODCALLTYPE* GetModuleTime)(IVantrelSettings* This, double* milliseconds);
    int(STDMETHODCALLTYPE* GetSystemFps)(IVantrelSettings* This, double* fps);
    int(STDMETHODCALLTYPE* ApplySettings)(IVantrelSettings* This);
    int(STDMETHODCALLTYPE* GetGenerateFps)(IVantrelSettings* This, double* fps);
    int(STDMETHODCALLTYPE* SetFrameRate)(IVantrelSettings* This, double fps);
    int(STDMETHODCALLTYPE* GetFrameRate)(IVantrelSettings* This, double* fps);
} IVantrelSettingsVtbl;

struct IVantrelSettings {
    const IVantrelSettingsVtbl* lpVtbl;
};

#ifdef COBJMACROS
#define IVantrelSettings_QueryInterface(This, iid, object) \
    ((This)->lpVtbl->QueryInterface(This, iid, object))
#define IVantrelSettings_AddRef(This) ((This)->lpVtbl->AddRef(This))
#define IVantrelSettings_Release(This) ((This)->lpVtbl->Release(This))
#define IVantrelSettings_SetOutputSize(This, width, height) \
    ((This)->lpVtbl->SetOutputSize(This, width, height))
#define IVantrelSettings_GetOutputSize(This, width, height) \
    ((This)->lpVtbl->GetOutputSize(This, width, height))
#define IVantrelSettings_SetScaleMethod(This, method) ((This)->lpVtbl->SetScaleMethod(This, method))
#define IVantrelSettings_GetScaleMethod(This, method) ((This)->lpVtbl->GetScaleMethod(This, method))
#define IVantrelSettings_SetOutputFormat(This, format) \
    ((This)->lpVtbl->SetOutputFormat(This, format))
#define IVantrelSettings_GetOutputFormat(This, format) \
    ((This)->lpVtbl->GetOutputFormat(This, format))
#define IVantrelSettings_SetVideoType(This, type) ((This)->lpVtbl->SetVideoType(This, type))
#define IVantrelSettings_GetVideoType(This, type) ((This)->lpVtbl->GetVideoType(This, type))
#define IVantrelSettings_GetModuleTime(This, milliseconds) \
    ((This)->lpVtbl->GetModuleTime(This, milliseconds))
#define IVantrelSettings_GetSystemFps(This, fps) ((This)->lpVtbl->GetSystemFps(This, fps))
#define IVantrelSettings_ApplySettings(This) ((This)->lpVtbl->ApplySettings(This))
#define IVantrelSettings_GetGenerateFps(This, fps) ((This)->lpVtbl->GetGenerateFps(This, fps))
#define IVantrelSettings_SetFrameRate(This, fps) ((This)->lpVtbl->SetFrameRate(This, fps))
#define IVantrelSettings_GetFrameRate(This, fps) ((This)->lpVtbl->GetFrameRate(This, fps))
#endif /* COBJMACROS */

#endif /* C */

#endif /* _WIN32 */

#endif /* VANTREL_SETTINGS_H */
