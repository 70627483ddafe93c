// CreatePosPassThru.

#include "dshow/pos_pass_thru.h"

#include "dshow/com_ptr.h"
#include "dshow/helpers.h"

using tavo::ComPtr;

STDAPI CreatePosPassThru(LPUNKNOWN pAgg, BOOL bRenderer, IPin* pPin, IUnknown** ppPassThru) {
    CheckPointer(ppPassThru, E_POINTER);
    *ppPassThru = nullptr;

    ComPtr<IUnknown> object;
    HRESULT hr = CoCreateInstance(CLSID_SeekingPassThru, pAgg, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                  object.PutVoid());
    if (FAILED(hr)) return hr;

    ComPtr<ISeekingPassThru> passThru;
    hr = object->QueryInterface(IID_ISeekingPassThru, passThru.PutVoid());
    if (FAILED(hr)) return hr;
    hr = passThru->Init(bRenderer, pPin);
    if (FAILED(hr)) return hr;

    passThru.Reset();
    *ppPassThru = object.Detach();
    return hr;
}
