// CEnumMediaTypes: IEnumMediaTypes over the types that a CBasePin offers.

#pragma once

#include "dshow/platform.h"

class CBasePin;

// Born with one reference for its creator; keeps its pin's filter alive. When the pin's type
// version changes, every call but Reset gives VFW_E_ENUM_OUT_OF_SYNC. Counting is atomic, the rest
// is for one thread at a time.
class CEnumMediaTypes : public IEnumMediaTypes {
  public:
    // From the start, or with the state of pEnumMediaTypes when that is not null.
    CEnumMediaTypes(CBasePin* pPin, CEnumMediaTypes* pEnumMediaTypes);
    virtual ~CEnumMediaTypes();
    CEnumMediaTypes(const CEnumMediaTypes&) = delete;
    CEnumMediaTypes& operator=(const CEnumMediaTypes&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // The caller frees each record with DeleteMediaType. S_FALSE: fewer than n were left; anything
    // but S_OK from the pin ends the list. E_OUTOFMEMORY hands out nothing and does not move.
    STDMETHODIMP Next(ULONG n, AM_MEDIA_TYPE** ppTypes, ULONG* pcFetched) override;
    // Moves always; S_FALSE when that leads past the end of the list.
    STDMETHODIMP Skip(ULONG n) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumMediaTypes** ppEnum) override;

  private:
    bool IsOutOfSync() const;

    volatile LONG m_cRef = 1;
    CBasePin* const m_pin;
    LONG m_version;
    int m_position = 0;
};
