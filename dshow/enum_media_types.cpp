// CEnumMediaTypes.

#include "dshow/enum_media_types.h"

#include <climits>
#include <new>

#include "dshow/base_pin.h"
#include "dshow/helpers.h"
#include "dshow/internal/task_memory.h"

using tavo::dshow::AllocateTask;

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pPin, CEnumMediaTypes* pEnumMediaTypes) : m_pin(pPin) {
    m_pin->AddRef();
    if (pEnumMediaTypes) {
        m_version = pEnumMediaTypes->m_version;
        m_position = pEnumMediaTypes->m_position;
    } else {
        m_version = m_pin->GetMediaTypeVersion();
    }
}

CEnumMediaTypes::~CEnumMediaTypes() { m_pin->Release(); }

STDMETHODIMP CEnumMediaTypes::QueryInterface(REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    if (riid == IID_IUnknown || riid == IID_IEnumMediaTypes) {
        return GetInterface(static_cast<IEnumMediaTypes*>(this), ppv);
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CEnumMediaTypes::AddRef() { return InterlockedIncrement(&m_cRef); }

STDMETHODIMP_(ULONG) CEnumMediaTypes::Release() {
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count == 0) delete this;
    return count;
}

STDMETHODIMP CEnumMediaTypes::Next(ULONG n, AM_MEDIA_TYPE** ppTypes, ULONG* pcFetched) {
    CheckPointer(ppTypes, E_POINTER);
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    if (pcFetched) {
        *pcFetched = 0;
    } else if (n > 1) {
        return E_INVALIDARG;
    }

    const int start = m_position;
    ULONG fetched = 0;
    while (fetched < n) {
        CMediaType type;
        const int position = m_position;
        if (m_position < INT_MAX) ++m_position;
        if (m_pin->GetMediaType(position, &type) != S_OK) break;

        auto record = AllocateTask<AM_MEDIA_TYPE>(sizeof(AM_MEDIA_TYPE));
        if (!record) {
            while (fetched > 0) {
                --fetched;
                DeleteMediaType(ppTypes[fetched]);
                ppTypes[fetched] = nullptr;
            }
            m_position = start;
            return E_OUTOFMEMORY;
        }
        // The record takes over block and pUnk.
        *record = type;
        type.InitMediaType();
        ppTypes[fetched++] = record.release();
    }
    if (pcFetched) *pcFetched = fetched;
    return fetched == n ? S_OK : S_FALSE;
}

STDMETHODIMP CEnumMediaTypes::Skip(ULONG n) {
    if (n == 0) return S_OK;
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    const auto room = static_cast<ULONG>(INT_MAX - m_position);
    m_position = n < room ? m_position + static_cast<int>(n) : INT_MAX;
    CMediaType type;
    return m_pin->GetMediaType(m_position - 1, &type) == S_OK ? S_OK : S_FALSE;
}

STDMETHODIMP CEnumMediaTypes::Reset() {
    m_position = 0;
    m_version = m_pin->GetMediaTypeVersion();
    return S_OK;
}

STDMETHODIMP CEnumMediaTypes::Clone(IEnumMediaTypes** ppEnum) {
    CheckPointer(ppEnum, E_POINTER);
    *ppEnum = nullptr;
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    *ppEnum = new (std::nothrow) CEnumMediaTypes(m_pin, this);
    CheckPointer(*ppEnum, E_OUTOFMEMORY);
    return S_OK;
}

bool CEnumMediaTypes::IsOutOfSync() const { return m_version != m_pin->GetMediaTypeVersion(); }
