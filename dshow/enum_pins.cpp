// CEnumPins.

#include "dshow/enum_pins.h"

#include <algorithm>
#include <new>
#include <utility>

#include "dshow/base_filter.h"
#include "dshow/base_pin.h"
#include "dshow/helpers.h"

CEnumPins::CEnumPins(CBaseFilter* pFilter, CEnumPins* pEnumPins) : m_filter(pFilter) {
    m_filter->AddRef();
    if (!pEnumPins) {
        TakeVersion();
        return;
    }
    m_version = pEnumPins->m_version;
    m_position = pEnumPins->m_position;
    m_pinCount = pEnumPins->m_pinCount;
    if (ReserveGiven(pEnumPins->m_givenCount)) {
        m_givenCount = pEnumPins->m_givenCount;
        std::copy_n(pEnumPins->m_given.get(), m_givenCount, m_given.get());
    }
}

CEnumPins::~CEnumPins() { m_filter->Release(); }

STDMETHODIMP CEnumPins::QueryInterface(REFIID riid, void** ppv) {
    CheckPointer(ppv, E_POINTER);
    if (riid == IID_IUnknown || riid == IID_IEnumPins) {
        return GetInterface(static_cast<IEnumPins*>(this), ppv);
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CEnumPins::AddRef() { return InterlockedIncrement(&m_cRef); }

STDMETHODIMP_(ULONG) CEnumPins::Release() {
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count == 0) delete this;
    return count;
}

STDMETHODIMP CEnumPins::Next(ULONG n, IPin** ppPins, ULONG* pcFetched) {
    CheckPointer(ppPins, E_POINTER);
    if (pcFetched) {
        *pcFetched = 0;
    } else if (n > 1) {
        return E_INVALIDARG;
    }
    if (IsOutOfSync()) TakeVersion();

    const int left = m_pinCount - m_position;
    if (left <= 0 || n == 0) return n == 0 ? S_OK : S_FALSE;
    if (!ReserveGiven(m_givenCount + left)) return E_OUTOFMEMORY;

    const int givenBefore = m_givenCount;
    ULONG fetched = 0;
    while (fetched < n && m_position < m_pinCount) {
        CBasePin* pin = m_filter->GetPin(m_position++);
        if (!pin) {
            m_givenCount = givenBefore;
            while (fetched > 0) {
                --fetched;
                ppPins[fetched]->Release();
                ppPins[fetched] = nullptr;
            }
            return VFW_E_ENUM_OUT_OF_SYNC;
        }
        if (WasGiven(pin)) continue;
        m_given[m_givenCount++] = pin;
        pin->AddRef();
        ppPins[fetched++] = pin;
    }
    if (pcFetched) *pcFetched = fetched;
    return fetched == n ? S_OK : S_FALSE;
}

STDMETHODIMP CEnumPins::Skip(ULONG n) {
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    if (n > static_cast<ULONG>(m_pinCount - m_position)) return S_FALSE;
    m_position += static_cast<int>(n);
    return S_OK;
}

STDMETHODIMP CEnumPins::Reset() {
    TakeVersion();
    m_givenCount = 0;
    return S_OK;
}

STDMETHODIMP CEnumPins::Clone(IEnumPins** ppEnum) {
    CheckPointer(ppEnum, E_POINTER);
    *ppEnum = nullptr;
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;

    auto* clone = new (std::nothrow) CEnumPins(m_filter, this);
    CheckPointer(clone, E_OUTOFMEMORY);
    if (clone->m_givenCount != m_givenCount) {
        clone->Release();
        return E_OUTOFMEMORY;
    }
    *ppEnum = clone;
    return S_OK;
}

bool CEnumPins::IsOutOfSync() const { return m_version != m_filter->GetPinVersion(); }

// The list of given pins stays: what was handed out under an older version is not given again.
void CEnumPins::TakeVersion() {
    m_version = m_filter->GetPinVersion();
    m_pinCount = m_filter->GetPinCount();
    m_position = 0;
}

bool CEnumPins::ReserveGiven(int capacity) {
    if (capacity <= m_givenCapacity) return true;
    std::unique_ptr<CBasePin*[]> grown(new (std::nothrow) CBasePin*[capacity]);
    if (!grown) return false;
    std::copy_n(m_given.get(), m_givenCount, grown.get());
    m_given = std::move(grown);
    m_givenCapacity = capacity;
    return true;
}

bool CEnumPins::WasGiven(const CBasePin* pPin) const {
    CBasePin** const end = m_given.get() + m_givenCount;
    return std::find(m_given.get(), end, pPin) != end;
}
