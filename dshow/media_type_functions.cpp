// Copying and freeing AM_MEDIA_TYPE records.

#include <cstring>

#include "dshow/internal/task_memory.h"
#include "dshow/media_type.h"

using tavo::dshow::AllocateTask;

AM_MEDIA_TYPE* WINAPI CreateMediaType(const AM_MEDIA_TYPE* pSource) {
    auto record = AllocateTask<AM_MEDIA_TYPE>(sizeof(AM_MEDIA_TYPE));
    if (!record || FAILED(CopyMediaType(record.get(), pSource))) return nullptr;
    return record.release();
}

HRESULT WINAPI CopyMediaType(AM_MEDIA_TYPE* pTarget, const AM_MEDIA_TYPE* pSource) {
    const AM_MEDIA_TYPE source = *pSource;
    *pTarget = source;
    pTarget->cbFormat = 0;
    pTarget->pbFormat = nullptr;
    pTarget->pUnk = nullptr;

    // A length without a block comes from outside only; there is nothing to copy then.
    if (source.cbFormat && source.pbFormat) {
        auto block = AllocateTask<BYTE>(source.cbFormat);
        if (!block) return E_OUTOFMEMORY;
        std::memcpy(block.get(), source.pbFormat, source.cbFormat);
        pTarget->cbFormat = source.cbFormat;
        pTarget->pbFormat = block.release();
    }
    if (source.pUnk) {
        source.pUnk->AddRef();
        pTarget->pUnk = source.pUnk;
    }
    return S_OK;
}

void WINAPI FreeMediaType(AM_MEDIA_TYPE& mt) {
    if (mt.cbFormat) {
        CoTaskMemFree(mt.pbFormat);
        mt.cbFormat = 0;
        mt.pbFormat = nullptr;
    }
    if (mt.pUnk) {
        mt.pUnk->Release();
        mt.pUnk = nullptr;
    }
}

void WINAPI DeleteMediaType(AM_MEDIA_TYPE* pmt) {
    if (!pmt) return;
    FreeMediaType(*pmt);
    CoTaskMemFree(pmt);
}
