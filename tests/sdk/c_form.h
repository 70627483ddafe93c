/* What c_form.c makes of the settings header, once for each edition of C. */

#ifndef TESTS_SDK_C_FORM_H
#define TESTS_SDK_C_FORM_H

#include <unknwn.h>

typedef struct SettingValues {
    int width;
    int height;
    int method;
    int format;
    int type;
    double frameRate;
    double moduleTime;
    double systemFps;
    double generateFps;
    int applied; /* what ApplySettings returned */
} SettingValues;

#ifdef __cplusplus
extern "C" {
#endif

/* `object` is asked for the interface. They return 1 when every call did. */
int C90Set(IUnknown* object, const SettingValues* values);
int C90Get(IUnknown* object, SettingValues* values);
int C90Sum(void);
int C11Set(IUnknown* object, const SettingValues* values);
int C11Get(IUnknown* object, SettingValues* values);
int C11Sum(void);

#ifdef __cplusplus
}
#endif

#endif
