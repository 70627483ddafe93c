// The class table of programs that are no COM server.
#include "streams.h"

CFactoryTemplate g_Templates[] = {{nullptr, nullptr, nullptr, nullptr, nullptr}};
int g_cTemplates = 0;
