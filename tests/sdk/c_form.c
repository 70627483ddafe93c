/* The settings header in C: compiled as C90 and as C11. Every call is made once. */

#define COBJMACROS
#include "vantrel_settings.h"

#include "c_form.h"

#if defined VANTREL_INT || defined VANTREL_CONST
#error "The header leaves a macro of its own behind."
#endif

/* Calls that go wrong give 0, and so the product. */
int C_FORM_SET(IUnknown* object, const SettingValues* values) {
    IVantrelSettings* settings = NULL;
    int good;
    if (IUnknown_QueryInterface(object, &IID_IVantrelSettings, (void**)&settings) != S_OK) return 0;
    good = IVantrelSettings_SetOutputSize(settings, values->width, values->height) *
           IVantrelSettings_SetScaleMethod(settings, values->method) *
           IVantrelSettings_SetOutputFormat(settings, values->format) *
           IVantrelSettings_SetVideoType(settings, values->type) *
           IVantrelSettings_SetFrameRate(settings, values->frameRate);
    IVantrelSettings_AddRef(settings);
    IVantrelSettings_Release(settings);
    IVantrelSettings_Release(settings);
    return good;
}

int C_FORM_GET(IUnknown* object, SettingValues* values) {
    IVantrelSettings* settings = NULL;
    void* same = NULL;
    int good;
    if (IUnknown_QueryInterface(object, &IID_IVantrelSettings, (void**)&settings) != S_OK) return 0;
    good = IVantrelSettings_GetOutputSize(settings, &values->width, &values->height) *
           IVantrelSettings_GetScaleMethod(settings, &values->method) *
           IVantrelSettings_GetOutputFormat(settings, &values->format) *
           IVantrelSettings_GetVideoType(settings, &values->type) *
           IVantrelSettings_GetFrameRate(settings, &values->frameRate) *
           IVantrelSettings_GetModuleTime(settings, &values->moduleTime) *
           IVantrelSettings_GetSystemFps(settings, &values->systemFps) *
           IVantrelSettings_GetGenerateFps(settings, &values->generateFps);
    values->applied = IVantrelSettings_ApplySettings(settings);
    if (IVantrelSettings_QueryInterface(settings, &IID_IVantrelSettings, &same) != S_OK) return 0;
    good *= same == settings;
    IVantrelSettings_Release((IVantrelSettings*)same);
    IVantrelSettings_Release(settings);
    return good;
}

int C_FORM_SUM(void) {
    enum VantrelScaleMethod method = VantrelMethodBilinearSse;
    enum VantrelPixelFormat format = VantrelFormatRgb565;
    enum VantrelVideoType type = VantrelTypeMpeg2;
    return (int)method * 10000 + (int)format * 100 + (int)type;
}
