/* What the settings header takes from the system's, for Linux. */

#include <stdint.h>

typedef struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID, IID, CLSID;
typedef const IID* REFIID;
typedef int32_t HRESULT;
typedef uint32_t ULONG;
#define STDMETHODCALLTYPE
