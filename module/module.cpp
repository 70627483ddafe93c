// The module: its table of classes, what it registers, and its entry points.

#include "streams.h"

#include "filter/vantrel_filter.h"
#include "pages/resample_property_page.h"
#include "pages/time_regulator_property_page.h"
#include "settings/vantrel_settings.h"

namespace {

constexpr WCHAR kFilterName[] = L"Mira Vantrel";

const AMOVIESETUP_MEDIATYPE kVideoType = {&MEDIATYPE_Video, &MEDIASUBTYPE_NULL};

// The setup record takes the names as writable.
WCHAR inputName[] = L"Input";
WCHAR outputName[] = L"Output";

// clang-format off
const AMOVIESETUP_PIN kPins[] = {
//   name        rendered output zero   many   connects to   its pin     types
    {inputName,  FALSE,   FALSE, FALSE, FALSE, &CLSID_NULL,  outputName, 1, &kVideoType},
    {outputName, FALSE,   TRUE,  FALSE, FALSE, &CLSID_NULL,  inputName,  1, &kVideoType},
};
// clang-format on

// An application adds the filter by its class: graphs that build themselves never pick it.
const AMOVIESETUP_FILTER kFilter = {&CLSID_VantrelFilter, kFilterName, MERIT_DO_NOT_USE,
                                    NUMELMS(kPins), kPins};

}  // namespace

CFactoryTemplate g_Templates[] = {
    {kFilterName, &CLSID_VantrelFilter, CVantrelFilter::CreateInstance, nullptr, &kFilter},
    {L"Corvane Vantrel Property Page", &CLSID_ResamplePropertyPage,
     CResamplePropertyPage::CreateInstance, nullptr, nullptr},
    {L"Corvane Time Regulator Property Page", &CLSID_TimeRegulatorPropertyPage,
     CTimeRegulatorPropertyPage::CreateInstance, nullptr, nullptr},
};
int g_cTemplates = NUMELMS(g_Templates);

STDAPI DllRegisterServer() { return AMovieDllRegisterServer2(TRUE); }

STDAPI DllUnregisterServer() { return AMovieDllRegisterServer2(FALSE); }

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    return DllEntryPoint(instance, reason, reserved);
}
