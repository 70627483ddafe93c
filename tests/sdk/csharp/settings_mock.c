/* An object behind the settings interface as the header declares it in C, for a runtime on Linux.
   It keeps what was set; what is read is that and one more. */

#include <stddef.h>
#include <string.h>

#define _WIN32 /* for the header only */
#include "settings/vantrel_settings.h"

static struct {
    const IVantrelSettingsVtbl* table;
    ULONG references;
    int width, height, method, format, type;
    double rate;
} object;

static HRESULT QueryInterface(IVantrelSettings* self, REFIID iid, void** result) {
    static const IID unknown = {0, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};
    *result = NULL;
    if (memcmp(iid, &unknown, sizeof(IID)) != 0 &&
        memcmp(iid, &IID_IVantrelSettings, sizeof(IID)) != 0) {
        return (HRESULT)0x80004002;
    }
    ++object.references;
    *result = self;
    return 0;
}
static ULONG AddRef(IVantrelSettings* self) { return (void)self, ++object.references; }
static ULONG Release(IVantrelSettings* self) { return (void)self, --object.references; }

static int SetOutputSize(IVantrelSettings* self, int width, int height) {
    (void)self;
    object.width = width;
    object.height = height;
    return 1;
}
static int GetOutputSize(IVantrelSettings* self, int* width, int* height) {
    (void)self;
    *width = object.width + 1;
    *height = object.height + 1;
    return 1;
}
static int SetScaleMethod(IVantrelSettings* self, int method) {
    (void)self;
    object.method = method;
    return 1;
}
static int GetScaleMethod(IVantrelSettings* self, int* method) {
    (void)self;
    *method = object.method + 1;
    return 1;
}
static int SetOutputFormat(IVantrelSettings* self, int format) {
    (void)self;
    object.format = format;
    return 1;
}
static int GetOutputFormat(IVantrelSettings* self, int* format) {
    (void)self;
    *format = object.format + 1;
    return 1;
}
static int SetVideoType(IVantrelSettings* self, int type) {
    (void)self;
    object.type = type;
    return 1;
}
static int GetVideoType(IVantrelSettings* self, int* type) {
    (void)self;
    *type = object.type + 1;
    return 1;
}
static int GetModuleTime(IVantrelSettings* self, double* milliseconds) {
    (void)self;
    *milliseconds = 1.25;
    return 1;
}
static int GetSystemFps(IVantrelSettings* self, double* fps) {
    (void)self;
    *fps = 2.5;
    return 1;
}
static int ApplySettings(IVantrelSettings* self) {
    (void)self;
    return (int)0x80070057; /* E_INVALIDARG: must arrive as a number */
}
static int GetGenerateFps(IVantrelSettings* self, double* fps) {
    (void)self;
    *fps = 3.75;
    return 1;
}
static int SetFrameRate(IVantrelSettings* self, double fps) {
    (void)self;
    object.rate = fps;
    return 1;
}
static int GetFrameRate(IVantrelSettings* self, double* fps) {
    (void)self;
    *fps = object.rate + 1;
    return 1;
}

void* MakeSettings(void) {
    static const IVantrelSettingsVtbl table = {
        QueryInterface, AddRef,         Release,         SetOutputSize,   GetOutputSize,
        SetScaleMethod, GetScaleMethod, SetOutputFormat, GetOutputFormat, SetVideoType,
        GetVideoType,   GetModuleTime,  GetSystemFps,    ApplySettings,   GetGenerateFps,
        SetFrameRate,   GetFrameRate};
    object.table = &table;
    object.references = 1;
    return &object;
}
